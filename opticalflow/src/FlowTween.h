// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowChoice.h"
#include "opticalflow/src/PairChoice.h"

namespace qx {

/// One of the two results of a tween: its vectors to one of the frames.
struct TweenSide {
    FlowImage image{};                                ///< the frame
    const float* here = nullptr;                      ///< its pixels in the row
    float k = 0;                                      ///< share of a vector that leads there
    CandidateRow rows[3]{};                           ///< above, itself, below, as the monitor saved them
    HvVec2* row = nullptr;                            ///< live
    const HvVec2 *above = nullptr, *below = nullptr;  ///< live or as they were before the pass; null beside the field

    ThreeRows live() const { return {above, row, below}; }
};

/// Which pair a shuffle puts first among the cheapest.
using SettlePair = solvan_of::ChosenPair (*)(const solvan_of::PairChoice& choice);

/// A row of both results in place, each of whose pixels may take a pair of its neighbours' vectors and its own.
struct TweenRow {
    TweenSide a{}, b{};  ///< to frame 1, to frame 0
    float symmetry = 0, data = 0, smoothness = 0;
    std::int32_t y = 0, width = 0;
    std::uint32_t random = 0;
    SettlePair settle = nullptr;
};

/// What stands for a frame where a vector's displacement overflows, and where it leads outside.
inline constexpr float kOverflowShows = 128.0f, kOutsideShows = 16711425.0f;

/// Vectors of a stretch of a row, and the field that they lead through.
struct LeadRow {
    const HvVec2* vectors;
    std::int32_t x, y, count;  ///< where the stretch begins, its length
    std::int32_t width, height;
    float k;  ///< share of a vector
};
inline constexpr std::int32_t kLeadsNowhere = -1;

struct FlowTween {
    void (*choose)(TweenRow& row);
    /// Numbers of the pixels to which the vectors lead.
    void (*lead)(const LeadRow& row, std::int32_t* to);
};
QX_DECLARE_LEVELS(FlowTween, flow_tween)

}  // namespace qx
