// SPDX-License-Identifier: Apache-2.0
#include "pictures/Light.h"

namespace qx::pictures {
void mark_light(Picture& picture) {
    const QX_World& world = *picture.world;
    const auto width = static_cast<std::size_t>(world.width);
    any_pixel(world, [&](const auto& p, int x, int y) {
        if (p.alpha != 0 || (p.red == 0 && p.green == 0 && p.blue == 0)) return false;
        if (picture.light.empty()) picture.light.resize(width * static_cast<std::size_t>(world.height));
        picture.light[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)] = true;
        return false;
    });
}

bool covers_light(const Picture& picture) {
    return any_pixel(*picture.world,
                     [&](const auto& p, int x, int y) { return p.alpha != 0 && is_light(picture, x, y); });
}

}  // namespace qx::pictures
