// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <type_traits>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Pixel.h"
#include "QX/indep/QX_Records.h"

/// Types of the routines that stand in the table of slots, by names alone: families above declare the records.
class QX_EXPORT QX_CompositeModePlus;
struct QX_LinearBlendingTables;
struct QX_ScratchBlock;
struct M_Matrix3;
struct QX_SampPB;
struct QX_Destination;
template <class Pixel> struct QX_EXPORT QX_BlendingMode;
template <class Pixel> struct QX_EXPORT QX_BlendModeDescriptor;

/// What alphas of a row are summed in.
template <class Pixel>
using QX_AlphaSumOf = std::conditional_t<std::is_same_v<QX_ChannelOf<Pixel>, float>, float, std::uint32_t>;

/// Called once a pixel with its destination coordinates. `in` and `out` are pixels of the world's depth; a non-zero
/// result ends the iteration. Runs on several threads at once when the acceleration layer is installed.
using QX_IteratePixelFunc = int (*)(void* refcon, std::int32_t x, std::int32_t y, void* in, void* out);

/// Called once an index; `thread_index` is the number of the part that the index belongs to.
using QX_IterateGenericFunc = int (*)(void* refcon, std::int32_t thread_index, std::int32_t i, std::int32_t iterations);

/// The routines that composite rows. Rows may lie at any alignment; `dst` is changed in place; a `count` of 0 is
/// legal. They hold no state: any number of threads may run them on separate rows. All return an error code.

/// One mode's row. Of `mask` the alpha alone is read; it may be null.
template <class Pixel>
using QX_RowFunc = int (*)(std::int32_t count, const QX_BlendingMode<Pixel>* mode,
                           const QX_LinearBlendingTables* tables, const Pixel* src, const Pixel* mask, Pixel* dst);

/// Gives the row routine of a mode. @return 0, or 5 after a report for a number that is no mode
template <class Pixel> using QX_RowLookup = int (*)(int xfer, QX_RowFunc<Pixel>* row);

/// A filter in or out of multiplied colour; a null `src` means in place.
template <class Pixel> using QX_FilterFunc = int (*)(std::int32_t count, const Pixel* src, Pixel* dst);

/// Destination alpha becomes that of the source, times opacity and mask, over it. An opacity of 0 changes nothing.
template <class Pixel>
using QX_MergeFunc = int (*)(std::int32_t count, const Pixel* src, QX_ChannelOf<Pixel> opacity, const Pixel* mask,
                             Pixel* dst);

/// Runs all the passes of one row of a transfer. `alpha_row` has room for `count` channels.
template <class Pixel>
using QX_RowDriver = int (*)(std::int32_t count, const QX_BlendModeDescriptor<Pixel>* descriptor, const Pixel* src,
                             const Pixel* mask, Pixel* dst, QX_ChannelOf<Pixel>* alpha_row);

/// Samplers read one pixel of `params->src`, or a run of them, at a signed 16.16 position; integers lie on pixels. The
/// effect reference is ignored. They write `out` alone, hold no state and return 0, or 3 where one refuses a GPU world.

template <class Pixel>
using QX_PointSampler = int (*)(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out);
/// `*all_in` tells whether the next sample may be taken without bounds tests.
template <class Pixel>
using QX_PlusSampler = int (*)(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, bool* all_in,
                               Pixel* out);
/// `weights` are those of the four corners: top left, top right, bottom left, bottom right.
template <class Pixel>
using QX_TranslateSampler = int (*)(void* in_data, std::int32_t x, std::int32_t y, const double weights[4],
                                    const QX_SampPB* params, Pixel* out);
/// `count` samples a pixel apart; the alphas of what is written are added to `*alpha_sum`.
template <class Pixel>
using QX_SpanSampler = int (*)(void* in_data, std::int32_t count, std::int32_t x, std::int32_t y,
                               const QX_SampPB* params, QX_AlphaSumOf<Pixel>* alpha_sum, Pixel* out);

