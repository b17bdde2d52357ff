// SPDX-License-Identifier: Apache-2.0
#include "scene/FrameMemory.h"

#include <algorithm>

namespace qx::scene {
namespace {

/// Pictures of a scene.
struct PictureCount {
    std::uint64_t stills = 0, each_frame = 0;  ///< kept for all frames, made for each of them
    bool worked = false;                       ///< effects work on some

    void add(bool moves) { ++(moves ? each_frame : stills); }
    void add(const SceneLayer& layer) {
        if (layer.source->file() == nullptr) add(layer.source->moves());  // it is made
        if (layer.matte_layer || (layer.mask && layer.mask->transform)) add(true);
        if (layer.effects.empty()) return;
        add(layer.effects_move());
        worked = true;
    }
};

}  // namespace

int frames_within(const Scene& scene, std::uint64_t bytes, int width, int height) {
    PictureCount count;
    each_file(scene, [&](const SceneFile& file, const QX_PixelFloat*) { count.add(file.moves()); });
    each_layer(scene.layers, [&](const SceneLayer& layer) {
        count.add(layer);
        return true;
    });
    const std::uint64_t picture =
        static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * static_cast<unsigned>(scene.depth / 2);
    // The result and what its file is made from; a picture as the file has it and at the scene's depth; an effect at
    // work has its layer three times, sums of means as four floats or doubles a pixel.
    const std::uint64_t frame = picture * (2 + 2 * count.each_frame + (count.worked ? 3 + 8 : 0));
    const std::uint64_t left = bytes - std::min(bytes, picture * count.stills);
    return static_cast<int>(std::clamp<std::uint64_t>(left / frame, 1, kMostFrame));
}

}  // namespace qx::scene
