// SPDX-License-Identifier: Apache-2.0
#ifndef QX_EFFECT_H
#define QX_EFFECT_H

/// What an effect written in C sees of QX: records, the callback block and the suites. No library is linked; all
/// routines are reached through pointers that the host hands in. C99, C11 and C++17.
///
/// What holds of all routines, where they don't say otherwise:
/// - They return a code, 0 for done. What is refused is reported to the user and leaves everything as it was.
/// - A world, its pixels, a record and an out pointer may not be null; a missing one is refused with QXE_Failed or
///   QXE_BadParameter. `ref` may be null, and is not read where it is not told.
/// - A world on a GPU (no `data`, but a `platform_ref`) is refused with QXE_Failed.
/// - Pixels are straight, that is, not multiplied by alpha. Rectangles are half-open and are clipped to their world;
///   null is the whole world.
/// - They may be called from any thread, several at once on different destinations. No record is kept after the call.
/// - The same pixels come out at any number of threads and on every processor.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
typedef bool QXE_Bool;
#else
typedef _Bool QXE_Bool;
#endif

// ---- codes ------------------------------------------------------------------------------------------------------

/// Any other number that is not 0 comes from a function that was handed in, and is passed on.
enum QXE_Code {
    QXE_NoError = 0,
    QXE_Failed = 3,  ///< wrong depth, a missing world or pixels, an index out of range
    QXE_OutOfMemory = 4,
    QXE_UnimplementedMode = 5,
    QXE_ParameterOutOfRange = 514,
    QXE_UnknownSelector = 515,
    QXE_BadParameter = 516,  ///< null record, invalid size
    QXE_Interrupted = 517    ///< the user cancelled
};

// ---- pixels, rectangles, worlds -----------------------------------------------------------------------------------

/// Channels lie alpha first. Full scale is 255, 32768 (which is legal, and no more is) and 1.0; float channels may
/// leave 0 to 1 and are kept so.
typedef struct QXE_Pixel8 {
    uint8_t alpha, red, green, blue;
} QXE_Pixel8;
typedef struct QXE_Pixel16 {
    uint16_t alpha, red, green, blue;
} QXE_Pixel16;
typedef struct QXE_PixelFloat {
    float alpha, red, green, blue;
} QXE_PixelFloat;

/// Half-open: `right` and `bottom` are one past the last column and row.
typedef struct QXE_Rect {
    int32_t left, top, right, bottom;
} QXE_Rect;
typedef struct QXE_Point {
    int32_t x, y;
} QXE_Point;

/// An image. Row y begins `y * rowbytes` bytes behind `data`; a row may be padded, and `rowbytes` negative. Which of
/// the three pixels it has is told by the pixel data suite.
typedef struct QXE_World {
    void* reserved0;
    void* reserved1;
    uint32_t world_flags;
    void* data;  ///< pixel (0, 0)
    int32_t rowbytes;
    int32_t width, height;
    QXE_Rect extent_hint;  ///< the part that holds content
    void** platform_ref;
    uint32_t ownership_mark;
    void* world;
    uint32_t pix_aspect_num, pix_aspect_den;
    void* reserved2;
    int32_t origin_x, origin_y;
    uint16_t reserved3, reserved4;
    uint32_t reserved5;
} QXE_World;

/// A pixel format: four characters as they lie in memory.
#define QXE_FORMAT(a, b, c, d) ((uint32_t)(a) | (uint32_t)(b) << 8 | (uint32_t)(c) << 16 | (uint32_t)(d) << 24)
#define QXE_FORMAT_8 QXE_FORMAT('a', 'r', 'g', 'b')
#define QXE_FORMAT_16 QXE_FORMAT('v', 'n', '1', '6')
#define QXE_FORMAT_FLOAT QXE_FORMAT('v', 'n', '3', '2')

// ---- records ------------------------------------------------------------------------------------------------------

/// Who listens to a routine. A null record, or null functions, mean that nobody does. An answer other than 0 ends the
/// work, after whole rows, and is the routine's code.
typedef struct QXE_ProgressInfo {
    void* refcon;
    int (*abort_func)(void* refcon);
    int (*progress_func)(void* refcon, int32_t count, int32_t total);
} QXE_ProgressInfo;

/// The context of a call. An effect reads the three fields that have a name, hands the record on as it is, and keeps no
/// copy. `effect_ref` begins with a QXE_ProgressInfo, and is what `abort` and `progress` are called with.
typedef struct QXE_InData {
    int (*abort)(void* effect_ref);
    int (*progress)(void* effect_ref, int32_t count, int32_t total);
    void* opaque1[10];
    void* effect_ref;
    void* opaque2[19];
} QXE_InData;

