// SPDX-License-Identifier: Apache-2.0
#ifndef QX_C_H
#define QX_C_H

/// The library for languages that call C (ctypes, Rust, Go): one routine a family, over the records of QX_Effect.h.
/// C99, C11 and C++17; link with QX.
///
/// All that QX_Effect.h says of its routines holds: what they return, which threads they run on, which arguments may be
/// null. Worlds have 8, 16 or 32 bits a channel, which the record tells; those of one call have one depth unless it
/// says otherwise. A rectangle that is null is the whole world.
#include "QX/QX_Effect.h"

#ifndef QXC_EXPORT
#define QXC_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// ---- the library --------------------------------------------------------------------------------------------------

/// Starts the library and stops it: alone on one thread, before and after everything else.
QXC_EXPORT int QXC_Birth(void);
QXC_EXPORT int QXC_Death(void);
/// Such as "1.2.3".
QXC_EXPORT const char* QXC_Version(void);

// ---- worlds -------------------------------------------------------------------------------------------------------

/// A world of the library's own, of a QXE_FORMAT_..., freed by QXC_DisposeWorld.
QXC_EXPORT int QXC_NewWorld(int width, int height, int clear, uint32_t format, QXE_World* world);
QXC_EXPORT int QXC_DisposeWorld(QXE_World* world);
/// A record around pixels of the caller's, which stay there: `data` is pixel (0, 0), aligned to a channel, and row y
/// begins `y * rowbytes` bytes behind it. Nothing is to be freed.
QXC_EXPORT int QXC_WrapPixels(void* data, int width, int height, int rowbytes, uint32_t format, QXE_World* world);
QXC_EXPORT int QXC_WorldFormat(const QXE_World* world, uint32_t* format);

// ---- one world ----------------------------------------------------------------------------------------------------

QXC_EXPORT int QXC_Fill(const QXE_PixelFloat* colour, const QXE_Rect* rect, QXE_World* world);  ///< any depth
/// Multiplies colours with a matte's by alpha (`forward` 1), or takes it off again (0). A null colour is black.
QXC_EXPORT int QXC_Premultiply(const QXE_PixelFloat* colour, int forward, QXE_World* src, QXE_World* dst);
/// What alpha means in a world of 8 bits, by its pixels: 0 straight, 1 colours that are mixed with `matte`, 2 nothing
/// tells it.
QXC_EXPORT int QXC_GuessAlpha(const QXE_World* world, int32_t* kind, QXE_Pixel8* matte);

// ---- copies -------------------------------------------------------------------------------------------------------

/// Nearest pixels, between any two depths and sizes.
QXC_EXPORT int QXC_CopyDraft(QXE_World* src, QXE_World* dst, const QXE_Rect* src_rect, const QXE_Rect* dst_rect);
/// Bilinear, or means where the picture shrinks.
QXC_EXPORT int QXC_Copy(QXE_World* src, QXE_World* dst, const QXE_Rect* src_rect, const QXE_Rect* dst_rect);

// ---- composites ---------------------------------------------------------------------------------------------------

/// As QXE_TransferRect. @param progress, mask  may be null
QXC_EXPORT int QXC_TransferRect(const QXE_ProgressInfo* progress, const QXE_Rect* src_rect, QXE_World* src,
                                const QXE_CompositeMode* mode, const QXE_MaskWorld* mask, int dest_x, int dest_y,
                                QXE_World* dst);
/// As QXE_TransformWorld, with matrices from the source to the destination. @param progress, mask, dest_rect  may be
/// null
QXC_EXPORT int QXC_TransformWorld(const QXE_ProgressInfo* progress, int quality, QXE_World* src,
                                  const QXE_CompositeMode* mode, const QXE_MaskWorld* mask, const QXE_Matrix3* matrices,
                                  int num_matrices, const QXE_Rect* dest_rect, QXE_World* dst);
/// As QXE_Blend.
QXC_EXPORT int QXC_Blend(const QXE_World* src1, const QXE_World* src2, int32_t ratio, QXE_World* dst);

// ---- filters ------------------------------------------------------------------------------------------------------

/// As QXE_Convolve, with one kernel of size * size for all four channels.
QXC_EXPORT int QXC_Convolve(const QXE_World* src, uint32_t flags, int32_t size, const int32_t* kernel, QXE_World* dst);
/// Blurs all channels of a straight picture along its rows, then along its columns, by bells of these radii in pixels.
/// `dst` has the source's size and none of its pixels, and becomes premultiplied.
QXC_EXPORT int QXC_GaussianBlur(const QXE_World* src, float across, float down, QXE_World* dst);

// ---- samples ------------------------------------------------------------------------------------------------------

/// Pixel (x, y) in 16.16 of a world of this depth. They check nothing.
QXC_EXPORT QXE_Sample8 QXC_SampleNearest8, QXC_SampleBilinear8, QXC_SampleBicubic8, QXC_SampleArea8;
QXC_EXPORT QXE_Sample16 QXC_SampleNearest16, QXC_SampleBilinear16, QXC_SampleBicubic16, QXC_SampleArea16;
QXC_EXPORT QXE_SampleFloat QXC_SampleNearestFloat, QXC_SampleBilinearFloat, QXC_SampleBicubicFloat, QXC_SampleAreaFloat;

// ---- frames between frames ------------------------------------------------------------------------------------------

/// The frame at `position` from 0, the first, towards 1, the second, by the motion between them. All three have one
/// size and depth and share no pixels.
/// @param first_id, second_id  numbers that tell frames apart: motion is followed once for a pair of them and kept
QXC_EXPORT int QXC_FrameBetween(const QXE_World* first, uint64_t first_id, const QXE_World* second, uint64_t second_id,
                                double position, QXE_World* out);

#ifdef __cplusplus
}
#endif

#endif
