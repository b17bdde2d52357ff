// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/Frames.h"
#include "scene/colour/Profiles.h"

namespace qx::scene {

/// A picture, or a sequence of pictures with a number in their names.
struct SceneFile {
    FramePattern name;
    int offset = 0;        ///< picture `frame + offset` of a sequence is shown
    std::string place;     ///< in the scene, such as /layers/2/file
    Profile profile{};     ///< of its values; null: what the files say
    bool is_data = false;  ///< a mask, whose values are no colours
    std::string at(int frame) const { return name.name(frame + offset); }
};

}  // namespace qx::scene