/// How one world is laid over another.
typedef struct QXE_CompositeMode {
    int32_t xfer;        ///< QXE_TransferMode
    int32_t rand_seed;   ///< of dissolve
    uint8_t opacity;     ///< 0 to 255; where it is 0, `opacity16` counts
    uint8_t rgb_only;    ///< not 0: the destination keeps its alpha
    uint16_t opacity16;  ///< 0 to 32768
} QXE_CompositeMode;

enum QXE_TransferMode {
    QXE_xfer_replace = -3,
    QXE_xfer_mask_crossfade = -2,
    QXE_xfer_copy = 0,
    QXE_xfer_behind = 1,
    QXE_xfer_over = 2,
    QXE_xfer_dissolve = 3,
    QXE_xfer_add = 4,
    QXE_xfer_multiply = 5,
    QXE_xfer_screen = 6,
    QXE_xfer_overlay = 7,
    QXE_xfer_soft_light = 8,
    QXE_xfer_hard_light = 9,
    QXE_xfer_darken = 10,
    QXE_xfer_lighten = 11,
    QXE_xfer_difference_premul = 12,
    QXE_xfer_hue = 13,
    QXE_xfer_saturation = 14,
    QXE_xfer_colour = 15,
    QXE_xfer_luminosity = 16,
    QXE_xfer_alpha_multiply = 17,
    QXE_xfer_alpha_multiply_luma = 18,
    QXE_xfer_alpha_multiply_inverse = 19,
    QXE_xfer_alpha_multiply_inverse_luma = 20,
    QXE_xfer_premul_over = 21,
    QXE_xfer_alpha_add = 22,
    QXE_xfer_dodge_premul = 23,
    QXE_xfer_burn_premul = 24,
    QXE_xfer_exclusion = 25,
    QXE_xfer_difference = 26,
    QXE_xfer_dodge = 27,
    QXE_xfer_burn = 28,
    QXE_xfer_linear_dodge = 29,
    QXE_xfer_linear_burn = 30,
    QXE_xfer_linear_light = 31,
    QXE_xfer_vivid_light = 32,
    QXE_xfer_pin_light = 33,
    QXE_xfer_hard_mix = 34,
    QXE_xfer_lighter_colour = 35,
    QXE_xfer_darker_colour = 36,
    QXE_xfer_subtract = 37,
    QXE_xfer_divide = 38,
    QXE_xfer_threshold_blue = 39,
    QXE_xfer_marker_guard = 40
};

enum QXE_MaskKind {
    QXE_MaskAlpha = 0,         ///< the mask's alpha; clips
    QXE_MaskInverseAlpha = 1,  ///< its complement; full outside the mask
    QXE_MaskLuma = 2,          ///< luma times alpha; clips
    QXE_MaskInverseLuma = 3    ///< its complement; full outside the mask
};

/// A mask of the depth of the worlds that it stands between, and where its left top corner lies in the destination.
typedef struct QXE_MaskWorld {
    QXE_World world;
    int32_t x, y;
    uint32_t flags;  ///< QXE_MaskKind
} QXE_MaskWorld;

/// Row vectors multiply it from the left: (x, y, 1) becomes (x, y, 1) * m. The translation stands in m[2][0], m[2][1].
typedef struct QXE_Matrix3 {
    double m[3][3];
} QXE_Matrix3;

/// A source to sample, and how much of it an area sample covers: with a radius of 0 that is nothing, and the sample
/// clear. Other samplers read `src` alone. What is not set is 0. Lengths are in 16.16.
typedef struct QXE_SampPB {
    int32_t x_radius;  ///< half the footprint's width
    int32_t y_radius;
    int32_t area;  ///< 4 * x_radius * y_radius in whole pixels; for premultiplied area samples alone
    const QXE_World* src;
    int32_t motion_steps;
    int32_t reserved[19];
} QXE_SampPB;

// ---- types of routines --------------------------------------------------------------------------------------------

/// One pixel of `samp->src` at (x, y) in 16.16, whose integers lie on pixels; outside is transparent. `out` may not lie
/// in the source, which has the depth of the routine. Samplers are for inner loops: they check nothing of what they are
/// handed.
typedef int QXE_Sample8(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel8* out);
typedef int QXE_Sample16(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_Pixel16* out);
typedef int QXE_SampleFloat(void* ref, int32_t x, int32_t y, const QXE_SampPB* samp, QXE_PixelFloat* out);

/// Puts `rect` of an 8-bit world behind another at (x, y). `field` 0 is all rows, 1 the even ones of the destination,
/// 2 the odd ones. A rectangle that leaves a world is refused; no side may pass 32767.
typedef int QXE_CompositeRect(const QXE_ProgressInfo* progress, const QXE_Rect* rect, uint8_t opacity,
                              const QXE_World* src, int32_t x, int32_t y, int32_t field, int32_t reserved,
                              QXE_World* dst);

