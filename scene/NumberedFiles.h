// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "scene/Frames.h"

namespace qx::scene {

/// Numbers of a sequence's pictures that are there, rising.
std::vector<int> numbers_there(const FramePattern& pattern);

}  // namespace qx::scene
