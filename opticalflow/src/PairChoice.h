// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "opticalflow/src/HvVec2.h"

namespace solvan_of {

/// What a pixel between two frames chooses a pair from: vectors to frame 1 and to frame 0, and what the frames show
/// where these lead.
struct PairChoice {
    static constexpr std::int32_t kMost = 200;  ///< vectors of one direction

    const HvVec2 *a, *b;
    const float *shown_a, *shown_b;
    std::int32_t count_a, count_b;
    HvVec2 mean_a, mean_b;  ///< of the pixel's neighbours
    float symmetry, data, smoothness;
    std::uint32_t random;       ///< state of the random sequence before the shuffles of a and of b
    bool borrows_a, borrows_b;  ///< these are the other's, negated, and keep the order that it is shuffled to
};

/// Places in the two lists; -1 where no pair costs less than the most.
struct ChosenPair {
    std::int32_t a = -1, b = -1;
    bool is_tied = false;  ///< another one costs the same
};

inline constexpr float kMostPairCost = 1.7014117e38f;

/// The cheapest pair, in the order of the lists.
ChosenPair cheapest_pair(const PairChoice& choice);
/// The cheapest pair, in the order to which the lists are shuffled.
ChosenPair cheapest_shuffled_pair(const PairChoice& choice);

}  // namespace solvan_of
