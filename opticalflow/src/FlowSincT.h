// SPDX-License-Identifier: Apache-2.0
// Pictures by a windowed sinc, for one level.
#pragma once

#include "lanes/Scattered.h"
#include "opticalflow/src/FlowLanesT.h"
#include "opticalflow/src/FlowSinc.h"
#include "opticalflow/src/Pixels.h"

namespace qx::QX_ISA {

using Doubles = Wide<double>;

inline constexpr double kPi = 3.14159265358979323846;

/// Coefficients of a sine's series, 1 over the factorials of odd numbers, or of a cosine's, with changing signs.
struct Series {
    static constexpr int kTerms = 11;
    double terms[kTerms];

    constexpr explicit Series(int first) : terms{} {
        double term = 1;
        for (int k = 0; k < kTerms; ++k) {
            terms[k] = term;
            term = -term / ((first + 2 * k + 1) * (first + 2 * k + 2));
        }
    }
    template <class V> QX_INLINE constexpr V at(V square) const {
        V sum = square * terms[kTerms - 1];
        for (int k = kTerms - 2; k > 0; --k) sum = (sum + terms[k]) * square;
        return sum + terms[0];
    }
};
inline constexpr Series kSine(1), kCosine(0);

/// Doubles rounded to floats.
template <class V> QX_INLINE auto rounded(V v) {
    if constexpr (is_wide<V>) {
        return __builtin_convertvector(v, Vector<float, sizeof(V) / 2>);
    } else {
        return static_cast<float>(v);
    }
}

/// For |x| <= pi / 2, good to 1e-13: libraries' sines differ in the last bit.
template <class V> QX_INLINE constexpr V sine(V x) { return x * kSine.at(x * x); }
template <class V> QX_INLINE constexpr V cosine(V x) { return kCosine.at(x * x); }

/// What of a tap does not depend on the fraction.
struct TapConstants {
    double k, cosine, sine, sign;

