// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/Scene.h"
#include "scene/SceneNode.h"

namespace qx::scene {

/// {"effect": NAME, KEY: VALUE, ...}
/// @param folder  that names of files count from
SceneEffect read_effect(const SceneNode& node, const std::string& folder);

}  // namespace qx::scene
