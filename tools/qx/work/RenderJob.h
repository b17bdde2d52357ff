// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "scene/Frames.h"
#include "scene/Scene.h"
#include "tools/qx/options/CacheOptions.h"
#include "tools/qx/options/ColourOptions.h"
#include "tools/qx/options/LongWorkOptions.h"
#include "tools/qx/options/Options.h"

// The frames of a scene, made and written.
namespace qx::tool {

struct RenderOptions {
    CommonOptions common;
    EncodingOptions encoding;
    ColourOptions colours;
    CacheOptions cache;
    std::string scene, output, frames, depth, memory;
    LongWorkOptions work;
    bool check = false;
    std::vector<std::string> effect_folders;
};

/// Both throw WrongUsage, and what SceneRender throws.
void render_pictures(const scene::Scene& scene, const scene::FrameList& frames, const RenderOptions& options);
void render_movie(const scene::Scene& scene, const scene::FrameList& frames, const RenderOptions& options);

}  // namespace qx::tool
