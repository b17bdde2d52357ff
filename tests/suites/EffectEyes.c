// SPDX-License-Identifier: Apache-2.0
#include "tests/suites/EffectEyes.h"

#include <string.h>

#define CHECK(condition)                     \
    do {                                     \
        if (!(condition)) return #condition; \
    } while (0)
#define ACQUIRE(type, name, version) \
    const type* suite = NULL;        \
    CHECK(basic->acquire(name, version, (const void**)&suite) == QXE_NoError && suite != NULL)

enum { kSide = 8, kOne = 1 << 16 };  // 1 in 16.16

static const QXE_Pixel8 kRed = {255, 255, 0, 0}, kBlue = {255, 0, 0, 255}, kHalf = {128, 100, 0, 0};
static const QXE_Pixel16 kRed16 = {32768, 32768, 0, 0};
static const QXE_PixelFloat kRedFloat = {1, 1, 0, 0};

static QXE_Pixel8* at8(const QXE_World* world, int x, int y) {
    return (QXE_Pixel8*)((char*)world->data + (ptrdiff_t)y * world->rowbytes) + x;
}
static QXE_Pixel16* at16(const QXE_World* world, int x, int y) {
    return (QXE_Pixel16*)((char*)world->data + (ptrdiff_t)y * world->rowbytes) + x;
}
static QXE_PixelFloat* at_float(const QXE_World* world, int x, int y) {
    return (QXE_PixelFloat*)((char*)world->data + (ptrdiff_t)y * world->rowbytes) + x;
}
static int is8(const QXE_Pixel8* p, QXE_Pixel8 q) { return memcmp(p, &q, sizeof q) == 0; }

static const char* basic_suite(const QXE_BasicSuite* basic) {
    void *block = NULL, *larger = NULL;
    const void* suite = basic;
    CHECK(basic->acquire("QX World Suite", 9, &suite) == QXE_Failed && suite == NULL);
    CHECK(basic->is_equal("a", "a") == 1 && basic->is_equal("a", "b") == 0);
    CHECK(basic->allocate(4, &block) == 0 && basic->reallocate(block, 4000, &larger) == 0 && basic->free(larger) == 0);
    CHECK(basic->undefined() != 0);
    return NULL;
}

static const char* processor(const QXE_BasicSuite* basic) {
    ACQUIRE(QXE_ProcessorSuite1, QXE_PROCESSOR_SUITE, 1);
    QXE_ProcessorFlag* const flags[] = {suite->flag0, suite->flag1, suite->flag2, suite->flag3};
    for (int i = 0; i < 4; ++i) {
        union {
            unsigned char byte;
            QXE_Bool set;
        } out = {7};
        CHECK(flags[i](&out.set) == 0 && out.byte < 2);
    }
    return basic->release(QXE_PROCESSOR_SUITE, 1) == 0 ? NULL : "release";
}

static int near_to(double a, double b) { return a - b < 1e-12 && b - a < 1e-12; }

static const char* mathematics(const QXE_AnsiSuite1* m) {
    const double pi = 3.14159265358979323846;
    char text[16];
    CHECK(near_to(m->atan(1), pi / 4) && near_to(m->atan2(1, -1), pi * 3 / 4) && m->ceil(1.2) == 2);
    CHECK(near_to(m->cos(pi), -1) && near_to(m->exp(m->log(5)), 5) && m->fabs(-2) == 2 && m->floor(-1.2) == -2);
    CHECK(m->fmod(-7, 4) == -3 && m->fmod(5, 0) == 0 && m->hypot(3, 4) == 5 && near_to(m->log10(1000), 3));
    CHECK(m->pow(2, 10) == 1024 && near_to(m->sin(pi / 2), 1) && m->sqrt(9) == 3 && near_to(m->tan(pi / 4), 1));
    CHECK(near_to(m->asin(1), pi / 2) && near_to(m->acos(-1), pi));
    CHECK(m->sprintf(text, "%d-%s", 7, "x") == 3 && strcmp(text, "7-x") == 0);
    CHECK(m->strcpy(text, "copied") == text && strcmp(text, "copied") == 0);
    return NULL;
}

static const char* ansi(const QXE_BasicSuite* basic) {
    ACQUIRE(QXE_AnsiSuite1, QXE_ANSI_SUITE, 1);
    const char* const failed = mathematics(suite);
    return failed != NULL ? failed : basic->release(QXE_ANSI_SUITE, 1) == 0 ? NULL : "release";
}

