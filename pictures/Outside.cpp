// SPDX-License-Identifier: Apache-2.0
#include "pictures/Outside.h"

#include <algorithm>

#include "pictures/Exr.h"
#include "pictures/Scale.h"

namespace qx::pictures {

void change_outside(Picture& picture, const std::function<void(QX_World&)>& work) {
    if (!picture.window || picture.window->outside.empty()) return;
    auto changed = std::make_shared<ExrWindow>(*picture.window);
    constexpr std::size_t most = 1 << 14;
    for (std::size_t at = 0; at < changed->outside.size(); at += most) {
        const std::size_t count = std::min(most, changed->outside.size() - at);
        QX_PixelFloat* const pixels = &changed->outside[at];
        std::transform(pixels, pixels + count, pixels, [](const QX_PixelFloat& p) { return straight(p); });
        const std::unique_ptr<QX_World> world(
            QX_World::NewReference(pixels, static_cast<int>(count), 1, 32, static_cast<int>(count * sizeof *pixels)));
        work(*world);
        std::transform(pixels, pixels + count, pixels,
                       [](const QX_PixelFloat& p) { return p.alpha == 0 ? p : associated(p); });
    }
    picture.window = std::move(changed);
}

}  // namespace qx::pictures