/// A cross-fade of two worlds of one depth and size into `dst`, which may be one of them. `ratio` in 16.16: 0 is
/// `src1`, 0x10000 `src2`.
typedef int QXE_Blend(void* ref, const QXE_World* src1, const QXE_World* src2, int32_t ratio, QXE_World* dst);

enum QXE_ConvolveFlags {
    QXE_Convolve_OneDimension = 1,   ///< kernels have `size` weights, along a row
    QXE_Convolve_Normalise = 2,      ///< divide by the sum of the kernel
    QXE_Convolve_Unclamped = 4,      ///< integers wrap, floats may leave 0 to 1
    QXE_Convolve_DownColumn = 32,    ///< with OneDimension: along a column
    QXE_Convolve_HonourOrigin = 256  ///< the worlds lie by their origins
};
/// Sums a window around every pixel of `src` into `dst`, which has its depth and none of its pixels. A kernel for each
/// channel has `size` * `size` weights, row by row; `size` is odd. A sum is divided by 256 times the number of weights,
/// or with Normalise by the sum of them. Outside is nothing. `rect` is not read.
typedef int QXE_Convolve(const QXE_ProgressInfo* progress, const QXE_World* src, const QXE_Rect* rect, uint32_t flags,
                         int32_t size, const int32_t* a_kernel, const int32_t* r_kernel, const int32_t* g_kernel,
                         const int32_t* b_kernel, QXE_World* dst);

/// Copies a rectangle onto another of any size. The draft form takes nearest pixels, between any two depths; the others
/// are bilinear, or average where the picture shrinks, and want one depth (8 bits in the premultiplied form) and a
/// destination rectangle with no side above 32767; they ask the abort function. Empty rectangles are nothing to do.
typedef int QXE_Copy(const QXE_ProgressInfo* progress, QXE_World* src, QXE_World* dst, const QXE_Rect* src_rect,
                     const QXE_Rect* dst_rect);

/// One colour over a rectangle, whose edges may come in either order, of a world of any depth. A null colour is
/// transparent black.
typedef int QXE_Fill8(void* ref, const QXE_Pixel8* colour, const QXE_Rect* rect, QXE_World* world);
typedef int QXE_Fill16(void* ref, const QXE_Pixel16* colour, const QXE_Rect* rect, QXE_World* world);
typedef int QXE_FillFloat(void* ref, const QXE_PixelFloat* colour, const QXE_Rect* rect, QXE_World* world);

enum QXE_GaussianKernelFlags {
    QXE_GaussianKernel_OneRow = 1,    ///< a row in place of a square
    QXE_GaussianKernel_Normalise = 2  ///< scale until the mean is about 255
};
/// Fills a kernel with a bell of 0 to 255, times `multiplier` and limited to 255. `*width` becomes one more than
/// 2 * ceil(radius), and `weights` has room for its square, or for one row. `radius` lies within 0 to 32767; in a
/// square the bell is round up to 181.
typedef int QXE_GaussianKernel(void* ref, double radius, uint32_t flags, double multiplier, int32_t* width,
                               uint32_t* weights);

/// Multiplies colour by alpha, or divides it (`forward` false), at any depth and in place. Divided by an alpha of 0,
/// colour is full. `ref` is null or begins with a QXE_ProgressInfo, whose abort function is asked.
typedef int QXE_Premultiply(void* ref, QXE_Bool forward, QXE_World* world);
/// The same against a matte's colour; null is black. `src` may be `dst`; both have one depth, any of the three, and lie
/// corner on corner.
typedef int QXE_PremultiplyColour8(void* ref, QXE_World* src, const QXE_Pixel8* colour, QXE_Bool forward,
                                   QXE_World* dst);
typedef int QXE_PremultiplyColour16(void* ref, QXE_World* src, const QXE_Pixel16* colour, QXE_Bool forward,
                                    QXE_World* dst);
typedef int QXE_PremultiplyColourFloat(void* ref, QXE_World* src, const QXE_PixelFloat* colour, QXE_Bool forward,
                                       QXE_World* dst);

/// A world of the effect's own, which fills the record, whatever was in it. Bit 0 of `flags` asks for cleared pixels,
/// bit 1 for 16 bits in place of 8. QXE_BadParameter for a side that is not 1 to 30000, QXE_OutOfMemory.
typedef int QXE_NewWorld(void* ref, int width, int height, int flags, QXE_World* world);
/// The same by QXE_FORMAT_...; any `clear` but 0 asks for cleared pixels.
typedef int QXE_NewWorldByFormat(void* ref, int width, int height, int clear, uint32_t format, QXE_World* world);
/// Frees a world of the effect's own and zeroes its record; refuses all others.
typedef int QXE_DisposeWorld(void* ref, QXE_World* world);
typedef int QXE_WorldFormat(const QXE_World* world, uint32_t* format);

