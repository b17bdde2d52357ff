// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/M_Geometry.h"

namespace qx {

inline constexpr int kMaxBands = 32;

/// The one split of a rectangle into horizontal bands: rows divided by the band count, at least one row, and the
/// last band takes the remainder. Bands that would be empty or pass the bottom are not made.
class Bands {
public:
    /// @param rect   not empty in height; left and right edges stay as they are
    /// @param bands  1 and up
    Bands(const M_LRect& rect, int bands) : rect_(rect), limit_(bands) {
        const std::int64_t rows = std::int64_t{rect.bottom} - rect.top;
        height_ = rows > bands ? rows / bands : 1;
        count_ = static_cast<int>(std::clamp<std::int64_t>(rows / height_, 0, bands));
    }
    int count() const { return count_; }
    M_LRect operator[](int i) const {
        const std::int64_t top = rect_.top + i * height_;
        const std::int64_t bottom = i == limit_ - 1 ? rect_.bottom : top + height_;
        return {rect_.left, static_cast<std::int32_t>(top), rect_.right, static_cast<std::int32_t>(bottom)};
    }

private:
    M_LRect rect_;
    int limit_;
    std::int64_t height_;
    int count_;
};

}  // namespace qx