static const char* handles(const QXE_HandleSuite2* h) {
    void** handle = h->new_handle(4);
    CHECK(handle != NULL && h->lock(handle) == *handle && h->size(handle) == 4 && h->size(NULL) == 0);
    memcpy(*handle, "abcd", 4);
    CHECK(h->resize(100000, &handle) == 0 && h->size(handle) == 100000 && memcmp(h->lock(handle), "abcd", 4) == 0);
    h->unlock(handle);
    h->dispose(handle);
    return NULL;
}

static const char* handle_suite(const QXE_BasicSuite* basic) {
    ACQUIRE(QXE_HandleSuite2, QXE_HANDLE_SUITE, 2);
    const char* const failed = handles(suite);
    return failed != NULL ? failed : basic->release(QXE_HANDLE_SUITE, 2) == 0 ? NULL : "release";
}

/// Red has hue 0, lightness one half, saturation 1, and comes back.
#define COLOURS(name, Suite, Pixel, start, Number, luma, light, full)                                         \
    static const char* name(const Suite* c) {                                                                 \
        const Pixel colour = start;                                                                           \
        Pixel back = start;                                                                                   \
        int32_t model[3];                                                                                     \
        Number value = 0;                                                                                     \
        CHECK(c->rgb_to_hls(NULL, &colour, model) == 0 && model[0] == 0 && model[2] == kOne);                 \
        CHECK(model[1] > kOne / 2 - kOne / 100 && model[1] < kOne / 2 + kOne / 100);                          \
        back.red = 0;                                                                                         \
        CHECK(c->hls_to_rgb(NULL, model, &back) == 0 && back.red > 0 && back.green < colour.red / 50);        \
        CHECK(c->rgb_to_yiq(NULL, &colour, model) == 0 && model[0] > kOne / 4 && model[0] < kOne / 3);        \
        back.red = 0;                                                                                         \
        CHECK(c->yiq_to_rgb(NULL, model, &back) == 0 && back.red > 0 && back.blue < colour.red / 50);         \
        CHECK(c->luminance(NULL, &colour, &value) == 0 && value > (luma)*9 / 10 && value < (luma)*11 / 10);   \
        CHECK(c->hue(NULL, &colour, &value) == 0 && value == 0);                                              \
        CHECK(c->lightness(NULL, &colour, &value) == 0 && value > (light)*9 / 10 && value < (light)*11 / 10); \
        CHECK(c->saturation(NULL, &colour, &value) == 0 && value == (full));                                  \
        return NULL;                                                                                          \
    }
COLOURS(colours8, QXE_Colour8Suite1, QXE_Pixel8, kRed, int32_t, 255 * 30, 127, 255)
COLOURS(colours16, QXE_Colour16Suite1, QXE_Pixel16, kRed16, int32_t, 32768 * 30, 16384, 32768)
COLOURS(colours_float, QXE_ColourFloatSuite1, QXE_PixelFloat, kRedFloat, float, 0.3f, 0.5f, 1)

static const char* colour_suites(const QXE_BasicSuite* basic) {
    const void *c8 = NULL, *c16 = NULL, *deep = NULL;
    const char* failed = NULL;
    CHECK(basic->acquire(QXE_COLOUR8_SUITE, 1, &c8) == 0 && basic->acquire(QXE_COLOUR16_SUITE, 1, &c16) == 0);
    CHECK(basic->acquire(QXE_COLOUR_FLOAT_SUITE, 1, &deep) == 0);
    if ((failed = colours8((const QXE_Colour8Suite1*)c8)) != NULL) return failed;
    if ((failed = colours16((const QXE_Colour16Suite1*)c16)) != NULL) return failed;
    if ((failed = colours_float((const QXE_ColourFloatSuite1*)deep)) != NULL) return failed;
    CHECK(basic->release(QXE_COLOUR8_SUITE, 1) == 0 && basic->release(QXE_COLOUR16_SUITE, 1) == 0);
    CHECK(basic->release(QXE_COLOUR_FLOAT_SUITE, 1) == 0);
    return NULL;
}

