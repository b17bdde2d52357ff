// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/Scene.h"
#include "tools/qx/options/ColourOptions.h"

// What options ask of a scene.
namespace qx::tool {

/// Puts what the options ask for in the place of what the scene says. Throws WrongUsage or scene::SceneFault.
/// @param depth  the text of --depth; empty: the scene's own
void settle(scene::Scene& scene, const std::string& depth, const ColourOptions& colours);

/// Those of --frames, in whose place those of the scene are where the text is empty; nothing where neither tells any.
/// Throws WrongUsage.
std::optional<scene::FrameList> frames_asked(const std::string& frames, const scene::Scene& scene);

}  // namespace qx::tool
