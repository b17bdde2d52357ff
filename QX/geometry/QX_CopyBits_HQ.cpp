// SPDX-License-Identifier: Apache-2.0
// Copies that change size through the samplers: bilinear, or area where either direction shrinks.
#include "QX/geometry/QX_AreaRow.h"
#include "QX/geometry/QX_CopyBits.h"
#include "QX/geometry/QX_CopyBitsPlan.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "QX/sampling/QX_Samp.h"

namespace {

using qx::FixedPoint;
using qx::Slot;
using qx::copy_bits::Side;

/// The samplers of one depth and form: between pixels, and over areas.
template <class Pixel> struct Samplers { QX_PointSampler<Pixel> subpixel, area; };

template <class Pixel> Samplers<Pixel> straight_samplers() {
    if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
        return {qx::slot<Slot::SubpixelSample>(), qx::slot<Slot::AreaSample>()};
    } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
        return {qx::slot<Slot::SubpixelSample16>(), qx::slot<Slot::AreaSample16>()};
    } else {
        return {&QX_SubpixelBilinearFloat, &QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>};
    }
}

/// Source pixels for each pixel of the destination in 16.16. Kept: the divisor is the low 16 bits.
std::int32_t step_of(std::int64_t src_length, std::int16_t divisor) {
    const auto length = static_cast<std::int32_t>(static_cast<std::uint32_t>(src_length) << 16);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(std::int64_t{length} / divisor));
}

/// Everything of a copy but its pixels.
struct Plan {
    FixedPoint start, step;
    M_LRect area;  ///< what of the destination is drawn; the first pixel samples at `start`
    QX_SampPB block;
    bool shrinks() const { return step.x > qx::kFixedOne || step.y > qx::kFixedOne; }
};

/// Pixels left of and above the destination are stepped over.
Plan make_plan(const QX_LayerDef& src, const Side& s, const Side& d) {
    Plan plan{};
    const auto columns = static_cast<std::int16_t>(d.columns()), rows = static_cast<std::int16_t>(d.rows());
    if (columns == 0 || rows == 0) return plan;
    plan.step = {step_of(s.columns(), columns), step_of(s.rows(), rows)};
    plan.block.x_radius = plan.step.x >> 1;
    plan.block.y_radius = plan.step.y >> 1;
    plan.block.area = qx::low_bits(static_cast<double>(plan.step.y) * plan.step.x * 1.52587890625e-5);
    plan.block.src = &src;
    const FixedPoint half_step{plan.step.x >> 1, plan.step.y >> 1}, corner{s.rect.left, s.rect.top};
    plan.start = half_step + FixedPoint{-qx::kFixedHalf, -qx::kFixedHalf} + corner * qx::kFixedOne;
    plan.area = {std::max(d.rect.left, 0), std::max(d.rect.top, 0), std::min(d.rect.right, d.width),
                 std::min(d.rect.bottom, d.height)};
    const std::int32_t left = qx::wrapping_difference(plan.area.left, d.rect.left);
    const std::int32_t top = qx::wrapping_difference(plan.area.top, d.rect.top);
    plan.start =
        plan.start + FixedPoint{qx::wrapping_product(plan.step.x, left), qx::wrapping_product(plan.step.y, top)};
    return plan;
}

template <class Pixel>
int sample(const QX_ProgressInfo* progress, const Plan& plan, const Samplers<Pixel>& samplers, const QX_LayerDef& dst) {
    const qx::AreaRow<Pixel> areas(samplers.area, plan.block, {plan.step.x, 0});
    const std::int32_t left = plan.area.left, count = plan.area.right - left;
    FixedPoint at = plan.start;
    for (std::int32_t y = plan.area.top; y < plan.area.bottom; ++y) {
        Pixel* const row = qx::row_of<Pixel>(dst, y) + left;
        at.x = plan.start.x;
        if (plan.shrinks()) {
            areas.sample(at, count, row);
        } else {
            for (std::int32_t i = 0; i < count; ++i) {
                samplers.subpixel(nullptr, at.x, at.y, &plan.block, row + i);
                at.x = qx::wrapping_sum(at.x, plan.step.x);
            }
        }
        at.y = qx::wrapping_sum(at.y, plan.step.y);
        if ((y - plan.area.top) % 64 != 0 || progress == nullptr || progress->abort_func == nullptr) continue;
        if (const int code = progress->abort_func(progress->refcon)) return code;
    }
    return 0;
}

/// What the two forms do before a sampler is chosen. `resample(plan)` does the rest.
template <class Resample>
int copy_hq(qx::Place place, const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
            const M_LRect* src_rect, const M_LRect* dst_rect, const Resample& resample) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) return qx::report_gpu_world(place);
    if (src == nullptr || src->data == nullptr || dst == nullptr || dst->data == nullptr) {
        return qx::report_bad_parameter(place);
    }
    const Side s(src_rect, src->width, src->height), d(dst_rect, dst->width, dst->height);
    if (same_size(s, d)) return QX_CopyBits_Draft_Static(progress, src, dst, src_rect, dst_rect);
    const int depth = QXp_WorldDepth(src);
    if (const int code =
            qx::must_have_depth(QXp_WorldDepth(dst), depth, "source", place,
                                "QX_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth")) {
        return code;
    }
    if (s.nothing() || d.nothing()) return 0;
    return resample(make_plan(*src, s, d));
}

}  // namespace

int QX_CopyBits_HQ_Straight_Static(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                   const M_LRect* src_rect, const M_LRect* dst_rect) {
    return copy_hq(qx::Place::copy_bits_straight, progress, src, dst, src_rect, dst_rect, [&](const Plan& plan) {
        return qx::with_depth(*dst, qx::Place::copy_bits_straight,
                              [&]<class Pixel>() { return sample(progress, plan, straight_samplers<Pixel>(), *dst); });
    });
}

int QX_CopyBits_HQ_Premul_Static(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                                 const M_LRect* src_rect, const M_LRect* dst_rect) {
    return copy_hq(qx::Place::copy_bits_premul, progress, src, dst, src_rect, dst_rect, [&](const Plan& plan) {
        if (QXp_WorldDepth(dst) != 8)
            return qx::report_failed_verification(qx::Place::copy_bits_premul, qx::kUnknownDepth);
        const Samplers<QX_Pixel8> samplers{qx::slot<Slot::SubpixelSamplePremul>(), qx::slot<Slot::AreaSamplePremul>()};
        return sample(progress, plan, samplers, *dst);
    });
}

int QX_CopyBits_HQ_Straight(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst,
                            const M_LRect* src_rect, const M_LRect* dst_rect) {
    return qx::guarded([&] { return qx::slot<Slot::CopyBitsHQ>()(progress, src, dst, src_rect, dst_rect); });
}

int QX_CopyBits_HQ_Premul(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst, const M_LRect* src_rect,
                          const M_LRect* dst_rect) {
    return qx::guarded([&] { return qx::slot<Slot::CopyBitsHQPremul>()(progress, src, dst, src_rect, dst_rect); });
}
