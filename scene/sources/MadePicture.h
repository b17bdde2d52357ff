// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "scene/sources/Source.h"

namespace qx::scene {

/// What a source is told of its size; 0: that of what the layer is laid onto.
struct SourceSize {
    int width = 0, height = 0;
    /// As a picture of the moment has it.
    SourceSize at(const SourceMoment& moment) const {
        return width != 0 ? *this : SourceSize{moment.width, moment.height};
    }
};

/// A picture of a moment that is made, at the scene's depth; its pixels are to be written.
std::shared_ptr<pictures::Picture> new_made(const SourceMoment& moment, const SourceSize& size);

}  // namespace qx::scene