static const char* batch(const QXE_BasicSuite* basic) {
    ACQUIRE(QXE_BatchSamplingSuite1, QXE_BATCH_SAMPLING_SUITE, 1);
    for (int i = 0; i < 4; ++i) CHECK(suite->nothing[i] == NULL);
    return basic->release(QXE_BATCH_SAMPLING_SUITE, 1) == 0 ? NULL : "release";
}

/// Worlds of the three depths, red in the left half, clear in the right one.
typedef struct Worlds {
    QXE_World w8, w16, deep, other;
} Worlds;

/// The middle between a red and a clear column, and a footprint around it, give half the alpha.
#define SAMPLES(name, Suite, NAME, Pixel, world, full)                                                       \
    static const char* name(const QXE_BasicSuite* basic, const Worlds* w) {                                  \
        ACQUIRE(Suite, NAME, 1);                                                                             \
        QXE_SampPB point = {0}, block = {0};                                                                 \
        Pixel out;                                                                                           \
        point.src = block.src = &w->world;                                                                   \
        block.x_radius = block.y_radius = 2 * kOne;                                                          \
        CHECK(suite->nearest(NULL, 2 * kOne, 3 * kOne, &point, &out) == 0 && out.alpha == (full) &&          \
              out.red == (full));                                                                            \
        CHECK(suite->subpixel(NULL, 7 * kOne / 2, 3 * kOne, &point, &out) == 0 && out.red == (full));        \
        CHECK(out.alpha > (full)*49 / 100 && out.alpha < (full)*51 / 100);                                   \
        CHECK(suite->area(NULL, 7 * kOne / 2, 7 * kOne / 2, &block, &out) == 0 && out.red > (full)*49 / 50); \
        CHECK(out.alpha > (full)*49 / 100 && out.alpha < (full)*51 / 100);                                   \
        CHECK(suite->subpixel(NULL, -9 * kOne, 0, &point, &out) == 0 && out.alpha == 0);                     \
        return basic->release(NAME, 1) == 0 ? NULL : "release";                                              \
    }
SAMPLES(samples8, QXE_Sampling8Suite1, QXE_SAMPLING8_SUITE, QXE_Pixel8, w8, 255)
SAMPLES(samples16, QXE_Sampling16Suite1, QXE_SAMPLING16_SUITE, QXE_Pixel16, w16, 32768)
SAMPLES(samples_float, QXE_SamplingFloatSuite1, QXE_SAMPLING_FLOAT_SUITE, QXE_PixelFloat, deep, 1.0f)

/// Moves red to green, and tells its places.
static int turn8(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const QXE_Pixel8* const from = (const QXE_Pixel8*)in;
    QXE_Pixel8* const to = (QXE_Pixel8*)out;
    to->alpha = from->alpha, to->red = (uint8_t)x, to->green = from->red, to->blue = (uint8_t)y;
    return *(const int*)refcon;
}
static int turn16(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const QXE_Pixel16* const from = (const QXE_Pixel16*)in;
    QXE_Pixel16* const to = (QXE_Pixel16*)out;
    to->alpha = from->alpha, to->red = (uint16_t)x, to->green = from->red, to->blue = (uint16_t)y;
    return *(const int*)refcon;
}
static int turn_float(void* refcon, int32_t x, int32_t y, void* in, void* out) {
    const QXE_PixelFloat* const from = (const QXE_PixelFloat*)in;
    QXE_PixelFloat* const to = (QXE_PixelFloat*)out;
    to->alpha = from->alpha, to->red = (float)x, to->green = from->red, to->blue = (float)y;
    return *(const int*)refcon;
}
static int mark(void* refcon, int32_t thread_index, int32_t i, int32_t iterations) {
    ((char*)refcon)[i] = (char)(thread_index >= 0 && iterations == 9);
    return 0;
}

