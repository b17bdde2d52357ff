// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "QX/indep/QX_Records.h"
#include "QX/sampling/QX_RowGeometry.h"
#include "lanes/Lanes.h"

namespace qx {

/// Pixels whose places are made at once, and asked for that much ahead: a turned row touches a line of many rows, which
/// no processor foresees.
inline constexpr std::int32_t kAhead = 64;

/// Where the samples of a run have their first taps, which lie in `Rows` rows.
template <class Pixel, int Rows> class RunPlaces {
public:
    /// @param before  pixels from the first tap to the position, on both axes
    QX_INLINE RunPlaces(FixedPoint from, FixedPoint step, const void* data, std::ptrdiff_t rowbytes, int before)
        : base_(static_cast<const std::byte*>(data) - before * (rowbytes + std::ptrdiff_t{sizeof(Pixel)})),
          rowbytes_(rowbytes),
          from_(from),
          step_(step) {}

    /// The next ones; behind the end the last is repeated up to a multiple of `bundle`.
    QX_INLINE void make(std::int32_t count, int bundle, const std::byte* (&places)[kAhead]) {
        const std::int32_t now = lesser(count, kAhead);
        std::int32_t i = 0;
        for (; i < now; ++i, from_ = from_ + step_) {
            std::ptrdiff_t row = from_.y >> 16;
            asm("" : "+r"(row));  // addresses that are made in vectors are slow to take from there
            places[i] = base_ + row * rowbytes_ + (from_.x >> 16) * std::ptrdiff_t{sizeof(Pixel)};
            for (int k = 0; k < Rows; ++k) __builtin_prefetch(places[i] + k * rowbytes_);
        }
        for (; now > 0 && i % bundle != 0; ++i) places[i] = places[now - 1];
    }

private:
    const std::byte* base_;
    std::ptrdiff_t rowbytes_;
    FixedPoint from_, step_;
};

}  // namespace qx
