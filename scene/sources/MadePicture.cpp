// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/MadePicture.h"

namespace qx::scene {

std::shared_ptr<pictures::Picture> new_made(const SourceMoment& moment, const SourceSize& size) {
    auto picture = std::make_shared<pictures::Picture>();
    const SourceSize own = size.at(moment);
    picture->world = pictures::new_world(moment.subject, own.width, own.height, moment.depth, false);
    picture->has_alpha = true;
    return picture;
}

}  // namespace qx::scene