/// From `src` into `dst` of one depth; the offset forms move by one column, whose first place has no source.
#define ITERATES(name, Suite, Pixel, at, turn, full)                                                    \
    static const char* name(const Suite* s, QXE_World* src, QXE_World* dst) {                           \
        const QXE_Point origin = {1, 0};                                                                \
        int answer = 99;                                                                                \
        CHECK(s->iterate(NULL, 0, 0, src, NULL, &answer, turn, dst) == 99);                             \
        answer = 0;                                                                                     \
        CHECK(s->iterate(NULL, 0, 0, src, NULL, &answer, turn, dst) == 0);                              \
        CHECK(at(dst, 3, 7)->green == (full) && at(dst, 3, 7)->red == 3 && at(dst, 3, 7)->blue == 7);   \
        CHECK(at(dst, 4, 7)->green == 0);                                                               \
        memset(at(dst, 0, 0), 0, sizeof(Pixel));                                                        \
        CHECK(s->iterate_origin(NULL, 0, 0, src, NULL, &origin, &answer, turn, dst) == 0);              \
        CHECK(at(dst, 4, 7)->green == (full) && at(dst, 0, 0)->alpha == 0);                             \
        at(dst, 0, 1)->green = (full);                                                                  \
        CHECK(s->iterate_origin_non_clip_src(NULL, 0, 0, src, NULL, &origin, &answer, turn, dst) == 0); \
        CHECK(at(dst, 4, 7)->green == (full) && at(dst, 0, 1)->green == 0);                             \
        return NULL;                                                                                    \
    }
ITERATES(iterates8, QXE_Iterate8Suite1, QXE_Pixel8, at8, turn8, 255)
ITERATES(iterates16, QXE_IterateDeepSuite1, QXE_Pixel16, at16, turn16, 32768)
ITERATES(iterates_float, QXE_IterateDeepSuite1, QXE_PixelFloat, at_float, turn_float, 1)

static const char* tables_and_indices(QXE_IterateLUT* lut, QXE_IterateGeneric* generic, Worlds* w) {
    uint8_t invert[256];
    char done[10] = {0};
    for (int i = 0; i < 256; ++i) invert[i] = (uint8_t)(255 - i);
    CHECK(lut(NULL, 0, 0, &w->w8, NULL, NULL, invert, NULL, NULL, &w->other) == 0);
    CHECK(at8(&w->other, 0, 0)->red == 0 && at8(&w->other, 0, 0)->alpha == 255 && at8(&w->other, 7, 0)->red == 255);
    CHECK(generic(9, done, mark) == 0 && memcmp(done, "\1\1\1\1\1\1\1\1\1", 10) == 0);
    return NULL;
}

static const char* iterate_suites(const QXE_BasicSuite* basic, const QXE_WorldSuite2* worlds, Worlds* w) {
    const void *s8 = NULL, *s16 = NULL, *deep = NULL;
    const char* failed = NULL;
    QXE_World out16, out_float;
    CHECK(worlds->new_world(NULL, kSide, kSide, 1, QXE_FORMAT_16, &out16) == 0);
    CHECK(worlds->new_world(NULL, kSide, kSide, 1, QXE_FORMAT_FLOAT, &out_float) == 0);
    CHECK(basic->acquire(QXE_ITERATE8_SUITE, 1, &s8) == 0 && basic->acquire(QXE_ITERATE16_SUITE, 1, &s16) == 0);
    CHECK(basic->acquire(QXE_ITERATE_FLOAT_SUITE, 1, &deep) == 0);
    const QXE_Iterate8Suite1* const eight = (const QXE_Iterate8Suite1*)s8;
    if ((failed = iterates8(eight, &w->w8, &w->other)) != NULL) return failed;
    if ((failed = tables_and_indices(eight->iterate_lut, eight->iterate_generic, w)) != NULL) return failed;
    if ((failed = iterates16((const QXE_IterateDeepSuite1*)s16, &w->w16, &out16)) != NULL) return failed;
    if ((failed = iterates_float((const QXE_IterateDeepSuite1*)deep, &w->deep, &out_float)) != NULL) return failed;
    CHECK(worlds->dispose(NULL, &out16) == 0 && worlds->dispose(NULL, &out_float) == 0);
    CHECK(basic->release(QXE_ITERATE8_SUITE, 1) == 0 && basic->release(QXE_ITERATE16_SUITE, 1) == 0);
    return basic->release(QXE_ITERATE_FLOAT_SUITE, 1) == 0 ? NULL : "release";
}

