// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Pixel.h"

namespace qx {

/// The samples of a straight line are taken with tests from both ends inwards, until one lies inside the world: what
/// lies between two such samples is inside too, since a line enters the world and leaves it once.
/// @param fits     false when positions wrap on the way: then every sample is tested
/// @param tested   takes sample i; true when it lies inside
/// @param between  takes the samples from the first to before the second number, all inside
template <class Tested, class Between>
void bracket(std::int32_t count, bool fits, const Tested& tested, const Between& between) {
    std::int32_t from = 0, to = count;
    for (bool inside = false; from < count && !inside; ++from) inside = tested(from) && fits;
    for (bool inside = false; to > from && !inside;) inside = tested(--to);
    if (from < to) between(from, to);
}

}  // namespace qx
