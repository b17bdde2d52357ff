// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/Flatten.h"

#include "scene/Composite.h"
#include "scene/Faults.h"

namespace qx::tool {
namespace {

std::unique_ptr<QX_World> over(const std::string& path, const QX_World& world, const QX_PixelFloat& ground,
                               pictures::Watch& watch) {
    auto result = pictures::new_world(path, world.width, world.height, world.Depth());
    result->Fill(ground, nullptr);
    scene::Transfer transfer;
    transfer.layer = &world;
    scene::must(scene::composite(transfer, *result, watch), path);
    return result;
}

}  // namespace

std::shared_ptr<const pictures::Picture> opaque_frame(const std::string& path, const QX_World& frame, int depth,
                                                      const std::optional<QX_PixelFloat>& ground,
                                                      pictures::Watch& watch) {
    auto shown = std::make_shared<pictures::Picture>();
    shown->world = pictures::at_depth(path, frame, depth);
    if (pictures::any_transparency(*shown->world))
        shown->world = over(path, *shown->world, ground.value_or(QX_PixelFloat{1, 0, 0, 0}), watch);
    return shown;
}

std::optional<pictures::Picture> flattened(const std::string& path, const pictures::Picture& picture,
                                           const EncodingOptions& encoding, pictures::Watch& watch) {
    const std::optional<QX_PixelFloat> ground = encoding.ground();
    if (!ground || !pictures::any_transparency(*picture.world)) return std::nullopt;
    pictures::Picture flat;
    flat.about() = picture.about();
    flat.has_alpha = false;
    flat.world = over(path, *picture.world, *ground, watch);
    return flat;
}

}  // namespace qx::tool