/// Called once a pixel with its place in the destination. `in` and `out` are pixels of the worlds' depth. Runs on
/// several threads at once and in any order. A code ends the iteration.
typedef int QXE_PixelFunc(void* refcon, int32_t x, int32_t y, void* in, void* out);
/// `func` at every pixel of `area` in `dst`, in bands on all processors. `src` has the depth of `dst` and may be null
/// or `dst` itself: `in` is then the destination's pixel. With a `final` other than 0 the progress of `in_data` is
/// called with (n + base, final) after the n-th row of a band, on the thread that called and for its bands alone:
/// QXE_Interrupted from it ends the work; other codes may be the result too, and rows may be left out. With a `final`
/// of 0, `in_data` may be null.
typedef int QXE_Iterate(QXE_InData* in_data, int32_t base, int32_t final, QXE_World* src, const QXE_Rect* area,
                        void* refcon, QXE_PixelFunc* func, QXE_World* dst);
/// The same where the source's corner lies at `origin`. Only where the source lies is visited; without one `in` is
/// null. The form that does not clip visits the whole area, and where there is no source `in` is a transparent pixel,
/// which may not be written.
typedef int QXE_IterateOrigin(QXE_InData* in_data, int32_t base, int32_t final, QXE_World* src, const QXE_Rect* area,
                              const QXE_Point* origin, void* refcon, QXE_PixelFunc* func, QXE_World* dst);
/// Each channel of 8-bit worlds through a table of 256 bytes, on the thread that called; a null table changes nothing.
/// 16-bit worlds are refused, float ones are taken for 8 bits.
typedef int QXE_IterateLUT(QXE_InData* in_data, int32_t base, int32_t final, QXE_World* src, const QXE_Rect* area,
                           const uint8_t* a_lut, const uint8_t* r_lut, const uint8_t* g_lut, const uint8_t* b_lut,
                           QXE_World* dst);
/// `func` once for each index below `iterations`; -1 is once on every processor. Several threads at once, in any order.
typedef int QXE_IndexFunc(void* refcon, int32_t thread_index, int32_t i, int32_t iterations);
typedef int QXE_IterateGeneric(int32_t iterations, void* refcon, QXE_IndexFunc* func);

/// Composites `src_rect` (not null) of one world onto another of its depth, its corner at (dest_x, dest_y). `ref` is
/// null or begins with a QXE_ProgressInfo. `quality` and `flags` are not read. `field` 1 takes even rows of the
/// destination, 2 odd ones, others all. `mask` may be null, but for QXE_xfer_mask_crossfade. QXE_UnimplementedMode for
/// a mode that is none. QXE_xfer_alpha_multiply and _luma also clear the alpha of all that lies outside.
typedef int QXE_TransferRect(void* ref, int quality, int flags, int field, const QXE_Rect* src_rect, QXE_World* src,
                             const QXE_CompositeMode* mode, const QXE_MaskWorld* mask, int dest_x, int dest_y,
                             QXE_World* dst);
/// Places one world on another of its depth through a matrix, in bands on all processors. Two matrices are the ends of
/// a motion on a straight line, n of them n - 1 moments; more than 257 are QXE_BadParameter. `ref`, `field`, `mask` and
/// modes as above. `quality` 0 takes nearest pixels, 1 bilinear, 2 and 3 bicubic. `src2dst` tells which way the
/// matrices map. The source may not be the destination.
typedef int QXE_TransformWorld(void* ref, int quality, int flags, int field, QXE_World* src,
                               const QXE_CompositeMode* mode, const QXE_MaskWorld* mask, const QXE_Matrix3* matrices,
                               int num_matrices, QXE_Bool src2dst, const QXE_Rect* dest_rect, QXE_World* dst);

/// Movable memory of any size. Lock gives the block, null for a null handle, and counts nothing: a resize may move a
/// block that is locked, and what it held stays. Unlock does nothing. New gives null where memory is short.
typedef void** QXE_NewHandle(uint64_t bytes);
typedef void* QXE_LockHandle(void** handle);
typedef void QXE_UnlockHandle(void** handle);
typedef void QXE_DisposeHandle(void** handle);      ///< null is allowed
typedef uint64_t QXE_GetHandleSize(void** handle);  ///< 0 for null
/// 0; QXE_BadParameter for null; QXE_OutOfMemory, with everything as it was. None of them is reported.
typedef int QXE_ResizeHandle(uint64_t bytes, void*** handle);

