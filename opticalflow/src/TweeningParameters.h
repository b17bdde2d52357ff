// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/CandidateLists.h"

namespace solvan_of {

/// Bits of FnMotionEstimateGradientTweeningParameters::flags.
enum TweenFlags : std::uint32_t {
    kResultsAreGiven = 0x2,
    kMapIsGiven = 0x4,
    kGuessesOcclusions = 0x10,
    kPaintsStates = 0x40,  ///< a debug view of occlusion states in place of the picture
    kHighQualityFilter = 0x100,
    kBorrowsCandidates = 0x800  ///< a direction without candidates takes the other's, negated
};

/// Where a pixel of the in-between frame is seen.
enum OcclusionState : std::int32_t {
    kSeenInBoth = 0,
    kFirstAlone = 1,
    kSecondAlone = 2,
    kUnknown = 3,
    kNotLookedAt = 666
};

/// What the tweener and its stages share.
struct FnMotionEstimateGradientTweeningParameters {
    std::int32_t width = 0, height = 0;  ///< of the field at time t
    float position = 0.5f;               ///< t; 0 is the first frame
    int iterations = 5;
    float structure_weight = 33.17888f;  ///< carried; no stage reads it
    std::int32_t spare = 0;
    float smoothness_weight = 1, data_weight = 1;
    float symmetry_weight = 10;
    float occlusion_weight = 1;  ///< carried
    std::uint32_t flags = 0x438;
    int occlusion_smoothing_rounds = 1;
    const FieldTexture* forward = nullptr;   ///< vectors at frame 0, which lead to frame 1
    const FieldTexture* backward = nullptr;  ///< vectors at frame 1, which lead to frame 0
    IntTexture* occlusion_map = nullptr;
    FieldTexture *to_second = nullptr, *to_first = nullptr;  ///< results at time t: vectors to frame 1, to frame 0
    CandidateLists *first_candidates = nullptr, *second_candidates = nullptr;  ///< for to_second, for to_first
    const FloatTexture *first_frame = nullptr, *second_frame = nullptr;        ///< luminance
    const FloatTexture* mask = nullptr;                                        ///< or null

    bool has(std::uint32_t flag) const { return (flags & flag) != 0; }
    std::int32_t number(std::int32_t x, std::int32_t y) const { return y * width + x; }
};

/// The time of a position: steps of 0.005, of which 1 wraps to 0.
float tween_position(double position);

}  // namespace solvan_of
