// SPDX-License-Identifier: Apache-2.0
// A shadow: the layer's shape in one colour, moved, under the layer. The result is larger where the shadow leaves it.
#include <QX/QX_Effect.h>

enum { kOffset, kOpacity, kColour, kParameterCount };

static const QXE_ParameterInfo kParameters[kParameterCount] = {
    {sizeof(QXE_ParameterInfo), QXE_KindPoint, "offset", "of the shadow from the layer, in whole pixels", -10000, 10000,
     {{12, 12, 0, 0}, NULL, 0}, NULL},
    {sizeof(QXE_ParameterInfo), QXE_KindNumber, "opacity", "of the shadow", 0, 1,
     {{0.5, 0, 0, 0}, NULL, 0}, NULL},
    {sizeof(QXE_ParameterInfo), QXE_KindColour, "colour", "of the shadow", 0, 1,
     {{1, 0, 0, 0}, NULL, 0}, NULL},
};

/// An instance's own data, in a handle: which suites it holds.
typedef struct State {
    const QXE_WorldSuite2* worlds;
    const QXE_FillMatteSuite2* fills;
} State;

static void end(QXE_Instance* instance) {
    const QXE_CallbackBlock* block = instance->callbacks;
    void** handle = (void**)instance->data;
    const State* state = (const State*)block->host_lock_handle(handle);
    if (state->worlds != NULL) instance->basic->release(QXE_WORLD_SUITE, 2);
    if (state->fills != NULL) instance->basic->release(QXE_FILL_MATTE_SUITE, 2);
    block->host_unlock_handle(handle);
    block->host_dispose_handle(handle);
}

static int32_t begin(QXE_Instance* instance) {
    const QXE_CallbackBlock* block = instance->callbacks;
    const void *worlds = NULL, *fills = NULL;
    void** handle = block->host_new_handle(sizeof(State));
    State* state;
    int code;
    if (handle == NULL) return QXE_OutOfMemory;
    code = instance->basic->acquire(QXE_WORLD_SUITE, 2, &worlds);
    if (code == QXE_NoError) code = instance->basic->acquire(QXE_FILL_MATTE_SUITE, 2, &fills);
    state = (State*)block->host_lock_handle(handle);
    state->worlds = (const QXE_WorldSuite2*)worlds;
    state->fills = (const QXE_FillMatteSuite2*)fills;
    block->host_unlock_handle(handle);
    instance->data = handle;
    if (code != QXE_NoError) end(instance);  // the host doesn't, after a begin that failed
    return code;
}

/// The shadow's whole pixels to the right (axis 0) or down (1).
static int32_t offset_of(const QXE_Instance* instance, const QXE_Frame* frame, int axis) {
    return (int32_t)instance->callbacks->ansi.floor(frame->values[kOffset].numbers[axis] + 0.5);
}

static int32_t room(QXE_Instance* instance, const QXE_Frame* frame, QXE_Room* out) {
    const int32_t x = offset_of(instance, frame, 0), y = offset_of(instance, frame, 1);
    out->left = x < 0 ? -x : 0;
    out->right = x > 0 ? x : 0;
    out->top = y < 0 ? -y : 0;
    out->bottom = y > 0 ? y : 0;
    return QXE_NoError;
}

/// One colour all over a world, on the scale of its depth.
static int fill(const QXE_Instance* instance, const QXE_FillMatteSuite2* fills, const double* c, QXE_World* world) {
    if (instance->depth == 8) {
        const QXE_Pixel8 colour = {(uint8_t)(c[0] * 255 + 0.5), (uint8_t)(c[1] * 255 + 0.5),
                                   (uint8_t)(c[2] * 255 + 0.5), (uint8_t)(c[3] * 255 + 0.5)};
        return instance->callbacks->fill(NULL, &colour, NULL, world);
    } else if (instance->depth == 16) {
        const QXE_Pixel16 colour = {(uint16_t)(c[0] * 32768 + 0.5), (uint16_t)(c[1] * 32768 + 0.5),
                                    (uint16_t)(c[2] * 32768 + 0.5), (uint16_t)(c[3] * 32768 + 0.5)};
        return instance->callbacks->fill16(NULL, &colour, NULL, world);
    } else {
        const QXE_PixelFloat colour = {(float)c[0], (float)c[1], (float)c[2], (float)c[3]};
        return fills->fill_float(NULL, &colour, NULL, world);
    }
}

/// Lays all of one world onto another by a mode, unless the user has cancelled.
static int lay(const QXE_Instance* instance, const QXE_Frame* frame, QXE_World* from, int32_t xfer, double opacity,
               int32_t x, int32_t y, QXE_World* onto) {
    QXE_InData* in_data = frame->in_data;
    QXE_CompositeMode mode = {0, 0, 0, 0, 0};
    QXE_Rect all = {0, 0, 0, 0};
    int code = in_data->abort(in_data->effect_ref);
    if (code != QXE_NoError) return code;
    mode.xfer = xfer;
    mode.opacity16 = (uint16_t)(opacity * 32768 + 0.5);
    all.right = from->width;
    all.bottom = from->height;
    return instance->callbacks->transfer_rect(in_data->effect_ref, 1, 0, 0, &all, from, &mode, NULL, x, y, onto);
}

static int32_t render(QXE_Instance* instance, const QXE_Frame* frame, QXE_World* source, QXE_World* destination) {
    const QXE_CallbackBlock* block = instance->callbacks;
    const State state = *(const State*)block->host_lock_handle((void**)instance->data);
    const int32_t x = offset_of(instance, frame, 0), y = offset_of(instance, frame, 1);
    const int32_t left = x < 0 ? -x : 0, top = y < 0 ? -y : 0;
    uint32_t format = 0;
    QXE_World shape;
    int code = state.worlds->format(source, &format);
    block->host_unlock_handle((void**)instance->data);
    if (code == QXE_NoError) {
        code = state.worlds->new_world(NULL, source->width, source->height, 0, format, &shape);
    }
    if (code != QXE_NoError) return code;
    code = fill(instance, state.fills, frame->values[kColour].numbers, &shape);
    if (code == QXE_NoError) code = lay(instance, frame, source, QXE_xfer_alpha_multiply, 1, 0, 0, &shape);
    if (code == QXE_NoError) code = block->fill(NULL, NULL, NULL, destination);  // clear, at any depth
    if (code == QXE_NoError) {
        code = lay(instance, frame, &shape, QXE_xfer_over, frame->values[kOpacity].numbers[0], left + x, top + y,
                   destination);
    }
    if (code == QXE_NoError) code = lay(instance, frame, source, QXE_xfer_over, 1, left, top, destination);
    state.worlds->dispose(NULL, &shape);
    return code;
}

QXE_EXPORT int32_t QXE_DescribeEffect(QXE_Version host, QXE_EffectInfo* info) {
    (void)host;
    info->version.major = QXE_VERSION_MAJOR;
    info->version.minor = QXE_VERSION_MINOR;
    info->name = "shadow";
    info->label = "Shadow";
    info->about = "lays the shape of the layer under it as a shadow";
    info->depths = QXE_AnyDepth;
    info->parameter_count = kParameterCount;
    info->parameters = kParameters;
    info->begin = begin;
    info->end = end;
    info->room = room;
    info->render = render;
    return QXE_NoError;
}