/// The pixels as a pointer if the world has the depth of the routine, else null, with code 0: `pixels`, or the world's
/// first row where that is null. A null world gives QXE_BadParameter.
typedef int QXE_GetPixelData(QXE_World* world, void* pixels, void** out);
/// The device's address of a float frame on a GPU; null with code 0, after a report, for one of another format.
/// QXE_BadParameter for a world in the processor's memory.
typedef int QXE_GetPixelDataGPU(const QXE_World* world, void** out);

/// One pixel between RGB and three numbers in 16.16: hue in degrees, lightness and saturation from 0 to 1; or Y, I, Q.
/// Alpha is left alone. The last four give one number on the scale of the depth. Nothing is checked.
typedef int QXE_ToModel8(void* ref, const QXE_Pixel8* rgb, int32_t model[3]);
typedef int QXE_FromModel8(void* ref, const int32_t model[3], QXE_Pixel8* rgb);
typedef int QXE_Measure8(void* ref, const QXE_Pixel8* rgb, int32_t* value);
typedef int QXE_ToModel16(void* ref, const QXE_Pixel16* rgb, int32_t model[3]);
typedef int QXE_FromModel16(void* ref, const int32_t model[3], QXE_Pixel16* rgb);
typedef int QXE_Measure16(void* ref, const QXE_Pixel16* rgb, int32_t* value);
typedef int QXE_ToModelFloat(void* ref, const QXE_PixelFloat* rgb, int32_t model[3]);
typedef int QXE_FromModelFloat(void* ref, const int32_t model[3], QXE_PixelFloat* rgb);
typedef int QXE_MeasureFloat(void* ref, const QXE_PixelFloat* rgb, float* value);

/// Whether a flag of the host's processor record is set.
typedef int QXE_ProcessorFlag(QXE_Bool* is_set);

// ---- suites -------------------------------------------------------------------------------------------------------

/// The suite by which all others are found; on any thread. A suite that was acquired is released as often. What there
/// is not gives QXE_Failed, and null. Blocks are memory like any other; reallocate gives null where memory is short,
/// and keeps the old block.
typedef struct QXE_BasicSuite {
    int (*acquire)(const char* name, int version, const void** suite);
    int (*release)(const char* name, int version);
    int (*is_equal)(const char* one, const char* other);  ///< 1 for the same name
    int (*allocate)(size_t bytes, void** block);
    int (*free)(void* block);
    int (*reallocate)(void* block, size_t bytes, void** resized);
    int (*undefined)(void);
} QXE_BasicSuite;

#define QXE_PROCESSOR_SUITE "VN CPU Data Suite"  ///< version 1
typedef struct QXE_ProcessorSuite1 {
    QXE_ProcessorFlag *flag0, *flag1;
    QXE_ProcessorFlag* flag2;  ///< the vector unit
    QXE_ProcessorFlag* flag3;
} QXE_ProcessorSuite1;

#define QXE_ANSI_SUITE "QX ANSI Suite"  ///< version 1
/// The host's mathematics. `fmod` by 0 is 0. `sqrt`, `hypot`, `fabs`, `ceil`, `floor` and `fmod` give the same bits on
/// every machine; the last bits of the others are those of the machine's library and processor.
typedef struct QXE_AnsiSuite1 {
    double (*atan)(double);
    double (*atan2)(double y, double x);
    double (*ceil)(double);
    double (*cos)(double);
    double (*exp)(double);
    double (*fabs)(double);
    double (*floor)(double);
    double (*fmod)(double x, double y);
    double (*hypot)(double x, double y);
    double (*log)(double);
    double (*log10)(double);
    double (*pow)(double x, double y);
    double (*sin)(double);
    double (*sqrt)(double);
    double (*tan)(double);
    int (*sprintf)(char* out, const char* format, ...);
    char* (*strcpy)(char* out, const char* text);
    double (*asin)(double);
    double (*acos)(double);
} QXE_AnsiSuite1;

#define QXE_HANDLE_SUITE "QX Handle Suite"  ///< version 2
typedef struct QXE_HandleSuite2 {
    QXE_NewHandle* new_handle;
    QXE_LockHandle* lock;
    QXE_UnlockHandle* unlock;
    QXE_DisposeHandle* dispose;
    QXE_GetHandleSize* size;
    QXE_ResizeHandle* resize;
} QXE_HandleSuite2;

