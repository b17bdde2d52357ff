// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampForms.h"
#include "QX/sampling/QX_SubpixelSampleT.h"

namespace qx::sampling {
namespace {

QX_INLINE Float4 two_stage_mix(const Float4 (&p)[4], const Position& at) {
    const Float4 fx = splat4(Weights<float>::fraction(at.fx)), fy = splat4(Weights<float>::fraction(at.fy));
    const Float4 left = p[0] + (p[2] - p[0]) * fy, right = p[1] + (p[3] - p[1]) * fy;
    return (right - left) * fx + left;
}

/// A sample from alphas alone: no exits, and any alpha but 0 keeps its colour.
std::uint32_t sample_without_exits(const TapRows<2>& rows, const Position& at) {
    Float4 p[4];
    widen_corners<QX_Pixel8>(rows, p);
    const auto weights = Weights<float>::of(at);
    const AlphaMix<float> mix(p, weights.w);
    return mix.alpha == 0 ? 0 : to_pixel<QX_Pixel8>(with_alpha(mix.colours(), mix.alpha));
}

}  // namespace

int noclip_plain(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return straight_noclip(x, y, params, out);
}

int noclip_two_stage(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return straight_unclipped(x, y, params, out, [](const TapRows<2>& rows, const Position& at) {
        const Corners<QX_Pixel8> corners(rows);
        const auto differences = corners.differences();
        if (differences == 0) return corners.top_left;
        Float4 p[4];
        widen_corners<QX_Pixel8>(rows, p);
        if ((differences & kAlphaBits<QX_Pixel8>) != 0) return by_alpha<QX_Pixel8, float>(p, Weights<float>::of(at).w);
        return under_alpha<QX_Pixel8>(two_stage_mix(p, at), corners.top_left);
    });
}

}  // namespace qx::sampling

using namespace qx::sampling;

int QX_SubpixelSampleComputeWeight(std::int32_t fx, std::int32_t fy, double weights[4]) {
    const auto computed = Weights<double>::of(Weights<double>::fraction(fx), Weights<double>::fraction(fy));
    std::copy_n(computed.w, 4, weights);
    return 0;
}

int QX_SubpixelSample_Straight(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return straight_point(x, y, params, out);
}
int QX_SubpixelSampleNoClip_Straight(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                     QX_Pixel8* out) {
    return qx::slot<qx::Slot::SubpixelNoClip>()(in_data, x, y, params, out);
}
int QX_SubpixelSamplePlus_Straight(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, bool* all_in,
                                   QX_Pixel8* out) {
    return straight_plus(x, y, params, all_in, out);
}
int QX_SubpixelSampleTranslateNoClip_Straight(void*, std::int32_t x, std::int32_t y, const double weights[4],
                                              const QX_SampPB* params, QX_Pixel8* out) {
    return straight_translate(x, y, weights, params, out);
}
int QX_SubpixelSpanSampleTranslateNoClip_Straight(void*, std::int32_t count, std::int32_t x, std::int32_t y,
                                                  const QX_SampPB* params, std::uint32_t* alpha_sum, QX_Pixel8* out) {
    return straight_span(count, x, y, params, alpha_sum, out);
}

int QX_SubpixelSampleNoClip_Straight_4(void*, const std::int32_t coords[8], const QX_SampPB* params, QX_Pixel8* out) {
    for (int i = 0; i < 4; ++i) {
        const Position at(coords[2 * i], coords[2 * i + 1]);
        TapRows<2> rows;
        taps_inside<QX_Pixel8, 2>(*params->src, at.column, at.row, rows);
        put(out + i, sample_without_exits(rows, at));
    }
    return 0;
}
int QX_SubpixelSampleTranslateNoClip_Straight_4(void*, const std::int32_t coords[8], const double weights[4],
                                                const QX_SampPB* params, QX_Pixel8* out) {
    for (int i = 0; i < 4; ++i) straight_translate(coords[2 * i], coords[2 * i + 1], weights, params, out + i);
    return 0;
}