    constexpr explicit TapConstants(std::int32_t at) : k(at), cosine{}, sine{}, sign(at % 2 == 0 ? -1.0 : 1.0) {
        const double angle = kPi * (at < 0 ? -at : at) / kSincRadius;  // folded to the series' range
        const bool is_far = angle > kPi / 2;
        const double size = is_far ? QX_ISA::sine(kPi - angle) : QX_ISA::sine(angle);
        cosine = is_far ? -QX_ISA::cosine(kPi - angle) : QX_ISA::cosine(angle);
        sine = at < 0 ? -size : size;
    }
};
struct AllTapConstants {
    TapConstants of[kSincTaps];
    template <int... I>
    constexpr explicit AllTapConstants(std::integer_sequence<int, I...>) : of{TapConstants(I - kSincRadius)...} {}
};
inline constexpr AllTapConstants kTap(std::make_integer_sequence<int, kSincTaps>{});

/// Positions that are worked on together, and their weights: tap after tap, one of each position.
inline constexpr std::int32_t kPositions = lanes_in<Doubles>;
struct TapLanes {
    float weights[kSincTaps * kPositions];
};

/// (cos(pi d / 10) + 1) / 2 * sin(pi d) / d for d = k - f, the cosine by that of a difference and the sine of pi d by
/// that of pi f; over the sum of all.
QX_INLINE void sinc_taps(const double* fractions, TapLanes& taps) {
    using Narrow = Vector<float, is_wide<Doubles> ? sizeof(Doubles) / 2 : 0>;
    const auto f = load_lanes<Doubles>(fractions);
    const Doubles s = sine(kPi * (f <= 0.5 ? f : 1.0 - f));
    const Doubles across = cosine(kPi * f / kSincRadius), along = sine(kPi * f / kSincRadius);
    Narrow sum{};
    for (std::int32_t i = 0; i < kSincTaps; ++i) {
        const TapConstants& c = kTap.of[i];
        const Doubles d = c.k - f;
        const Doubles window = (c.cosine * across + c.sine * along + 1.0) * 0.5;
        const Narrow tap = rounded(d == Doubles{} ? splat<Doubles>(1.0) : window * (c.sign * s / d));
        store_lanes(taps.weights + i * kPositions, tap);
        sum += tap;
    }
    for (std::int32_t i = 0; i < kSincTaps; ++i) {
        float* const at = taps.weights + i * kPositions;
        store_lanes(at, load_lanes<Narrow>(at) / sum);
    }
}

inline void taps(float fraction, float* weights) {
    double fractions[kPositions];
    for (double& f : fractions) f = fraction;
    TapLanes lanes;
    sinc_taps(fractions, lanes);
    for (std::int32_t i = 0; i < kSincTaps; ++i) weights[i] = lanes.weights[i * kPositions];
}

/// One pixel's four channels, or those of pixels of rows one below another.
using RowLanes = Wide<float>;
inline constexpr std::int32_t kRowsInRegister =
    is_wide<RowLanes> ? static_cast<std::int32_t>(sizeof(RowLanes)) / 16 : 1;
inline constexpr std::int32_t kPaddedRows = 24, kPaddedTaps = 24;  // whole registers

/// The pixels that a position reads: those of the frame, or copies where some lie beside it.
template <class T> class SincWindow {
public:
    using Pixel = solvan_of::Argb<T>;

    QX_INLINE SincWindow(const FlowFrame& frame, std::int32_t left, std::int32_t top, Pixel* copies)
        : first_(frame.pixels + std::ptrdiff_t{top} * frame.row_bytes + std::ptrdiff_t{left} * kSize),
          step_(frame.row_bytes) {
        const bool inside =
            left >= 0 && top >= 0 && left + kPaddedTaps <= frame.width && top + kPaddedRows <= frame.height;
        if (!inside) copy(frame, left, top, copies);
    }
    QX_INLINE const std::byte* row(std::int32_t j) const { return first_ + j * step_; }

private:
    static constexpr std::ptrdiff_t kSize = sizeof(Pixel);

    void copy(const FlowFrame& frame, std::int32_t left, std::int32_t top, Pixel* copies) {
        const auto within = [](std::int32_t i, std::int32_t size) { return i < 0 ? 0 : i < size ? i : size - 1; };
        for (std::int32_t j = 0; j < kPaddedRows; ++j) {
            const std::byte* const from =
                frame.pixels + std::ptrdiff_t{within(top + j, frame.height)} * frame.row_bytes;
            for (std::int32_t i = 0; i < kPaddedTaps; ++i)
                __builtin_memcpy(copies + j * kPaddedTaps + i, from + within(left + i, frame.width) * kSize, kSize);
        }
        first_ = reinterpret_cast<const std::byte*>(copies);
        step_ = kPaddedTaps * kSize;
    }

    const std::byte* first_;
    std::ptrdiff_t step_;
};

#ifdef __SSE4_1__
/// The channels of the pixel `Which` of those in each sixteen bytes.
template <class T, int Which> QX_INLINE RowLanes channels_of(Register<RowLanes> sixteens) {
    if constexpr (sizeof(T) == 4) {
        return (RowLanes)sixteens;
    } else if constexpr (sizeof(T) == 2) {
        constexpr int b = 8 * Which;
        const auto v =
            shuffle_bytes<b, b + 1, -1, -1, b + 2, b + 3, -1, -1, b + 4, b + 5, -1, -1, b + 6, b + 7, -1, -1>(sixteens);
        return to_float((Wide<std::int32_t>)v);
    } else {
        constexpr int b = 4 * Which;
        const auto v = shuffle_bytes<b, -1, -1, -1, b + 1, -1, -1, -1, b + 2, -1, -1, -1, b + 3, -1, -1, -1>(sixteens);
        return to_float((Wide<std::int32_t>)v);
    }
}

/// Adds up rows from j on, each from the left: three registers of rows side by side, since a sum waits for its last.
inline constexpr std::int32_t kRowsAtOnce = 3 * kRowsInRegister;
template <class T>
QX_INLINE void filter_rows(const SincWindow<T>& window, std::int32_t j, const float* weights,
                           float* sums) {  // weights: kPositions apart
    constexpr std::int32_t kPixels = 16 / (4 * sizeof(T));
    RowLanes sum0{}, sum1{}, sum2{};
    for (std::int32_t k = 0; k < kSincTaps; k += kPixels) {
        const auto load = [&](std::int32_t first) QX_LAMBDA {
            return (Register<RowLanes>)load_sixteens<RowLanes>(
                [&](int r) QX_LAMBDA { return window.row(first + r) + k * 4 * static_cast<std::int32_t>(sizeof(T)); });
        };
        const auto v0 = load(j), v1 = load(j + kRowsInRegister), v2 = load(j + 2 * kRowsInRegister);
        const auto add = [&]<int Which>() QX_LAMBDA {
            if (Which >= kPixels || k + Which >= kSincTaps) return;
            const RowLanes weight = splat<RowLanes>(weights[(k + Which) * kPositions]);
            sum0 += channels_of<T, Which % kPixels>(v0) * weight;
            sum1 += channels_of<T, Which % kPixels>(v1) * weight;
            sum2 += channels_of<T, Which % kPixels>(v2) * weight;
        };
        add.template operator()<0>();
        add.template operator()<1>();
        add.template operator()<2>();
        add.template operator()<3>();
    }
    store_lanes(sums, sum0);
    store_lanes(sums + lanes_in<RowLanes>, sum1);
    store_lanes(sums + 2 * lanes_in<RowLanes>, sum2);
}
#endif

/// A frame's four channels at a position between pixels, by its taps, which stand kPositions apart.
template <class T>
QX_INLINE void filter_window(const FlowFrame& frame, std::int32_t x, std::int32_t y, const float* along_x,
                             const float* along_y, float* channels) {
    solvan_of::Argb<T> copies[kPaddedRows * kPaddedTaps];
    const SincWindow<T> window(frame, x - kSincRadius, y - kSincRadius, copies);
    float rows[kPaddedRows][4];
#ifdef __SSE4_1__
    for (std::int32_t j = 0; j < kPaddedRows; j += kRowsAtOnce) filter_rows<T>(window, j, along_x, rows[j]);
    Vector<float, 16> sum{};
    for (std::int32_t j = 0; j < kSincTaps; ++j)
        sum += load_lanes<Vector<float, 16>>(rows[j]) * along_y[j * kPositions];
    store_lanes(channels, sum);
#else
    for (std::int32_t c = 0; c < 4; ++c) channels[c] = 0;
    for (std::int32_t j = 0; j < kSincTaps; ++j) {
        for (std::int32_t c = 0; c < 4; ++c) {
            rows[j][c] = 0;
            for (std::int32_t i = 0; i < kSincTaps; ++i) {
                T channel;
                __builtin_memcpy(&channel, window.row(j) + (4 * i + c) * static_cast<std::int32_t>(sizeof channel),
                                 sizeof channel);
                rows[j][c] += static_cast<float>(channel) * along_x[i * kPositions];
            }
            channels[c] += rows[j][c] * along_y[j * kPositions];
        }
    }
#endif
}

/// The pixel that a place is nearest to, within the frame.
QX_INLINE std::int32_t nearest_pixel(const solvan_of::Place& place, std::int32_t size) {
    const std::int32_t i = place.whole + (place.fraction > 0.99f ? 1 : 0);
    return i < 0 ? 0 : i < size ? i : size - 1;
}
template <class T> QX_INLINE void read_pixel(const FlowFrame& frame, std::int32_t x, std::int32_t y, float* channels) {
    solvan_of::Argb<T> p;
    __builtin_memcpy(&p, frame.pixels + std::ptrdiff_t{y} * frame.row_bytes + x * static_cast<std::ptrdiff_t>(sizeof p),
                     sizeof p);
    channels[0] = static_cast<float>(p.alpha), channels[1] = static_cast<float>(p.red);
    channels[2] = static_cast<float>(p.green), channels[3] = static_cast<float>(p.blue);
}

/// Where the vectors of some pixels of a row lead in a frame, and the taps there.
struct SincPlaces {
    solvan_of::Place across[kPositions], down[kPositions];
    float marker[kPositions];  ///< colour of what no vector leads to, else 0
    TapLanes along_x, along_y;