static const char* transforms(const QXE_WorldTransformSuite1* t, QXE_Fill8* fill, Worlds* w) {
    static const int32_t one_in_the_middle[9] = {0, 0, 0, 0, 256, 0, 0, 0, 0};
    const QXE_Rect all = {0, 0, kSide, kSide}, small = {0, 0, 2, 2};
    const QXE_CompositeMode over = {QXE_xfer_over, 0, 255, 0, 32768};
    const QXE_Matrix3 right = {{{1, 0, 0}, {0, 1, 0}, {1, 0, 1}}};
    const QXE_MaskWorld mask = {w->w8, 2, 0, QXE_MaskAlpha};  // covers columns 2 to 5
    QXE_World* const out = &w->other;
    CHECK(fill(NULL, NULL, NULL, out) == 0 && at8(out, 0, 0)->alpha == 0);
    CHECK(t->composite_rect(NULL, &all, 255, &w->w8, 0, 0, 0, 0, out) == 0 && is8(at8(out, 3, 3), kRed));
    CHECK(fill(NULL, &kBlue, NULL, out) == 0 && t->blend(NULL, &w->w8, out, kOne / 2, out) == 0);
    CHECK(at8(out, 0, 0)->red > 120 && at8(out, 0, 0)->blue > 120 && at8(out, 7, 0)->red == 0);
    CHECK(t->convolve(NULL, &w->w8, NULL, 0, 3, one_in_the_middle, one_in_the_middle, one_in_the_middle,
                      one_in_the_middle, out) == 0);
    CHECK(at8(out, 5, 5)->alpha == 0);
    CHECK(fill(NULL, NULL, NULL, out) == 0 && t->copy(NULL, &w->w8, out, &small, &all) == 0);
    CHECK(is8(at8(out, 7, 7), kRed));
    CHECK(fill(NULL, NULL, NULL, out) == 0 && t->copy_hq(NULL, &w->w8, out, &all, NULL) == 0);
    CHECK(is8(at8(out, 3, 7), kRed) && at8(out, 4, 7)->alpha == 0);
    CHECK(fill(NULL, &kBlue, NULL, out) == 0);
    CHECK(t->transfer_rect(NULL, 0, 0, 0, &all, &w->w8, &over, &mask, 0, 0, out) == 0);
    CHECK(is8(at8(out, 1, 2), kBlue) && is8(at8(out, 2, 2), kRed) && is8(at8(out, 6, 2), kBlue));
    CHECK(fill(NULL, NULL, NULL, out) == 0);
    CHECK(t->transform_world(NULL, 1, 0, 0, &w->w8, &over, NULL, &right, 1, 1, NULL, out) == 0);
    CHECK(at8(out, 0, 2)->alpha == 0 && is8(at8(out, 4, 2), kRed));
    return NULL;
}

static const char* transform_suite(const QXE_BasicSuite* basic, QXE_Fill8* fill, Worlds* w) {
    ACQUIRE(QXE_WorldTransformSuite1, QXE_WORLD_TRANSFORM_SUITE, 1);
    const char* const failed = transforms(suite, fill, w);
    return failed != NULL ? failed : basic->release(QXE_WORLD_TRANSFORM_SUITE, 1) == 0 ? NULL : "release";
}

static const char* mattes(const QXE_FillMatteSuite2* f, Worlds* w) {
    QXE_World* const out = &w->other;
    CHECK(f->fill(NULL, &kHalf, NULL, out) == 0 && f->premultiply(NULL, 1, out) == 0 && at8(out, 1, 1)->red == 50);
    CHECK(f->premultiply(NULL, 0, out) == 0 && at8(out, 1, 1)->red == 100);
    CHECK(f->premultiply_color(NULL, out, &kBlue, 1, out) == 0 && at8(out, 1, 1)->blue == 127);
    CHECK(f->premultiply_color16(NULL, &w->w16, &kRed16, 1, &w->w16) == 0 && at16(&w->w16, 7, 7)->red == 32768);
    CHECK(f->premultiply_color_float(NULL, &w->deep, &kRedFloat, 1, &w->deep) == 0);
    CHECK(at_float(&w->deep, 7, 7)->red == 1 && at_float(&w->deep, 7, 7)->alpha == 0);
    return NULL;
}

