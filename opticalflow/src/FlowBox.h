// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/Levels.h"

namespace qx {

/// A box of 2 * radius + 1 values and on both sides one more of the weight `rest`, run several times along lines.
struct BoxShape {
    std::int32_t radius;
    float rest;
    float norm;          ///< 1 over the sum of the weights
    std::int32_t extra;  ///< values that a run needs beside those that it makes, on either side
    std::int32_t passes;

    constexpr std::int32_t margin() const { return passes * extra; }
};

/// Lines that lie side by side, and which places of theirs are wanted.
struct BoxLines {
    BoxShape shape;
    const float* source = nullptr;  ///< place 0 of the first line
    std::ptrdiff_t place_step = 1;  ///< floats from a place to the next
    std::ptrdiff_t line_step = 1;   ///< floats from a line to the next
    std::int32_t length = 0, lines = 0;
    const std::int32_t* index = nullptr;  ///< [-margin, length + margin): which place is read, -1 for the background
    float background = 0;
    const std::int32_t* picks = nullptr;  ///< rising places of a line
    std::int32_t pick_count = 0;
    float* out = nullptr;
    std::ptrdiff_t out_pick_step = 1, out_line_step = 1;  ///< in floats
    float* scratch = nullptr;                             ///< box_scratch floats
};

inline constexpr std::int32_t kMostLanes = 16;
constexpr std::size_t box_scratch(const BoxShape& shape, std::int32_t length) {
    return 2 * std::size_t(kMostLanes) * (std::size_t(length) + 2 * std::size_t(shape.margin()));
}

/// A window's sum moves along the line: its place's value is (sum + rest * (left + right)) * norm, then the value that
/// enters is added and the one that leaves is subtracted. Run k of n begins so many places before the line as the runs
/// behind it need, and each begins with the sum of its first window, upwards.
struct FlowBox {
    void (*blur_lines)(const BoxLines& lines);
};
QX_DECLARE_LEVELS(FlowBox, flow_box)

}  // namespace qx