    QX_INLINE SincPlaces(const VectorRow& vectors, std::int32_t at, std::int32_t count, std::int32_t y, float k,
                         float scale) {
        double fx[kPositions]{}, fy[kPositions]{};
        for (std::int32_t i = 0; i < count; ++i) {
            const float dx = vectors.x[at + i] * k * scale, dy = vectors.y[at + i] * k * scale;
            marker[i] = vectors.x[at + i] == INVALID_VECTOR ? -1.0f : dx == INVALID_VECTOR ? 128.0f : 0.0f;
            across[i] = solvan_of::place_of(static_cast<float>(at + i) + 0.5f - dx - 0.5f);
            down[i] = solvan_of::place_of(static_cast<float>(y) + 0.5f + dy - 0.5f);
            fx[i] = across[i].fraction;
            fy[i] = down[i].fraction;
        }
        sinc_taps(fx, along_x);
        sinc_taps(fy, along_y);
    }

    template <class T> QX_INLINE void sample(const FlowFrame& frame, std::int32_t i, float* channels) const {
        const solvan_of::Place &u = across[i], &v = down[i];
        if (marker[i] != 0.0f) {
            channels[0] = marker[i] < 0.0f ? 0.0f : marker[i];
            channels[1] = channels[2] = channels[3] = marker[i];
        } else if (is_near_middle(u.fraction) && is_near_middle(v.fraction)) {
            read_pixel<T>(frame, nearest_pixel(u, frame.width), nearest_pixel(v, frame.height), channels);
        } else {
            filter_window<T>(frame, u.whole, v.whole, along_x.weights + i, along_y.weights + i, channels);
        }
    }
};

template <class T> void sinc_row(const FlowPictureRow& row) {
    auto* const out = static_cast<solvan_of::Argb<T>*>(row.out);
    const float s = 1.0f - row.t;
    for (std::int32_t at = 0; at < row.count; at += kPositions) {
        const std::int32_t count = lesser(row.count - at, kPositions);
        const SincPlaces first(row.to_first, at, count, row.y, row.t, row.scale);
        const SincPlaces second(row.to_second, at, count, row.y, s, row.scale);
        for (std::int32_t i = 0; i < count; ++i) {
            float s0[4], s1[4], mixed[4];
            first.sample<T>(row.first, i, s0);
            second.sample<T>(row.second, i, s1);
            for (std::int32_t c = 0; c < 4; ++c) mixed[c] = s0[c] * s + s1[c] * row.t;
            out[at + i].alpha = solvan_of::as_channel<T>(mixed[0]);
            out[at + i].red = solvan_of::as_channel<T>(mixed[1]);
            out[at + i].green = solvan_of::as_channel<T>(mixed[2]);
            out[at + i].blue = solvan_of::as_channel<T>(mixed[3]);
        }
    }
}

extern const FlowSinc flow_sinc;
const FlowSinc flow_sinc{
    .taps = &taps, .rows8 = &sinc_row<std::uint8_t>, .rows16 = &sinc_row<std::uint16_t>, .rows32 = &sinc_row<float>};

}  // namespace qx::QX_ISA
