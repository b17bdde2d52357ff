// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "scene/Frames.h"
#include "scene/Rational.h"
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
    /// What a movie that is written has of the one that leads it.
    struct Lead {
        std::string audio;         ///< the file whose audio goes into it; empty for none
        scene::Rational start{0};  ///< seconds of that, at which the first frame comes
        scene::Rational aspect{1};
        std::string time_code;
    } lead;
    LongWorkOptions work;
    bool check = false;
    std::vector<std::string> effect_folders;
};

/// Makes pictures or a movie, as `output` says; of the options it takes what is no choice of the scene. Throws
/// WrongUsage, and what SceneRender throws.
void render_scene(scene::Scene scene, const scene::FrameList& frames, const RenderOptions& options);

}  // namespace qx::tool
