// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Fixed.h"
#include "QX/sampling/QX_SampPB.h"

/// The rectangle that an area sample covers, in edge coordinates: pixel i covers [i, i + 1). All in 16.16, wrapping.
namespace qx::sampling {

inline constexpr std::int32_t kOne = kFixedOne, kHalf = kFixedHalf;

enum class Branch { point, row_strip, column_strip, box };

QX_INLINE constexpr Branch branch_of(const QX_SampPB& params) {
    if (params.y_radius > kHalf) return params.x_radius > kHalf ? Branch::box : Branch::column_strip;
    return params.x_radius > kHalf ? Branch::row_strip : Branch::point;
}

/// One side of the footprint: from pixel `first` on, a partial pixel where `lead` is not 0, whole ones up to `last`,
/// and a partial one there where `tail` is not 0.
struct Extent {
    std::int32_t low, high;

    QX_INLINE constexpr Extent(std::int32_t centre, std::int32_t radius)
        : low(wrapping_sum(wrapping_difference(centre, radius), kHalf)),
          high(wrapping_sum(wrapping_sum(centre, radius), kHalf)) {}

    QX_INLINE constexpr std::int32_t length() const { return wrapping_difference(high, low); }
    /// Cut to a world's side. What lies outside, and what wrapped, has no pixel at all, not even a partial one.
    QX_INLINE constexpr Extent clipped(std::int32_t size) const {
        const auto end = lesser(std::int64_t{size} * kOne, std::int64_t{INT32_MAX});
        const auto limit = greater(static_cast<std::int32_t>(end), 0);
        Extent cut = *this;
        cut.low = lesser(greater(low, 0), limit);
        cut.high = lesser(greater(high, 0), limit);
        if (cut.high <= cut.low) cut.low = cut.high = 0;
        return cut;
    }
    QX_INLINE constexpr std::int32_t first() const { return low >> 16; }
    QX_INLINE constexpr std::int32_t last() const { return high >> 16; }
    /// Coverage of the first and of the last pixel where it is partial, else 0.
    QX_INLINE constexpr std::int32_t lead() const { return (low & 0xFFFF) != 0 ? kOne - (low & 0xFFFF) : 0; }
    QX_INLINE constexpr std::int32_t tail() const { return high & 0xFFFF; }
    /// Calls visit(pixel, coverage) for each pixel. Kept: pixels count in 16 bits, which wrap.
    template <class Visit> void each(const Visit& visit) const {
        const auto next = [](std::int32_t i) { return std::int32_t{static_cast<std::int16_t>(i + 1)}; };
        std::int32_t i = first();
        if (lead() != 0) {
            visit(i, lead());
            i = next(i);
        }
        for (; i < last(); i = next(i)) visit(i, kOne);
        if (tail() != 0) visit(last(), tail());
    }
};

}  // namespace qx::sampling
