// SPDX-License-Identifier: Apache-2.0
#include "pictures/Dither.h"

#include <mutex>

#include "QX/indep/QX_Area.h"
#include "QX/pixelops/QX_Noise.h"
#include "pictures/Failure.h"

namespace qx::pictures {

void dither_to_8(const std::string& path, Picture& picture) {
    static std::mutex noise;
    if (picture.world->Depth() == 8) return;
    auto eight = new_world(path, picture.world->width, picture.world->height, 8, false);
    const std::lock_guard lock(noise);
    QX_ResetDitherRandomIndex();
    try {
        eight->CopyRectPossiblyDifferentBitdepth(picture.world.get(), whole_of(*picture.world), true, 0, 0, nullptr);
    } catch (int code) {
        throw Failure(path, "could not be dithered (code " + std::to_string(code) + ")");
    }
    picture.world = std::move(eight);
    picture.carried.reset();
}

}  // namespace qx::pictures