#define QXE_COLOUR8_SUITE "QX Color Suite"            ///< version 1
#define QXE_COLOUR16_SUITE "QX Color16 Suite"         ///< version 1
#define QXE_COLOUR_FLOAT_SUITE "QX ColorFloat Suite"  ///< version 1
typedef struct QXE_Colour8Suite1 {
    QXE_ToModel8* rgb_to_hls;
    QXE_FromModel8* hls_to_rgb;
    QXE_ToModel8* rgb_to_yiq;
    QXE_FromModel8* yiq_to_rgb;
    QXE_Measure8* luminance;  ///< in hundredths: 25500 for white at 8 bits
    QXE_Measure8* hue;
    QXE_Measure8* lightness;
    QXE_Measure8* saturation;
} QXE_Colour8Suite1;
typedef struct QXE_Colour16Suite1 {
    QXE_ToModel16* rgb_to_hls;
    QXE_FromModel16* hls_to_rgb;
    QXE_ToModel16* rgb_to_yiq;
    QXE_FromModel16* yiq_to_rgb;
    QXE_Measure16* luminance;
    QXE_Measure16* hue;
    QXE_Measure16* lightness;
    QXE_Measure16* saturation;
} QXE_Colour16Suite1;
typedef struct QXE_ColourFloatSuite1 {
    QXE_ToModelFloat* rgb_to_hls;
    QXE_FromModelFloat* hls_to_rgb;
    QXE_ToModelFloat* rgb_to_yiq;
    QXE_FromModelFloat* yiq_to_rgb;
    QXE_MeasureFloat* luminance;
    QXE_MeasureFloat* hue;
    QXE_MeasureFloat* lightness;
    QXE_MeasureFloat* saturation;
} QXE_ColourFloatSuite1;

#define QXE_BATCH_SAMPLING_SUITE "QX Batch Sampling Suite"  ///< version 1; for old effects, which find nothing in it
typedef struct QXE_BatchSamplingSuite1 {
    void* nothing[4];
} QXE_BatchSamplingSuite1;

#define QXE_SAMPLING8_SUITE "QX Sampling8 Suite"           ///< version 1
#define QXE_SAMPLING16_SUITE "QX Sampling16 Suite"         ///< version 1
#define QXE_SAMPLING_FLOAT_SUITE "QX SamplingFloat Suite"  ///< version 1
/// `nearest` wraps column and row at 16 bits; `subpixel` is bilinear, and so is `area` for radii up to half a pixel.
typedef struct QXE_Sampling8Suite1 {
    QXE_Sample8 *nearest, *subpixel, *area;
} QXE_Sampling8Suite1;
typedef struct QXE_Sampling16Suite1 {
    QXE_Sample16 *nearest, *subpixel, *area;
} QXE_Sampling16Suite1;
typedef struct QXE_SamplingFloatSuite1 {
    QXE_SampleFloat *nearest, *subpixel, *area;
} QXE_SamplingFloatSuite1;

#define QXE_WORLD_SUITE "QX World Suite"  ///< versions 1 and 2
typedef struct QXE_WorldSuite1 {
    QXE_NewWorld* new_world;
    QXE_DisposeWorld* dispose;
} QXE_WorldSuite1;
typedef struct QXE_WorldSuite2 {
    QXE_NewWorldByFormat* new_world;
    QXE_DisposeWorld* dispose;
    QXE_WorldFormat* format;
} QXE_WorldSuite2;

#define QXE_ITERATE8_SUITE "QX Iterate8 Suite"           ///< version 1
#define QXE_ITERATE16_SUITE "QX iterate16 Suite"         ///< version 1
#define QXE_ITERATE_FLOAT_SUITE "QX iterateFloat Suite"  ///< version 1
typedef struct QXE_Iterate8Suite1 {
    QXE_Iterate* iterate;
    QXE_IterateOrigin* iterate_origin;
    QXE_IterateLUT* iterate_lut;
    QXE_IterateOrigin* iterate_origin_non_clip_src;
    QXE_IterateGeneric* iterate_generic;
} QXE_Iterate8Suite1;
/// Of both deeper suites.
typedef struct QXE_IterateDeepSuite1 {
    QXE_Iterate* iterate;
    QXE_IterateOrigin* iterate_origin;
    QXE_IterateOrigin* iterate_origin_non_clip_src;
} QXE_IterateDeepSuite1;

#define QXE_WORLD_TRANSFORM_SUITE "QX World Transform Suite"  ///< version 1
typedef struct QXE_WorldTransformSuite1 {
    QXE_CompositeRect* composite_rect;
    QXE_Blend* blend;
    QXE_Convolve* convolve;
    QXE_Copy* copy;  ///< the draft form
    QXE_Copy* copy_hq;
    QXE_TransferRect* transfer_rect;
    QXE_TransformWorld* transform_world;
} QXE_WorldTransformSuite1;

#define QXE_FILL_MATTE_SUITE "QX Fill Matte Suite"  ///< version 2
typedef struct QXE_FillMatteSuite2 {
    QXE_Fill8* fill;
    QXE_Fill16* fill16;
    QXE_FillFloat* fill_float;
    QXE_Premultiply* premultiply;
    QXE_PremultiplyColour8* premultiply_color;
    QXE_PremultiplyColour16* premultiply_color16;
    QXE_PremultiplyColourFloat* premultiply_color_float;
} QXE_FillMatteSuite2;

