// SPDX-License-Identifier: Apache-2.0
// How far layers cover a picture: masks, and other layers as mattes.
#include <cmath>

#include "scene/LayerWords.h"
#include "scene/Stage.h"

namespace qx::scene {
namespace {

std::shared_ptr<const QX_World> world_of(const Shown& picture) { return {picture, picture->world.get()}; }

}  // namespace

std::unique_ptr<QX_World> Stage::clear_world(const SceneLayer& layer, const Scenery& scenery) const {
    const QX_World& onto = *scenery.onto.world;
    return pictures::new_world(pictures::about(scene_.file, layer.place), onto.width, onto.height, scene_.depth);
}

bool Stage::cover(const SceneLayer& layer, Scenery& scenery, Coverage& coverage) {
    if (layer.mask) {
        const Shown mask = pictures_.show(layer.mask->file, scenery.asked());
        if (!mask) return false;
        coverage = mask_of(layer, mask, scenery);
    }
    if (!layer.matte_layer) return true;
    const Coverage matte{matte_of(scenery.layers[layer.matte_layer->index], scenery), 0, 0, layer.matte_layer->kind};
    coverage = layer.mask ? together(layer, coverage, matte, scenery) : matte;
    return true;
}

Stage::Coverage Stage::mask_of(const SceneLayer& layer, const Shown& mask, Scenery& scenery) {
    const SceneMask& own = *layer.mask;
    const QX_MaskKind kind = own.kind.value_or(mask->has_alpha ? kQX_MaskAlpha : kQX_MaskLuma);
    if (!own.kind && !mask->has_alpha) notes_.losses(own.file, own.file.at(scenery.frame), {kMaskCountsByLuma});
    if (!own.transform) {
        const auto at = own.at.at(scenery.frame);
        return {world_of(mask), static_cast<int>(std::lround(at[0])), static_cast<int>(std::lround(at[1])), kind};
    }
    std::shared_ptr<QX_World> placed = clear_world(layer, scenery);
    const SceneTransform* const transform = &*own.transform;
    Transfer transfer;
    transfer.layer = mask->world.get();
    transfer.matrices = matrices_of({&transform, 1}, layer.shutter, scenery.frame);
    transfer.quality = layer.quality;
    lay(layer, transfer, *placed, scenery.watch);
    return {placed, 0, 0, kind};
}

/// On clear ground nothing is left of modes and light.
std::shared_ptr<const QX_World> Stage::matte_of(const SceneLayer& layer, Scenery& scenery) {
    const auto known = scenery.mattes.find(&layer);
    if (known != scenery.mattes.end()) return known->second;
    std::shared_ptr<QX_World> matte = clear_world(layer, scenery);
    Costume costume;
    if (scenery.shows(layer) && dress(layer, scenery, costume)) {
        Transfer transfer = transfer_of(layer, costume, scenery.frame);
        transfer.mode = xfer_over;
        transfer.rgb_only = false;
        transfer.tables = nullptr;
        lay(layer, transfer, *matte, scenery.watch);
    }
    return scenery.mattes[&layer] = matte;
}

/// The alpha of something opaque that is laid through one, then through the other.
Stage::Coverage Stage::together(const SceneLayer& layer, const Coverage& a, const Coverage& b, Scenery& scenery) {
    std::shared_ptr<QX_World> covered = clear_world(layer, scenery);
    covered->Fill(QX_PixelFloat{1, 0, 0, 0}, nullptr);
    for (const Coverage* one : {&a, &b}) {
        std::shared_ptr<QX_World> through = clear_world(layer, scenery);
        Transfer transfer;
        transfer.layer = covered.get();
        transfer.mask = one->world.get();
        transfer.mask_x = one->x;
        transfer.mask_y = one->y;
        transfer.mask_kind = one->kind;
        lay(layer, transfer, *through, scenery.watch);
        covered = through;
    }
    return {covered, 0, 0, kQX_MaskAlpha};
}

}  // namespace qx::scene
