// SPDX-License-Identifier: Apache-2.0
#include "scene/Scene.h"

#include "scene/Faults.h"
#include "scene/LayerWords.h"

namespace qx::scene {

void check_colours(const Scene& scene) {
    const ColourChoices& colours = scene.colours;
    if (colours.has_space) {
        if (colours.space || scene.background) return;
        throw SceneFault(scene.file, "/space", "is that of the background, which is no picture");
    }
    if (colours.linearize) throw SceneFault(scene.file, "/linearize", kNeedsSpace);
    if (colours.output) throw SceneFault(scene.file, "/output-space", kNeedsSpace);
    each_layer(scene.layers, [&](const SceneLayer& layer) {
        if (layer.light.by_profile) throw SceneFault(scene.file, layer.place + "/linear", kNeedsSpace);
        return true;
    });
    each_file(scene, [&](const SceneFile& file, const QX_PixelFloat*) {
        if (file.profile) throw SceneFault(scene.file, file.place + "/profile", kNeedsSpace);
    });
}

}  // namespace qx::scene