#define QXE_PIXEL_DATA_SUITE "QX Pixel Data Suite"  ///< versions 1 and 2
typedef struct QXE_PixelDataSuite1 {
    QXE_GetPixelData *get_pixel_data8, *get_pixel_data16, *get_pixel_data_float;
} QXE_PixelDataSuite1;
typedef struct QXE_PixelDataSuite2 {
    QXE_GetPixelData *get_pixel_data8, *get_pixel_data16, *get_pixel_data_float;
    QXE_GetPixelDataGPU* get_pixel_data_float_gpu;
} QXE_PixelDataSuite2;

// ---- the callback block -------------------------------------------------------------------------------------------

/// The same routines as one record. Those without a number in their name are for 8 bits, or for any depth where their
/// type says so. Sampling, blend, copy, composite_rect and colour are those of a quality (draft: nearest pixels) and of
/// straight or premultiplied pixels: two of 16-bit sampling are null for premultiplied pixels at best quality.
typedef struct QXE_CallbackBlock {
    void* reserved0;
    QXE_Sample8* subpixel_sample;
    QXE_Sample8* area_sample;
    int (*batch_sample)(void);  ///< refuses
    void* reserved1;
    QXE_CompositeRect* composite_rect;
    QXE_Blend* blend;
    QXE_Convolve* convolve;
    QXE_Copy* copy;
    QXE_Fill8* fill;
    QXE_GaussianKernel* gaussian_kernel;
    QXE_Iterate* iterate;
    QXE_Premultiply* premultiply;
    QXE_PremultiplyColour8* premultiply_color;
    QXE_NewWorld* new_world;
    QXE_DisposeWorld* dispose_world;
    QXE_IterateOrigin* iterate_origin;
    QXE_IterateLUT* iterate_lut;
    QXE_TransferRect* transfer_rect;
    QXE_TransformWorld* transform_world;
    QXE_NewHandle* host_new_handle;
    QXE_LockHandle* host_lock_handle;
    QXE_UnlockHandle* host_unlock_handle;
    QXE_DisposeHandle* host_dispose_handle;
    /// A routine by its number; null and QXE_UnknownSelector for one that is none.
    int (*get_callback_addr)(void* ref, int quality, unsigned char flags, int selector, void** out);
    int (*app)(void* ref, int selector, void** result, ...);  ///< of old effects
    QXE_AnsiSuite1 ansi;
    void* reserved_ansi;
    QXE_Colour8Suite1 colour;
    int (*get_platform_data)(void* ref, int selector, void** out);  ///< QXE_BadParameter always
    QXE_GetHandleSize* host_get_handle_size;
    QXE_IterateOrigin* iterate_origin_non_clip_src;
    QXE_IterateGeneric* iterate_generic;
    QXE_ResizeHandle* host_resize_handle;
    QXE_Sample16* subpixel_sample16;
    QXE_Sample16* area_sample16;
    QXE_Fill16* fill16;
    QXE_PremultiplyColour16* premultiply_color16;
    QXE_Iterate* iterate16;
    QXE_IterateOrigin* iterate_origin16;
    QXE_IterateOrigin* iterate_origin_non_clip_src16;
    QXE_GetPixelData* get_pixel_data8;
    QXE_GetPixelData* get_pixel_data16;
    void* reserved2;
} QXE_CallbackBlock;

// ---- the contract of an effect ------------------------------------------------------------------------------------

// An effect is a loadable module that exports one C function, QXE_DescribeEffect, and needs no library of the host:
// all that it uses is handed to it. The host loads the module, asks for its description, and makes instances of it. For
// an instance it calls `begin`, then `room` and `render` for any frames in any order, then `end`; calls of one instance
// never overlap, those of two may, each on a thread of its own. What an effect makes of a frame depends on the source,
// the values and the frame's number alone: instances share nothing that changes.
//
// Functions return 0, or a code: 4 for want of memory, 517 (QXE_Interrupted) where an abort or progress function said
// so, any other for a failure of their own, of which the host tells the code and the words of the last report. They
// throw nothing and leave nothing running. Texts are UTF-8 and end with 0. Records that may grow begin with their size:
// fields behind it are not there.

#define QXE_VERSION_MAJOR 1
#define QXE_VERSION_MINOR 0

/// A host takes effects of its own major version, and of a minor one up to its own.
typedef struct QXE_Version {
    uint16_t major, minor;
} QXE_Version;

