// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <emmintrin.h>

#include <cstdint>

#include "opticalflow/src/HvVec2.h"

namespace qx {

/// Rows of a field around a pixel; those beside the field are null.
struct ThreeRows {
    const HvVec2 *above, *row, *below;
};

/// Means of the whole neighbours of a pixel in two fields, row above, beside, row below; (0, 0) where there are none.
struct MeanPair {
    HvVec2 a, b;
};

/// Sums of four components side by side. What is none adds a zero, which changes no sum that began with one.
class PairSum {
public:
    [[gnu::always_inline]] void add(const HvVec2& a, const HvVec2& b) {
        const __m128 v = _mm_loadh_pi(_mm_castpd_ps(_mm_load_sd(&reinterpret_cast<const double&>(a))),
                                      reinterpret_cast<const __m64*>(&b));
        const __m128 is_none = _mm_cmpeq_ps(v, _mm_set1_ps(INVALID_VECTOR));
        const __m128 either_is = _mm_or_ps(is_none, _mm_shuffle_ps(is_none, is_none, 0xB1));
        sum_ = _mm_add_ps(sum_, _mm_andnot_ps(either_is, v));
        count_ = _mm_add_ps(count_, _mm_andnot_ps(either_is, _mm_set1_ps(1.0f)));
    }
    [[gnu::always_inline]] MeanPair mean() const {
        float v[4];
        _mm_storeu_ps(v, _mm_and_ps(_mm_div_ps(sum_, count_), _mm_cmpneq_ps(count_, _mm_setzero_ps())));
        return {{v[0], v[1]}, {v[2], v[3]}};
    }

private:
    __m128 sum_ = _mm_setzero_ps(), count_ = _mm_setzero_ps();
};

[[gnu::always_inline]] inline MeanPair means_around(const ThreeRows& a, const ThreeRows& b, std::int32_t x,
                                                    std::int32_t width) {
    PairSum sum;
    const bool has_left = x > 0, has_right = x + 1 < width;
    const auto add_three = [&](const HvVec2* of_a, const HvVec2* of_b) __attribute__((always_inline)) {
        if (of_a == nullptr) return;
        if (has_left) sum.add(of_a[x - 1], of_b[x - 1]);
        sum.add(of_a[x], of_b[x]);
        if (has_right) sum.add(of_a[x + 1], of_b[x + 1]);
    };
    add_three(a.above, b.above);
    if (has_left) sum.add(a.row[x - 1], b.row[x - 1]);
    if (has_right) sum.add(a.row[x + 1], b.row[x + 1]);
    add_three(a.below, b.below);
    return sum.mean();
}
[[gnu::always_inline]] inline HvVec2 mean_around(const ThreeRows& rows, std::int32_t x, std::int32_t width) {
    return means_around(rows, rows, x, width).a;
}

}  // namespace qx