namespace qx {

template <class Pixel> using PointSamplerFn = std::remove_pointer_t<QX_PointSampler<Pixel>>;
template <class Pixel> using PlusSamplerFn = std::remove_pointer_t<QX_PlusSampler<Pixel>>;
template <class Pixel> using TranslateSamplerFn = std::remove_pointer_t<QX_TranslateSampler<Pixel>>;
template <class Pixel> using SpanSamplerFn = std::remove_pointer_t<QX_SpanSampler<Pixel>>;
using SampleWeightFn = int(std::int32_t fx, std::int32_t fy, double weights[4]);
/// `coords` holds four positions, x before y.
using FourSamplesFn = int(void* in_data, const std::int32_t coords[8], const QX_SampPB* params, QX_Pixel8* out);
using FourTranslateSamplesFn = int(void* in_data, const std::int32_t coords[8], const double weights[4],
                                   const QX_SampPB* params, QX_Pixel8* out);
/// Null rectangles are the whole worlds.
using CopyBitsFn = int(const QX_ProgressInfo*, QX_LayerDef* src, QX_LayerDef* dst, const M_LRect* src_rect,
                       const M_LRect* dst_rect);
using TransferRectFn = int(const QX_ProgressInfo*, int quality, int flags, int field, const M_LRect* src_rect,
                           QX_LayerDef* src, const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                           const QX_MaskWorld* mask, int dest_x, int dest_y, QX_LayerDef* dst);
using CompositeRectFn = int(const QX_ProgressInfo*, const M_LRect* rect, std::uint8_t opacity, const QX_LayerDef* src,
                            std::int32_t x, std::int32_t y, std::int32_t field, std::int32_t reserved,
                            QX_LayerDef* dst);
using TransferRectPlusFn = int(const QX_ProgressInfo*, int quality, int flags, int field, const M_LRect* src_rect,
                               QX_LayerDef* src, const QX_CompositeModePlus* mode,
                               const QX_LinearBlendingTables* tables, const QX_MaskWorld* mask,
                               QX_ScratchBlock* scratch, int dest_x, int dest_y, QX_LayerDef* dst);
using TransformWorldFn = int(const QX_ProgressInfo*, int quality, int flags, int field, QX_LayerDef* src,
                             const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                             const QX_MaskWorld* mask, const M_Matrix3* matrices, int num_matrices, bool src2dst_matrix,
                             const M_LRect* dest_rect, QX_LayerDef* dst);
using TransformWorldPlusFn = int(const QX_ProgressInfo*, int quality, int flags, int field, QX_LayerDef* src,
                                 const QX_CompositeModePlus* mode, const QX_LinearBlendingTables* tables,
                                 const QX_MaskWorld* mask, QX_ScratchBlock* scratch, const M_Matrix3* matrices,
                                 int num_matrices, bool src2dst_matrix, const M_LRect* dest_rect, QX_LayerDef* dst);
using IterateFn = int(QX_InData*, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                      void* refcon, QX_IteratePixelFunc, QX_LayerDef* dst);
using IterateOriginFn = int(QX_InData*, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                            const M_LPoint* origin, void* refcon, QX_IteratePixelFunc, QX_LayerDef* dst);
using IterateLUTFn = int(QX_InData*, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                         const std::uint8_t* a, const std::uint8_t* r, const std::uint8_t* g, const std::uint8_t* b,
                         QX_LayerDef* dst);
using IterateGenericFn = int(std::int32_t iterations, void* refcon, QX_IterateGenericFunc fn);
/// `effect_ref` begins with a QX_ProgressInfo, or is null; a null `rect` is the whole world.
using FastBlurFn = int(...);
template <class Sample>
using UnoScanFn = int(int form, std::int32_t len, std::int32_t start, std::int32_t end, std::int32_t radius,
                      Sample* scratch, Sample* scan);
using ConvolveFn = int(const QX_ProgressInfo* progress, const QX_LayerDef* src, const M_LRect* area,
                       std::uint32_t flags, std::int32_t size, const std::int32_t* a_kernel,
                       const std::int32_t* r_kernel, const std::int32_t* g_kernel, const std::int32_t* b_kernel,
                       QX_LayerDef* dst);
using OpenDestinationFn = int(void* destination, void* ref, QX_Destination* out);
using CloseDestinationFn = int(QX_Destination* out);
using PremulRectFn = int(void* effect_ref, bool forward, const M_LRect* rect, QX_LayerDef* world);
template <class Pixel> using FilterFn = std::remove_pointer_t<QX_FilterFunc<Pixel>>;
template <class Pixel> using MergeFn = std::remove_pointer_t<QX_MergeFunc<Pixel>>;
template <class Pixel> using RowLookupFn = std::remove_pointer_t<QX_RowLookup<Pixel>>;
template <class Pixel> using RowDriverFn = std::remove_pointer_t<QX_RowDriver<Pixel>>;

}  // namespace qx
