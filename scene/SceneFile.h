// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "scene/Frames.h"
#include "scene/colour/Profiles.h"

namespace qx::scene {

struct ClipChoice;

/// What becomes of a picture that is not there.
enum class Missing { error, hold, black, skip };
inline constexpr const char* kMissingWords[] = {"error", "hold", "black", "skip"};

/// A picture, a sequence of pictures with a number in their names, or a clip.
struct SceneFile {
    FramePattern name;
    int offset = 0;        ///< picture `frame + offset` of a sequence is shown
    std::string place;     ///< in the scene, such as /layers/2/file
    Profile profile{};     ///< of its values; null: what the files say
    bool is_data = false;  ///< a mask, whose values are no colours
    Missing missing = Missing::error;
    std::shared_ptr<const ClipChoice> clip{};                ///< null for what is none; its offset is its own
    bool moves() const { return clip || name.has_place(); }  ///< shows other pictures in other frames
    std::string at(int frame) const { return name.name(frame + offset); }
};

}  // namespace qx::scene