static const char* pixel_data(const QXE_BasicSuite* basic, Worlds* w) {
    const void* old = NULL;
    ACQUIRE(QXE_PixelDataSuite2, QXE_PIXEL_DATA_SUITE, 2);
    void* out = &out;
    CHECK(suite->get_pixel_data8(&w->w8, NULL, &out) == 0 && out == w->w8.data);
    CHECK(suite->get_pixel_data16(&w->w8, NULL, &out) == 0 && out == NULL);
    CHECK(suite->get_pixel_data16(&w->w16, NULL, &out) == 0 && out == w->w16.data);
    CHECK(suite->get_pixel_data_float(&w->deep, w, &out) == 0 && out == w);
    CHECK(basic->acquire(QXE_PIXEL_DATA_SUITE, 1, &old) == 0 && old != suite);
    CHECK(((const QXE_PixelDataSuite1*)old)->get_pixel_data16(&w->w16, NULL, &out) == 0 && out == w->w16.data);
    CHECK(((const QXE_PixelDataSuite1*)old)->get_pixel_data8(&w->deep, NULL, &out) == 0 && out == NULL);
    CHECK(((const QXE_PixelDataSuite1*)old)->get_pixel_data_float(&w->deep, NULL, &out) == 0 && out == w->deep.data);
    CHECK(basic->release(QXE_PIXEL_DATA_SUITE, 1) == 0);
    return basic->release(QXE_PIXEL_DATA_SUITE, 2) == 0 ? NULL : "release";
}

/// What the block has beside the suites' routines, and those of them that go by its quality.
static const char* callback_block(const QXE_CallbackBlock* b, Worlds* w) {
    const char* failed = NULL;
    const QXE_HandleSuite2 h = {b->host_new_handle,     b->host_lock_handle,     b->host_unlock_handle,
                                b->host_dispose_handle, b->host_get_handle_size, b->host_resize_handle};
    const QXE_Iterate8Suite1 i8 = {b->iterate, b->iterate_origin, b->iterate_lut, b->iterate_origin_non_clip_src,
                                   b->iterate_generic};
    const QXE_IterateDeepSuite1 i16 = {b->iterate16, b->iterate_origin16, b->iterate_origin_non_clip_src16};
    const QXE_WorldTransformSuite1 t = {b->composite_rect, b->blend,         b->convolve,       b->copy,
                                        b->copy,           b->transfer_rect, b->transform_world};
    QXE_SampPB samp = {0};
    QXE_Pixel8 out8;
    QXE_Pixel16 out16;
    QXE_World made, made16;
    int32_t width = 0;
    uint32_t weights[9];
    void* out = NULL;
    CHECK(b->reserved0 == NULL && b->reserved1 == NULL && b->reserved2 == NULL && b->reserved_ansi == NULL);
    if ((failed = mathematics(&b->ansi)) != NULL || (failed = colours8(&b->colour)) != NULL) return failed;
    if ((failed = handles(&h)) != NULL || (failed = iterates8(&i8, &w->w8, &w->other)) != NULL) return failed;
    if ((failed = tables_and_indices(b->iterate_lut, b->iterate_generic, w)) != NULL) return failed;
    if ((failed = transforms(&t, b->fill, w)) != NULL) return failed;
    samp.src = &w->w8;
    CHECK(b->subpixel_sample(NULL, kOne, kOne, &samp, &out8) == 0 && is8(&out8, kRed));
    samp.x_radius = samp.y_radius = kOne / 2;
    CHECK(b->area_sample(NULL, kOne, kOne, &samp, &out8) == 0 && is8(&out8, kRed));
    CHECK(b->fill(NULL, &kHalf, NULL, &w->other) == 0 && b->premultiply(NULL, 1, &w->other) == 0);
    CHECK(at8(&w->other, 0, 0)->red == 50);
    CHECK(b->premultiply_color(NULL, &w->w8, &kBlue, 1, &w->other) == 0 && at8(&w->other, 7, 0)->blue == 255);
    CHECK(b->gaussian_kernel(NULL, 1, 0, 1, &width, weights) == 0 && width == 3 && weights[4] > weights[0]);
    CHECK(b->new_world(NULL, kSide, kSide, 1, &made) == 0 && b->new_world(NULL, kSide, kSide, 3, &made16) == 0);
    CHECK(b->fill16(NULL, &kRed16, NULL, &made16) == 0 && at16(&made16, 7, 7)->red == 32768);
    samp.src = &made16;
    CHECK(b->subpixel_sample16(NULL, kOne, kOne, &samp, &out16) == 0 && out16.red == 32768);
    CHECK(b->area_sample16(NULL, kOne, kOne, &samp, &out16) == 0 && out16.red == 32768);
    CHECK((failed = iterates16(&i16, &w->w16, &made16)) == NULL);
    CHECK(b->premultiply_color16(NULL, &w->w16, &kRed16, 1, &made16) == 0 && at16(&made16, 7, 0)->red == 32768);
    CHECK(b->get_pixel_data8(&made, NULL, &out) == 0 && out == made.data);
    CHECK(b->get_pixel_data16(&made16, NULL, &out) == 0 && out == made16.data);
    CHECK(b->dispose_world(NULL, &made) == 0 && b->dispose_world(NULL, &made16) == 0 && made.data == NULL);
    CHECK(b->get_callback_addr(NULL, 1, 1, 12, &out) == 0 && memcmp(&out, &b->iterate, sizeof out) == 0);
    CHECK(b->app(NULL, 99, &out) == 0);
    return NULL;
}