/// What a parameter holds.
enum QXE_ParameterKind {
    QXE_KindNumber = 0,  ///< numbers[0], from `least` to `most`; may move from frame to frame
    QXE_KindWhole = 1,   ///< whole, from `least` to `most`
    QXE_KindSwitch = 2,  ///< whole, 0 or 1
    QXE_KindChoice = 3,  ///< whole, an index of `choices`
    QXE_KindPoint = 4,   ///< numbers[0] to the right and numbers[1] down, in pixels of the source; each as a number
    QXE_KindColour = 5,  ///< numbers[0] to [3]: alpha, red, green, blue; 0 to 1 is the range of integer worlds
    QXE_KindText = 6     ///< text
};

/// A parameter's value at a frame; what its kind does not name is 0.
typedef struct QXE_Value {
    double numbers[4];
    const char* text;  ///< stays for the call
    int32_t whole;
} QXE_Value;

/// A parameter. `name` is what command lines and scenes say: letters a to z, digits and "-", a letter first.
typedef struct QXE_ParameterInfo {
    uint32_t size;  ///< of this record
    int32_t kind;   ///< QXE_ParameterKind
    const char* name;
    const char* help;  ///< one line, without a full stop
    double least, most;
    QXE_Value standard;          ///< the value where none is given; a null text is ""
    const char* const* choices;  ///< words that are spelled as names, null behind the last; else null
} QXE_ParameterInfo;

/// One instance, from `begin` to `end`.
typedef struct QXE_Instance {
    uint32_t size;
    int32_t depth;                       ///< of all its worlds: 8, 16 or 32
    const QXE_BasicSuite* basic;         ///< by which suites are had
    const QXE_CallbackBlock* callbacks;  ///< of the layer's quality, for straight alpha
    int32_t rate_number, rate_per;       ///< frames a second, a fraction; 0 and 1 for a still picture
    void* data;                          ///< the effect's own; null before `begin`
} QXE_Instance;

/// One frame of an instance.
typedef struct QXE_Frame {
    uint32_t size;
    uint32_t value_count;
    const QXE_Value* values;  ///< in the order of the parameters
    double number;            ///< of the frame, on the scene's own count
    int32_t width, height;    ///< of the source
    QXE_InData* in_data;      ///< for routines that ask and report through one, and to ask directly; on the thread of
                              ///< the call alone, but for what suites do with it themselves
} QXE_Frame;

/// Pixels that a result has beyond each side of its source, none below 0.
typedef struct QXE_Room {
    int32_t left, top, right, bottom;
} QXE_Room;

enum QXE_Depths { QXE_Depth8 = 1, QXE_Depth16 = 2, QXE_Depth32 = 4, QXE_AnyDepth = 7 };

/// What QXE_DescribeEffect fills in. Whatever it points to stays until the module is unloaded.
typedef struct QXE_EffectInfo {
    uint32_t size;        ///< set by the host
    QXE_Version version;  ///< of the header that the effect was written with
    const char* name;     ///< spelled as names of parameters are
    const char* label;    ///< for people
    const char* about;    ///< what it does, in a line
    uint32_t depths;      ///< QXE_Depths that `render` takes
    uint32_t parameter_count;
    const QXE_ParameterInfo* parameters;

    /// May be null, as may `end`. Where `begin` fails, `end` is not called.
    int32_t (*begin)(QXE_Instance* instance);
    void (*end)(QXE_Instance* instance);
    /// How much larger than its source the result of a frame is; `room` comes as 0. Null: not at all.
    int32_t (*room)(QXE_Instance* instance, const QXE_Frame* frame, QXE_Room* room);
    /// Makes a frame: writes every pixel of `destination`, which is as much larger than `source` as `room` said, so
    /// that pixel (0, 0) of the source lies at (left, top). Colours are straight, and under alpha 0 are kept, not
    /// looked at. Both are the library's worlds with rows of their own; the source is a copy that may be spoiled. An
    /// effect writes in no other place, and writes all: what is left as it came counts as a failure where nothing was
    /// written.
    int32_t (*render)(QXE_Instance* instance, const QXE_Frame* frame, QXE_World* source, QXE_World* destination);
} QXE_EffectInfo;

#if defined(_WIN32)
#define QXE_EXPORT __declspec(dllexport)
#else
#define QXE_EXPORT __attribute__((visibility("default")))
#endif

/// The one function of a module, to be defined with QXE_EXPORT, in C++ with extern "C".
/// @param host  the version that the host knows
/// @param info  all 0 but for its size
/// @return 0; any other code refuses the host, which then tells it
QXE_EXPORT int32_t QXE_DescribeEffect(QXE_Version host, QXE_EffectInfo* info);
typedef int32_t (*QXE_DescribeEffectFunc)(QXE_Version host, QXE_EffectInfo* info);

#ifdef __cplusplus
}
#endif

#endif
