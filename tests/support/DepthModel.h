// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "QX/compositing/QX_LinearBlendingTables.h"

/// The arithmetic of the depths once more, for models of what the library does; nothing here calls it: integers are 64
/// bits wide, so that nothing overflows, floats are single operations.
namespace qx::test::model {

using I = std::int64_t;
using Tables = QX_LinearBlendingTables;
template <class N> using Colours = std::array<N, 3>;

/// Division that rounds down; `by` is above 0.
inline I floor_div(I n, I by) {
    const I q = n / by;
    return q * by > n ? q - 1 : q;
}
inline I widen(I v) { return floor_div(v * 0x808080 + 33200, 65536); }
inline I narrow(I v) { return floor_div(v * 255 + 16384, 32768); }

/// The soft-light curves at x, from 0 to 1: what is added above the middle, and taken away below it.
inline double soft_up(double x) { return (x <= 0.25 ? ((16 * x - 12) * x + 4) * x : std::sqrt(x)) - x; }
inline double soft_down(double x) { return x * (1 - x); }

/// The generator of dissolve: 15 random bits, of which it takes the low 8.
inline std::int32_t random_bits(std::uint32_t& seed) {
    // The sum of the two terms is what the pattern is made of, with 32 bits kept.
    const std::uint64_t sum = std::uint64_t{seed / 44488} * 3399 + std::uint64_t{seed % 44488} * 48271;
    seed = static_cast<std::uint32_t>(sum & 0xFFFFFFFF);
    if (seed == 0) seed = 0x7FFFFFFF;
    return static_cast<std::int32_t>((seed >> 7) & 0x7FFF);
}

/// What both integer depths have in common.
template <I Full, I Half, I Modulus> struct Integers {
    using N = I;
    static constexpr bool real = false;
    static constexpr N full = Full, half = Half;
    static N wrap(N x) { return x - floor_div(x, Modulus) * Modulus; }
    static N limit(N x) { return std::clamp<N>(x, 0, Full); }
    static N luma(const Colours<N>& c) { return floor_div(c[0] * 9798 + c[1] * 19235 + c[2] * 3735 + 16384, 32768); }
};

struct Sixteen : Integers<32768, 16384, 65536> {
    static N mul(N x, N y) { return floor_div(x * y + 16383, 32768); }
    static N lerp(N x, N w) { return floor_div(x * w, 32768); }
    static N div(N v, N a) { return v >= a ? full : (v * 32768 + a / 2) / a; }
    static N ratio(N v, N a) { return div(v, a); }
    static N twice(N c) { return 2 * c; }
    static N twice_above(N c) { return 2 * (c - half); }
    static N twice_over(N c) { return 2 * c - full; }
    static N soft(double (*curve)(double), N c) {
        const auto entry = [&](N i) { return static_cast<N>(curve(static_cast<double>(i) / 4096) * 32768 + 0.5); };
        const N i = c / 8, f = c % 8;
        return f == 0 ? entry(i) : entry(i) + floor_div((entry(i + 1) - entry(i)) * f + 4, 8);
    }
    static Colours<N> marker(const Colours<N>& c) { return {narrow(c[0]), narrow(c[1]), narrow(c[2])}; }
    using Linear = Sixteen;
    static N widened(N a) { return a; }
    static N narrowed(N a) { return a; }
    static N to_linear(const Tables& tables, N c) {
        const N i = c * 255 / 32768, f = c * 255 % 32768, y = tables.to_linear[i];
        return f == 0 ? y : y + floor_div((tables.to_linear[i + 1] - y) * f + 16384, 32768);
    }
    static N from_linear(const Tables& tables, N y) {
        const N i = y / 8, f = y % 8, c = tables.from_linear[i];
        return f == 0 ? c : c + floor_div((tables.from_linear[i + 1] - c) * f + 4, 8);
    }
};

struct Eight : Integers<255, 128, 256> {
    static N mul(N x, N y) {
        if (x * y >= 0) return (2 * x * y + 255) / 510;                    // the nearest; 255 is odd, there are no ties
        return floor_div(x * y + 128 + floor_div(x * y + 128, 256), 256);  // below zero the fold is not quite that
    }
    static N lerp(N x, N w) { return mul(x, w); }
    static N div(N v, N a) { return a == 0 ? 255 : std::min<N>(255, (v * 255 + a / 2) / a); }
    static N ratio(N v, N a) { return div(v, a); }
    /// Twice a value below the middle, and twice what a value above it has more; the latter for soft light.
    static N twice(N c) { return floor_div(c * 255 + 64, 128); }
    static N twice_above(N c) { return div(c - 128, 127); }
    static N twice_over(N c) { return 2 * c % 256; }
    static N soft(double (*curve)(double), N c) {
        return static_cast<N>(curve(static_cast<double>(c) / 255) * 255 + 0.5);
    }
    static Colours<N> marker(const Colours<N>& c) { return c; }
    using Linear = Sixteen;  ///< the depth of linear light
    static N widened(N a) { return widen(a); }
    static N narrowed(N a) { return narrow(a); }
    static N to_linear(const Tables& tables, N c) { return tables.to_linear[c]; }
    static N from_linear(const Tables& tables, N c) { return narrow(Sixteen::from_linear(tables, c)); }
};

struct Real {
    using N = float;
    static constexpr bool real = true;
    static constexpr N full = 1.0f, half = 0.5f;
    static N wrap(N x) { return x; }
    static N limit(N x) { return x; }
    static N luma(const Colours<N>& c) { return c[0] * 0.299f + c[1] * 0.587f + c[2] * 0.114f; }
    static N mul(N x, N y) { return x * y; }
    static N lerp(N x, N w) { return x * w; }
    static N div(N x, N a) { return std::fabs(a) < std::numeric_limits<N>::min() ? 1.0f : x / a; }
    static N ratio(N v, N a) { return a == 0.0f || v >= a ? 1.0f : v / a; }
    static N twice(N c) { return 2.0f * c; }
    static N twice_above(N c) { return 2.0f * (c - 0.5f); }
    static N twice_over(N c) { return 2.0f * c - 1.0f; }
    /// Between two of the curve's 4097 entries.
    static N soft(double (*curve)(double), N c) {
        const auto entry = [&](int i) { return static_cast<N>(curve(i / 4096.0)); };
        const N at = std::clamp(c, 0.0f, 1.0f) * 4096.0f;
        const int i = static_cast<int>(at);
        const N f = at - static_cast<N>(i);
        return f == 0.0f ? entry(i) : entry(i) + (entry(i + 1) - entry(i)) * f;
    }
    static Colours<N> marker(const Colours<N>& c) { return c; }
    using Linear = Real;
    static N widened(N a) { return a; }
    static N narrowed(N a) { return a; }
    static N power(N c, N exponent) { return c >= 0.0f ? powf(c, exponent) : c; }
    static N to_linear(const Tables& tables, N c) { return power(c, tables.to_linear_gamma); }
    static N from_linear(const Tables& tables, N c) { return power(c, tables.from_linear_gamma); }
};

/// The arithmetic of a pixel's depth.
template <class Pixel>
using DepthModel = std::conditional_t<std::is_same_v<Pixel, QX_Pixel8>, Eight,
                                      std::conditional_t<std::is_same_v<Pixel, QX_Pixel16>, Sixteen, Real>>;

}  // namespace qx::test::model