const char* look_through_c_eyes(const QXE_BasicSuite* basic, const QXE_CallbackBlock* block) {
    const QXE_Rect left = {0, 0, kSide / 2, kSide};
    const void *old = NULL, *new_one = NULL, *matte = NULL;
    const char* failed = NULL;
    uint32_t format = 0;
    Worlds w;
    if ((failed = basic_suite(basic)) != NULL || (failed = processor(basic)) != NULL) return failed;
    if ((failed = ansi(basic)) != NULL || (failed = handle_suite(basic)) != NULL) return failed;
    if ((failed = colour_suites(basic)) != NULL || (failed = batch(basic)) != NULL) return failed;
    CHECK(basic->acquire(QXE_WORLD_SUITE, 1, &old) == 0 && basic->acquire(QXE_WORLD_SUITE, 2, &new_one) == 0);
    CHECK(basic->acquire(QXE_FILL_MATTE_SUITE, 2, &matte) == 0);
    const QXE_WorldSuite1* const worlds1 = (const QXE_WorldSuite1*)old;
    const QXE_WorldSuite2* const worlds2 = (const QXE_WorldSuite2*)new_one;
    const QXE_FillMatteSuite2* const fills = (const QXE_FillMatteSuite2*)matte;
    CHECK(worlds1->new_world(NULL, kSide, kSide, 1, &w.w8) == 0 &&
          worlds1->new_world(NULL, kSide, kSide, 1, &w.other) == 0);
    CHECK(worlds2->new_world(NULL, kSide, kSide, 1, QXE_FORMAT_16, &w.w16) == 0);
    CHECK(worlds2->new_world(NULL, kSide, kSide, 1, QXE_FORMAT_FLOAT, &w.deep) == 0);
    CHECK(worlds2->format(&w.w8, &format) == 0 && format == QXE_FORMAT_8);
    CHECK(worlds2->format(&w.deep, &format) == 0 && format == QXE_FORMAT_FLOAT);
    CHECK(fills->fill(NULL, &kRed, &left, &w.w8) == 0 && is8(at8(&w.w8, 3, 7), kRed) && at8(&w.w8, 4, 7)->alpha == 0);
    CHECK(fills->fill16(NULL, &kRed16, &left, &w.w16) == 0 && at16(&w.w16, 3, 7)->red == 32768);
    CHECK(fills->fill_float(NULL, &kRedFloat, &left, &w.deep) == 0 && at_float(&w.deep, 3, 7)->red == 1);
    if ((failed = samples8(basic, &w)) != NULL || (failed = samples16(basic, &w)) != NULL) return failed;
    if ((failed = samples_float(basic, &w)) != NULL) return failed;
    if ((failed = iterate_suites(basic, worlds2, &w)) != NULL) return failed;
    if ((failed = transform_suite(basic, fills->fill, &w)) != NULL) return failed;
    if ((failed = pixel_data(basic, &w)) != NULL || (failed = callback_block(block, &w)) != NULL) return failed;
    if ((failed = mattes(fills, &w)) != NULL) return failed;
    CHECK(worlds1->dispose(NULL, &w.w8) == 0 && worlds1->dispose(NULL, &w.other) == 0 && w.w8.data == NULL);
    CHECK(worlds2->dispose(NULL, &w.w16) == 0 && worlds2->dispose(NULL, &w.deep) == 0);
    CHECK(basic->release(QXE_WORLD_SUITE, 1) == 0 && basic->release(QXE_WORLD_SUITE, 2) == 0);
    return basic->release(QXE_FILL_MATTE_SUITE, 2) == 0 ? NULL : "release";
}
