// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_SampleMixT.h"

/// The bilinear family of straight pixels at 8 and 16 bits.
namespace qx::sampling {

/// 16 bits need doubles: their products pass a float's precision.
template <class Pixel> using RealOf = std::conditional_t<sizeof(Pixel) == 8, double, float>;

/// The four corners of a sample as they are stored.
template <class Pixel> struct Corners {
    using B = Bits<Pixel>;
    B top_left, top_right, bottom_left, bottom_right;

    QX_INLINE explicit Corners(const TapRows<2>& rows)
        : top_left(load_at<B>(rows[0])),
          top_right(load_at<B>(rows[0] + sizeof(Pixel))),
          bottom_left(load_at<B>(rows[1])),
          bottom_right(load_at<B>(rows[1] + sizeof(Pixel))) {}

    /// Bits in which the corners are not all alike.
    QX_INLINE B differences() const {
        return (top_left ^ top_right) | (top_left ^ bottom_left) | (top_left ^ bottom_right);
    }
};

/// With equal alphas: a clear pixel, or the mix of colours under the alpha that is there.
template <class Pixel, class Q> QX_INLINE Bits<Pixel> under_alpha(const Q& mixed, Bits<Pixel> like) {
    const auto alpha = static_cast<Bits<Pixel>>(like & kAlphaBits<Pixel>);
    if (alpha == 0) return 0;
    return (to_pixel<Pixel>(mixed) & ~kAlphaBits<Pixel>) | alpha;
}

/// With different alphas: no colour survives under an alpha that rounds to nothing.
template <class Pixel, class Real> QX_INLINE Bits<Pixel> by_alpha(const Quad<Real> (&p)[4], const Real (&w)[4]) {
    const AlphaMix<Real> mix(p, w);
    if (!(mix.alpha >= Real{0.5})) return 0;
    return to_pixel<Pixel>(with_alpha(mix.colours(), mix.alpha));
}

template <class Pixel> QX_INLINE void widen_corners(const TapRows<2>& rows, Quad<RealOf<Pixel>> (&p)[4]) {
    for (int i = 0; i < 4; ++i) p[i] = widen<RealOf<Pixel>, Pixel>(rows[i >> 1] + (i & 1) * int{sizeof(Pixel)});
}

/// A sample from its taps; `weights()` is asked when the corners differ.
template <class Pixel, class GetWeights>
QX_INLINE Bits<Pixel> straight_sample(const TapRows<2>& rows, const GetWeights& weights) {
    using Real = RealOf<Pixel>;
    const Corners<Pixel> corners(rows);
    const auto differences = corners.differences();
    if (differences == 0) return corners.top_left;
    const Weights<Real> weight = weights();
    Quad<Real> p[4];
    widen_corners<Pixel>(rows, p);
    if ((differences & kAlphaBits<Pixel>) != 0) return by_alpha<Pixel, Real>(p, weight.w);
    return under_alpha<Pixel>(plain_mix<Real>(p, weight.w), corners.top_left);
}

template <class Pixel> QX_INLINE auto weights_at(const Position& p) {
    return [p] { return Weights<RealOf<Pixel>>::of(p); };
}

template <class Pixel>
QX_INLINE int straight_clipped(std::int32_t x, std::int32_t y, const QX_SampPB* params, bool* all_in, Pixel* out) {
    const QX_EffectWorld& world = *params->src;
    const Position p(x, y);
    TapRows<2> rows;
    if (p.on_a_pixel()) {  // Kept: tells nothing about the taps
        Pixel pixel{};
        if (contains(world, p.column, p.row)) {
            pixel = load_at<Pixel>(pixel_address(world, p.column, p.row, sizeof(Pixel)));
        }
        put(out, pixel);
        return 0;
    }
    Edge<Pixel, 2> edge;
    *all_in = taps_clipped<Pixel, 2>(world, p.column, p.row, edge, rows);
    put(out, straight_sample<Pixel>(rows, weights_at<Pixel>(p)));
    return 0;
}

template <class Pixel> int straight_point(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    bool not_told;
    return straight_clipped(x, y, params, &not_told, out);
}

template <class Pixel>
int straight_plus(std::int32_t x, std::int32_t y, const QX_SampPB* params, bool* all_in, Pixel* out) {
    *all_in = false;
    return straight_clipped(x, y, params, all_in, out);
}

/// `sample(rows, position)` gives the pixel's bits where the position lies between pixels.
template <class Pixel, class Sample>
QX_INLINE int straight_unclipped(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out,
                                 const Sample& sample) {
    const Position p(x, y);
    TapRows<2> rows;
    taps_inside<Pixel, 2>(*params->src, p.column, p.row, rows);
    put(out, p.on_a_pixel() ? load_at<Bits<Pixel>>(rows[0]) : sample(rows, p));
    return 0;
}

template <class Pixel> int straight_noclip(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    return straight_unclipped(x, y, params, out, [](const TapRows<2>& rows, const Position& p) {
        return straight_sample<Pixel>(rows, weights_at<Pixel>(p));
    });
}

template <class Pixel>
int straight_translate(std::int32_t x, std::int32_t y, const double* weights, const QX_SampPB* params, Pixel* out) {
    return straight_unclipped(x, y, params, out, [weights](const TapRows<2>& rows, const Position&) {
        return straight_sample<Pixel>(rows, [weights] { return Weights<RealOf<Pixel>>::given(weights); });
    });
}

template <class Pixel>
int straight_span(std::int32_t count, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                  QX_AlphaSumOf<Pixel>* alpha_sum, Pixel* out) {
    if (count < 1) return 0;
    const Position p(x, y);
    const auto weights = Weights<RealOf<Pixel>>::of(p);
    TapRows<2> rows;
    taps_inside<Pixel, 2>(*params->src, p.column, p.row, rows);
    for (std::int32_t i = 0; i < count; ++i) {
        const auto bits = straight_sample<Pixel>(rows, [&weights] { return weights; });
        *alpha_sum += static_cast<std::uint32_t>(bits & kAlphaBits<Pixel>);
        put(out + i, bits);
        for (auto& row : rows) row += sizeof(Pixel);
    }
    return 0;
}

}  // namespace qx::sampling
