// SPDX-License-Identifier: Apache-2.0
#include "scene/Stage.h"

#include "pictures/Losses.h"
#include "scene/Faults.h"
#include "scene/LayerWords.h"

namespace qx::scene {

Stage::Stage(const Scene& scene, ScenePictures& pictures, SceneNotes& notes)
    : scene_(scene), pictures_(pictures), notes_(notes) {
    add(scene.layers);
}

Stage::~Stage() {
    for (const auto& [layer, wings] : wings_) {
        for (const SceneEffect& effect : layer->effects) effect.effect->rest();
    }
}

void Stage::add(const SceneLayers& layers) {
    for (const SceneLayer& layer : layers) {
        if (layer.mode == xfer_dissolve && scene_.depth == 32)
            notes_.once("", pictures::about(scene_.file, kDissolveIsIdle));
        wings_[&layer].tables = tables_of(layer.light, pictures_.space());
    }
}

void Stage::composite(const SceneLayers& layers, int frame, pictures::Picture& onto, pictures::Watch& watch) {
    for (std::size_t i = 0; i < layers.size(); ++i) {
        composite(layers[i], static_cast<int>(i) + 1, {frame, onto, watch});
    }
}

Piece Stage::piece_of(const SceneLayer& layer, const Scenery& scenery) {
    const auto file = [&](const SceneFile& name, const QX_PixelFloat* matte) {
        return pictures_.show(name, scenery.asked(), matte);
    };
    return layer.source->picture({.frame = scenery.frame, .file = file, .watch = scenery.watch});
}

std::shared_ptr<const Canvas> Stage::with_effects(const SceneLayer& layer, int number, const Piece& piece,
                                                  const Scenery& scenery) {
    if (layer.effects.empty()) return nullptr;
    const auto make = [&] { return worked_on(layer, number, piece, scenery); };
    if (layer.effects_move()) return make();
    return wings_.at(&layer).canvas.get(scenery.onto.world->width, scenery.onto.world->height, make);
}

std::shared_ptr<const Canvas> Stage::worked_on(const SceneLayer& layer, int number, const Piece& piece,
                                               const Scenery& scenery) {
    auto canvas = std::make_shared<Canvas>();
    const SceneFile* const own = layer.source->file();
    canvas->world =
        pictures::at_depth(own != nullptr ? own->at(scenery.frame) : pictures::about(scene_.file, layer.place),
                           *piece.picture->world, scene_.depth);
    canvas->x = piece.x;
    canvas->y = piece.y;
    for (const SceneEffect& effect : layer.effects) {
        const std::string subject = pictures::about(scene_.file, effect.place);
        const auto show_file = [&](const SceneFile& file) {
            const Shown shown = pictures_.show(file, scenery.asked());
            return std::shared_ptr<const QX_World>(shown, shown->world.get());
        };
        const auto note = [&](const std::string& words) {
            notes_.once(subject + words, pictures::about(subject, words));
        };
        effect.effect->apply(*canvas, {.frame = static_cast<double>(scenery.frame),
                                       .subject = subject,
                                       .picture = show_file,
                                       .note = note,
                                       .watch = scenery.watch,
                                       .layer = number,
                                       .quality = layer.quality,
                                       .rate = scene_.rate});
    }
    return canvas;
}

void Stage::composite(const SceneLayer& layer, int number, const Scenery& scenery) {
    if (!layer.visible || !layer.lasts(scenery.frame)) return;
    const Piece piece = piece_of(layer, scenery);
    const Shown mask = layer.mask ? pictures_.show(layer.mask->file, scenery.asked()) : nullptr;
    if (!piece.picture || (layer.mask && !mask)) return;
    const SceneFile* const file = layer.source->file();
    if (file != nullptr && pictures_.space() == nullptr && scene_.background) {
        notes_.losses(*file, file->at(scenery.frame), taken_otherwise(*piece.picture, scenery.onto));
    }
    pictures::add_precision(scenery.onto, *piece.picture);
    Transfer transfer;
    const auto canvas = with_effects(layer, number, piece, scenery);
    transfer.layer = canvas ? canvas->world.get() : piece.picture->world.get();
    transfer.x = canvas ? canvas->x : piece.x;
    transfer.y = canvas ? canvas->y : piece.y;
    transfer.mode = layer.mode;
    transfer.opacity = static_cast<float>(layer.opacity.at(scenery.frame)[0]);
    transfer.rgb_only = layer.rgb_only;
    transfer.seed = layer.seed;
    transfer.field = layer.field;
    transfer.tables = wings_.at(&layer).tables.get();
    if (layer.mask) {
        transfer.mask = mask->world.get();
        transfer.mask_kind = layer.mask->kind;
        transfer.mask_x = layer.mask->x;
        transfer.mask_y = layer.mask->y;
    }
    transfer.matrices = layer.matrices(scenery.frame, transfer.x, transfer.y);
    transfer.quality = layer.quality;
    must(scene::composite(transfer, *scenery.onto.world, scenery.watch), pictures::about(scene_.file, layer.place));
}

}  // namespace qx::scene
