// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/Scene.h"
#include "scene/SceneNode.h"
#include "scene/effects/EffectSource.h"

namespace qx::scene {

/// {"effect": NAME, KEY: VALUE, ...}
/// @param folder  that names of files count from
/// @param others  has the effects that are named by "plugin" in place of "effect", with "parameters"; may be null
SceneEffect read_effect(const SceneNode& node, const std::string& folder, EffectSource* others = nullptr);

}  // namespace qx::scene
