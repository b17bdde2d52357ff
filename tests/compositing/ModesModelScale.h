// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "tests/compositing/ModesModel.h"

/// The arithmetic of the integer depths, on numbers that nothing overflows.
namespace qx::test::model {

using I = std::int64_t;
using Colours = std::array<I, 3>;
struct Px {
    I alpha;
    Colours colour;
};

/// Division that rounds down; `by` is above 0.
inline I floor_div(I n, I by) {
    const I q = n / by;
    return q * by > n ? q - 1 : q;
}

inline I luma(const Colours& c) { return floor_div(c[0] * 9798 + c[1] * 19235 + c[2] * 3735 + 16384, 32768); }
inline I widen(I v) { return floor_div(v * 0x808080 + 33200, 65536); }
inline I narrow(I v) { return floor_div(v * 255 + 16384, 32768); }

/// The arithmetic of a depth.
struct Scale {
    bool eight;
    I full, half, modulus;
    explicit Scale(bool eight_bits)
        : eight(eight_bits), full(eight ? 255 : 32768), half(eight ? 128 : 16384), modulus(eight ? 256 : 65536) {}

    I comp(I x) const { return full - x; }
    I wrap(I x) const { return x - floor_div(x, modulus) * modulus; }
    /// Also of a negative x.
    I mul(I x, I y) const {
        if (!eight) return floor_div(x * y + 16383, 32768);
        const I t = x * y + 128;
        return floor_div(t + floor_div(t, 256), 256);
    }
    I lerp(I x, I w) const { return eight ? mul(x, w) : floor_div(x * w, 32768); }
    I combine(I s, I d) const { return comp(mul(comp(s), comp(d))); }
    I div(I v, I a) const {
        if (eight) return a == 0 ? 255 : std::min<I>(255, (v * 255 + a / 2) / a);
        return v >= a ? full : (v * 32768 + a / 2) / a;
    }
    /// From a towards b by w without a negative product.
    I mix(I a, I b, I w) const { return b < a ? a - mul(a - b, w) : a + mul(b - a, w); }

    /// Twice a value below the middle, and twice what a value above it has more.
    I twice(I c) const { return eight ? floor_div(c * 255 + 64, 128) : 2 * c; }
    I twice_above(I c) const { return eight ? div(c - 128, 127) : 2 * (c - half); }

    I soft(double (*curve)(double), I c) const {
        if (eight) return static_cast<I>(curve(static_cast<double>(c) / 255) * 255 + 0.5);
        const auto entry = [&](I i) { return static_cast<I>(curve(static_cast<double>(i) / 4096) * 32768 + 0.5); };
        const I i = c / 8, f = c % 8;
        return f == 0 ? entry(i) : entry(i) + floor_div((entry(i + 1) - entry(i)) * f + 4, 8);
    }
};

}  // namespace qx::test::model
