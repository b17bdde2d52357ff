// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "scene/SceneLayer.h"
#include "scene/SceneNode.h"

namespace qx::scene {

/// Reads what layers of a list say of others by their names: parents and mattes. Throws SceneFault for names that no
/// layer has, or several, and for layers that lead back to themselves.
/// @param nodes  of the layers
void link_layers(const std::vector<SceneNode>& nodes, SceneLayers& layers);

}  // namespace qx::scene
