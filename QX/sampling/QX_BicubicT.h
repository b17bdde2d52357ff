// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_CubicKernel.h"
#include "QX/sampling/QX_SampForms.h"
#include "QX/sampling/QX_SampleMixT.h"

/// Bicubic samples: Keys' cubic convolution with a = -0.75, across four rows, then down. All in float, at every depth.
namespace qx::sampling {

/// Weights of the taps before, at, behind and twice behind the position.
QX_INLINE Float4 cubic_weights(std::int32_t fraction) {
    const double f = static_cast<double>(fraction) * 0x1p-16;
    const auto inner = _mm_cvtpd_ps((__m128d)near_part(Double2{f, 1 - f}));
    const auto outer = _mm_cvtpd_ps((__m128d)far_part(Double2{1 + f, 2 - f}));
    const __m128 mixed = _mm_movelh_ps(outer, inner);
    return (Float4)_mm_shuffle_ps(mixed, mixed, _MM_SHUFFLE(1, 3, 2, 0));
}

struct CubicWeights {
    float x[4], y[4];
    QX_INLINE explicit CubicWeights(const Position& p) {
        const Float4 across = cubic_weights(p.fx), down = cubic_weights(p.fy);
        std::memcpy(x, &across, sizeof x);
        std::memcpy(y, &down, sizeof y);
    }
};

QX_INLINE Float4 cubic_mix(const Float4 (&p)[4], const float (&w)[4], bool alphas_equal) {
    return keeping_mix(p, w, alphas_equal, std::numeric_limits<float>::infinity());
}

template <class Pixel> QX_INLINE void widen_row(const std::byte* row, Float4 (&p)[4]) {
    for (int i = 0; i < 4; ++i) p[i] = widen<float, Pixel>(row + i * int{sizeof(Pixel)});
}

template <class Pixel> QX_INLINE bool equal_in_row(const std::byte* row, QX_ChannelOf<Pixel> alpha) {
    bool equal = true;
    for (int i = 0; i < 4; ++i) equal &= load_at<Pixel>(row + i * int{sizeof(Pixel)}).alpha == alpha;
    return equal;
}

/// The sixteen taps in one float pixel on the scale of the depth.
template <class Pixel> QX_INLINE Float4 mixed_sum(const TapRows<4>& rows, const CubicWeights& weights) {
    Float4 across[4], p[4];
    for (int i = 0; i < 4; ++i) {
        widen_row<Pixel>(rows[i], p);
        across[i] = cubic_mix(p, weights.x, equal_alphas(p));
    }
    return cubic_mix(across, weights.y, equal_alphas(across));
}

/// The same where all alphas agree: the common case, without a question a row.
template <class Pixel>
QX_INLINE Float4 plain_sum(const TapRows<4>& rows, const CubicWeights& weights, QX_ChannelOf<Pixel> alpha) {
    Float4 across[4], p[4];
    for (int i = 0; i < 4; ++i) {
        widen_row<Pixel>(rows[i], p);
        across[i] = plain_mix<float>(p, weights.x);
    }
    return with_alpha(plain_mix<float>(across, weights.y), static_cast<float>(alpha));
}

template <class Pixel> QX_INLINE Float4 cubic_sum(const TapRows<4>& rows, const CubicWeights& weights) {
    const auto alpha = load_at<Pixel>(rows[0]).alpha;
    bool uniform = true;
    for (const auto* row : rows) uniform &= equal_in_row<Pixel>(row, alpha);
    return uniform ? plain_sum<Pixel>(rows, weights, alpha) : mixed_sum<Pixel>(rows, weights);
}

/// Limits what the kernel's lobes carry beyond the range; colours of float pixels stay as they are.
template <class Pixel> QX_INLINE auto finish(Float4 sum) {
    constexpr auto full = static_cast<float>(DepthOf<Pixel>::full);
    const Float4 scaled = sum * splat4(1 / full);
    float alpha = alpha_of(scaled);
    if (alpha > 1) alpha = 1;
    if (alpha < 1e-16f) alpha = 0;
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        return with_alpha(scaled, alpha);
    } else {
        const auto v = (__m128)(with_alpha(scaled, alpha) * splat4(full));
        return to_pixel<Pixel>((Float4)_mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), (__m128)splat4(full)));
    }
}

template <class Pixel> QX_INLINE auto cubic_sample(const TapRows<4>& rows, const CubicWeights& weights) {
    if constexpr (sizeof(Pixel) == 4) {
        return samp_forms->cubic8(rows, weights);
    } else {
        return finish<Pixel>(cubic_sum<Pixel>(rows, weights));
    }
}

template <class Pixel> int cubic_point(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    const Position at(x, y);
    TapRows<4> rows;
    Edge<Pixel, 4> edge;
    taps_clipped<Pixel, 4>(*params->src, at.column - 1, at.row - 1, edge, rows);
    put(out, cubic_sample<Pixel>(rows, CubicWeights(at)));
    return 0;
}

/// Kept: the report is one pixel narrower than the taps, and asks the axes differently.
template <class Pixel>
int cubic_plus(std::int32_t x, std::int32_t y, const QX_SampPB* params, bool* all_in, Pixel* out) {
    const Position at(x, y);
    const QX_EffectWorld& world = *params->src;
    *all_in = at.column + 1 > 1 && at.column + 1 < world.width - 2 && at.row > 1 && at.row < world.height - 2;
    return cubic_point(x, y, params, out);
}

template <class Pixel> int cubic_noclip(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    const Position at(x, y);
    TapRows<4> rows;
    taps_inside<Pixel, 4>(*params->src, at.column - 1, at.row - 1, rows);
    put(out, cubic_sample<Pixel>(rows, CubicWeights(at)));
    return 0;
}

template <class Pixel>
int cubic_span(std::int32_t count, std::int32_t x, std::int32_t y, const QX_SampPB* params,
               QX_AlphaSumOf<Pixel>* alpha_sum, Pixel* out) {
    if (count < 1) return 0;
    const Position at(x, y);
    const CubicWeights weights(at);
    TapRows<4> rows;
    taps_inside<Pixel, 4>(*params->src, at.column - 1, at.row - 1, rows);
    for (std::int32_t i = 0; i < count; ++i) {
        put(out + i, cubic_sample<Pixel>(rows, weights));
        *alpha_sum += out[i].alpha;
        for (auto& row : rows) row += sizeof(Pixel);
    }
    return 0;
}

/// Kept: bilinear, by the rule of float samples, under the bicubic name. All pixels of a translated row share one
/// fraction.
template <class Pixel>
int cubic_translate(std::int32_t x, std::int32_t y, const double* weights, const QX_SampPB* params, Pixel* out) {
    const Position at(x, y);
    TapRows<2> rows;
    taps_inside<Pixel, 2>(*params->src, at.column, at.row, rows);
    Float4 p[4];
    for (int i = 0; i < 4; ++i) p[i] = widen<float, Pixel>(rows[i >> 1] + (i & 1) * int{sizeof(Pixel)});
    constexpr auto full = static_cast<float>(DepthOf<Pixel>::full);
    put(out, to_pixel<Pixel>(keeping_mix(p, Weights<float>::given(weights).w, equal_alphas(p), full)));
    return 0;
}

}  // namespace qx::sampling
