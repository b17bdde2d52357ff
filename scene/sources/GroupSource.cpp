// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/GroupSource.h"

#include <algorithm>

namespace qx::scene {

bool GroupSource::moves() const {
    return std::any_of(layers_.begin(), layers_.end(), [](const SceneLayer& layer) { return layer.moves(); });
}

Piece GroupSource::picture(const SourceMoment& moment) const {
    auto picture = new_made(moment, size_);
    picture->world->Fill(QX_PixelFloat{0, 0, 0, 0}, nullptr);
    moment.composite(layers_, *picture);
    return {picture};
}

}  // namespace qx::scene
