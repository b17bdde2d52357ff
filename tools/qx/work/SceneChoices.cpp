// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/SceneChoices.h"

#include "tools/qx/options/Options.h"

namespace qx::tool {

void settle(scene::Scene& scene, const std::string& depth, const ColourOptions& colours) {
    const int bits = depth_of(depth);
    if (bits != 0) scene.depth = bits;
    colours.apply(scene.colours);
    if (const char* option = colours.without_space(); option != nullptr && !scene.colours.has_space) {
        throw WrongUsage(option + std::string(kNeedsSpaceOption));
    }
    scene::check_colours(scene);
}

std::optional<scene::FrameList> frames_asked(const std::string& frames, const scene::Scene& scene) {
    if (frames.empty()) return scene.frames;
    return value_of("--frames", [&] { return scene::frame_list(frames); });
}

}  // namespace qx::tool
