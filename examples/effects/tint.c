// SPDX-License-Identifier: Apache-2.0
// A tint: all colours go towards one by an amount. Alpha stays, and so does the size.
#include <QX/QX_Effect.h>

enum { kColour, kAmount, kParameterCount };

static const QXE_ParameterInfo kParameters[kParameterCount] = {
    {sizeof(QXE_ParameterInfo), QXE_KindColour, "colour", "what colours go towards", 0, 1,
     {{1, 0.9, 0.7, 0.4}, NULL, 0}, NULL},
    {sizeof(QXE_ParameterInfo), QXE_KindNumber, "amount", "how far they go", 0, 1,
     {{0.5, 0, 0, 0}, NULL, 0}, NULL},
};

/// What the functions of a pixel share: they only read it, since they run on several threads.
typedef struct Work {
    uint32_t target[3];  ///< red, green, blue on the scale of the depth
    uint32_t weight;     ///< of the target, in 65536ths: whole numbers come out the same on every machine
    float target_float[3];
    float amount;
} Work;

static uint32_t mixed(uint32_t from, uint32_t to, uint32_t weight) {
    return (from * (65536u - weight) + to * weight + 32768u) >> 16;
}

static int tint8(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const Work* work = (const Work*)refcon;
    const QXE_Pixel8* from = (const QXE_Pixel8*)in;
    QXE_Pixel8* to = (QXE_Pixel8*)out;
    (void)x, (void)y;
    to->alpha = from->alpha;
    to->red = (uint8_t)mixed(from->red, work->target[0], work->weight);
    to->green = (uint8_t)mixed(from->green, work->target[1], work->weight);
    to->blue = (uint8_t)mixed(from->blue, work->target[2], work->weight);
    return QXE_NoError;
}

static int tint16(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const Work* work = (const Work*)refcon;
    const QXE_Pixel16* from = (const QXE_Pixel16*)in;
    QXE_Pixel16* to = (QXE_Pixel16*)out;
    (void)x, (void)y;
    to->alpha = from->alpha;
    to->red = (uint16_t)mixed(from->red, work->target[0], work->weight);
    to->green = (uint16_t)mixed(from->green, work->target[1], work->weight);
    to->blue = (uint16_t)mixed(from->blue, work->target[2], work->weight);
    return QXE_NoError;
}

static int tint_float(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const Work* work = (const Work*)refcon;
    const QXE_PixelFloat* from = (const QXE_PixelFloat*)in;
    QXE_PixelFloat* to = (QXE_PixelFloat*)out;
    (void)x, (void)y;
    to->alpha = from->alpha;
    to->red = from->red + (work->target_float[0] - from->red) * work->amount;
    to->green = from->green + (work->target_float[1] - from->green) * work->amount;
    to->blue = from->blue + (work->target_float[2] - from->blue) * work->amount;
    return QXE_NoError;
}

static Work work_of(const QXE_Instance* instance, const QXE_Frame* frame) {
    const double full = instance->depth == 8 ? 255 : 32768;
    Work work;
    int i;
    for (i = 0; i < 3; ++i) {
        const double channel = frame->values[kColour].numbers[i + 1];  // numbers[0] is alpha
        work.target[i] = (uint32_t)(channel * full + 0.5);
        work.target_float[i] = (float)channel;
    }
    work.amount = (float)frame->values[kAmount].numbers[0];
    work.weight = (uint32_t)(frame->values[kAmount].numbers[0] * 65536 + 0.5);
    return work;
}

static int32_t render(QXE_Instance* instance, const QXE_Frame* frame, QXE_World* source, QXE_World* destination) {
    const QXE_BasicSuite* basic = instance->basic;
    const char* name = instance->depth == 8    ? QXE_ITERATE8_SUITE
                       : instance->depth == 16 ? QXE_ITERATE16_SUITE
                                               : QXE_ITERATE_FLOAT_SUITE;
    Work work = work_of(instance, frame);
    const void* suite;
    QXE_Iterate* iterate;
    int code = basic->acquire(name, 1, &suite);
    if (code != QXE_NoError) return code;
    iterate =
        instance->depth == 8 ? ((const QXE_Iterate8Suite1*)suite)->iterate : ((const QXE_IterateDeepSuite1*)suite)->iterate;
    // With the number of rows as `final`, progress is told and abort asked from row to row.
    code = iterate(frame->in_data, 0, source->height, source, NULL, &work,
                   instance->depth == 8    ? tint8
                   : instance->depth == 16 ? tint16
                                           : tint_float,
                   destination);
    basic->release(name, 1);
    return code;
}

QXE_EXPORT int32_t QXE_DescribeEffect(QXE_Version host, QXE_EffectInfo* info) {
    (void)host;
    info->version.major = QXE_VERSION_MAJOR;
    info->version.minor = QXE_VERSION_MINOR;
    info->name = "tint";
    info->label = "Tint";
    info->about = "moves all colours towards one";
    info->depths = QXE_AnyDepth;
    info->parameter_count = kParameterCount;
    info->parameters = kParameters;
    info->render = render;
    return QXE_NoError;
}
