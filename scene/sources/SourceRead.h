// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <span>

#include "scene/LayerRead.h"
#include "scene/sources/Source.h"

namespace qx::scene {

/// The keys of a layer that tell what it shows.
std::span<const char* const> source_keys(const SceneNode& layer);
/// What becomes of pictures of a layer and its mask that are not there.
Missing read_missing(const SceneNode& layer);
/// What a layer shows. Throws SceneFault.
std::shared_ptr<const Source> read_source(const SceneNode& layer, const ReadContext& context);

}  // namespace qx::scene
