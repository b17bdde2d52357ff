// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/SolidSource.h"

namespace qx::scene {

Piece SolidSource::picture(const SourceMoment& moment) const {
    auto picture = new_made(moment, size_);
    const auto c = colour_.at(moment.frame);
    const auto channel = [&](std::size_t i) { return static_cast<float>(c[i]); };
    picture->world->Fill(QX_PixelFloat{channel(0), channel(1), channel(2), channel(3)}, nullptr);
    return {picture};
}

}  // namespace qx::scene
