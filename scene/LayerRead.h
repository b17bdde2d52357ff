// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "pictures/Failure.h"
#include "scene/SceneLayer.h"
#include "scene/SceneNode.h"
#include "scene/effects/EffectSource.h"

namespace qx::scene {

/// What the readers of a scene's parts know of it.
struct ReadContext {
    std::string folder;                          ///< that names of files count from
    EffectSource* others = nullptr;              ///< effects besides the scene's own; null: none
    int nested = 0;                              ///< groups that the part lies in
    std::vector<std::string>* faults = nullptr;  ///< of parts, each told here in place of being thrown; null: thrown

    /// Reads a part by itself.
    template <class Read> void part(const Read& read) const {
        if (faults == nullptr) return read();
        try {
            read();
        } catch (const pictures::Failure& fault) {
            faults->emplace_back(fault.what());
        }
    }
};

/// A list of layers. Throws SceneFault, or pictures::Failure for a file that cannot be read.
SceneLayers read_layers(const SceneNode& node, const ReadContext& context);

void read_comment(const SceneNode& node);

}  // namespace qx::scene
