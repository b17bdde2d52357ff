// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "scene/Scene.h"

namespace qx::scene {

/// How many frames of a size can be at work within so many bytes, at least one. Pictures count as large as a frame.
int frames_within(const Scene& scene, std::uint64_t bytes, int width, int height);

}  // namespace qx::scene
