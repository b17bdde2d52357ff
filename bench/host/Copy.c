// SPDX-License-Identifier: Apache-2.0
// An effect that copies 8-bit pixels, in one of three ways.
#include <QX/QX_Effect.h>
#include <string.h>

enum { kRows, kLoop, kSuite };
static const char* const kWays[] = {"rows", "loop", "suite", NULL};
static const QXE_ParameterInfo kParameters[] = {{sizeof(QXE_ParameterInfo),
                                                 QXE_KindChoice,
                                                 "way",
                                                 "by rows, or pixel by pixel: in a loop or through the suite",
                                                 0,
                                                 0,
                                                 {{0, 0, 0, 0}, NULL, kRows},
                                                 kWays}};

static int swapped(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const QXE_Pixel8* from = (const QXE_Pixel8*)in;
    QXE_Pixel8* to = (QXE_Pixel8*)out;
    (void)refcon, (void)x, (void)y;
    to->alpha = from->alpha;
    to->red = from->blue;
    to->green = from->green;
    to->blue = from->red;
    return 0;
}

static void* row_of(const QXE_World* world, int32_t y) { return (char*)world->data + (ptrdiff_t)y * world->rowbytes; }

static int32_t render(QXE_Instance* instance, const QXE_Frame* frame, QXE_World* source, QXE_World* destination) {
    const int32_t way = frame->values[0].whole;
    int32_t x, y;
    if (way == kSuite) {
        const void* suite;
        int code = instance->basic->acquire(QXE_ITERATE8_SUITE, 1, &suite);
        if (code != 0) return code;
        code = ((const QXE_Iterate8Suite1*)suite)->iterate(NULL, 0, 0, source, NULL, NULL, swapped, destination);
        instance->basic->release(QXE_ITERATE8_SUITE, 1);
        return code;
    }
    for (y = 0; y < source->height; ++y) {
        QXE_Pixel8 *from = (QXE_Pixel8*)row_of(source, y), *to = (QXE_Pixel8*)row_of(destination, y);
        if (way == kRows) memcpy(to, from, (size_t)source->width * sizeof *to);
        for (x = 0; way == kLoop && x < source->width; ++x) swapped(NULL, x, y, from + x, to + x);
    }
    return 0;
}

QXE_EXPORT int32_t QXE_DescribeEffect(QXE_Version host, QXE_EffectInfo* info) {
    (void)host;
    info->version.major = QXE_VERSION_MAJOR;
    info->version.minor = QXE_VERSION_MINOR;
    info->name = "copy";
    info->depths = QXE_Depth8;
    info->parameter_count = 1;
    info->parameters = kParameters;
    info->render = render;
    return 0;
}
