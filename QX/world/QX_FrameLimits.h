// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>

#include "QX/indep/QX_Export.h"

namespace qx {

inline constexpr int kMaxSide = 30000;  ///< width and height lie in 1 to this

constexpr bool valid_size(int width, int height) {
    return width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide;
}

/// A size as an int; what does not fit is no valid size on either side.
constexpr int extent(std::int32_t from, std::int32_t to) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{to} - from, Limits::min(), Limits::max()));
}

namespace numeric_limits {

/// Could a frame be allocated at all? False comes with a text for the user, true with an empty one.
/// @param alignment  of a row in bytes, a power of two
QX_EXPORT std::tuple<bool, std::wstring> CanAllocateCPUFrame(int width, int height, short depth, std::size_t alignment);
QX_EXPORT std::tuple<bool, std::wstring> CanAllocateGPUFrame(int width, int height, short depth, std::size_t alignment);

}  // namespace numeric_limits
}  // namespace qx
