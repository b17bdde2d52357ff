// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/Levels.h"
#include "opticalflow/src/HvVec2.h"

namespace qx {

/// Two images of floats, of equal size and without gaps between their rows, and what of them is left out.
struct FlowImages {
    const float* first;   ///< sampled at the displaced place
    const float* second;  ///< at its own pixels
    const float* mask;    ///< above 0.5 a pixel does not count; or null
    std::int32_t width, height;
};

/// Blocks of one size by their left top corners, and a vector for each.
struct FlowBlocks {
    const std::int32_t *left, *top;
    const HvVec2* vectors;
    std::int32_t count;
    std::int32_t width, height;  ///< of every block, 1 and up
    float* scratch;              ///< block_scratch(width) floats
};
constexpr std::size_t block_scratch(std::int32_t width) { return 3 * std::size_t{16} * std::size_t(width); }

enum class FlowStep : std::int32_t { moved, converged, refused };

/// Works on blocks side by side, a lane each. A displaced pixel lies inside where the integer part of its place does;
/// the neighbours that it is mixed with are those of the edge where there is none.
struct FlowSolve {
    /// One step of each block's vector towards what the gradients of both images tell.
    /// @param moved  where a step was made, the new vectors; where it converged, the old ones
    void (*solve)(const FlowImages& images, const FlowBlocks& blocks, float threshold, HvVec2* moved, FlowStep* steps);
    /// The mean of |second - first displaced| of each block; INVALID_VECTOR where no more than a quarter of its pixels
    /// lie inside.
    void (*errors)(const FlowImages& images, const FlowBlocks& blocks, float* errors);
};
QX_DECLARE_LEVELS(FlowSolve, flow_solve)

}  // namespace qx
