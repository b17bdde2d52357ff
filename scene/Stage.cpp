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
    each_layer(layers, [&](const SceneLayer& layer) {
        if (layer.mode == xfer_dissolve && scene_.depth == 32)
            notes_.once("", pictures::about(scene_.file, kDissolveIsIdle));
        wings_[&layer].tables = tables_of(layer.light, pictures_.space());
        return true;
    });
}

void Stage::composite(const SceneLayers& layers, int frame, pictures::Picture& onto, pictures::Watch& watch) {
    Scenery scenery{layers, frame, onto, watch, {}, {}};
    for (const SceneLayer& layer : layers) {
        if (layer.visible && scenery.shows(layer)) composite(layer, scenery);
    }
}

Piece Stage::piece_of(const SceneLayer& layer, Scenery& scenery) {
    const auto known = scenery.pieces.find(&layer);
    if (known != scenery.pieces.end()) return known->second;
    const auto made = [&] { return std::make_shared<Piece>(new_piece(layer, scenery)); };
    const QX_World& onto = *scenery.onto.world;
    const bool is_kept = layer.source->file() == nullptr && !layer.source->moves();  // files keep their own
    const Piece piece =
        is_kept ? *wings_.at(&layer).piece.get(onto.width, onto.height, made) : new_piece(layer, scenery);
    if (layer.is_matte) scenery.pieces[&layer] = piece;
    return piece;
}

Piece Stage::new_piece(const SceneLayer& layer, Scenery& scenery) {
    const std::string subject = pictures::about(scene_.file, layer.place);
    const auto file = [&](const SceneFile& name, const QX_PixelFloat* matte) {
        return pictures_.show(name, scenery.asked(), matte);
    };
    const auto composite_group = [&](const SceneLayers& layers, pictures::Picture& onto) {
        onto.colours = scenery.onto.colours;
        onto.linear = scenery.onto.linear;
        composite(layers, scenery.frame, onto, scenery.watch);
    };
    const auto note = [&](const std::string& words) { notes_.once(subject + words, pictures::about(subject, words)); };
    return layer.source->picture({.frame = scenery.frame,
                                  .width = scenery.onto.world->width,
                                  .height = scenery.onto.world->height,
                                  .depth = scene_.depth,
                                  .subject = subject,
                                  .file = file,
                                  .composite = composite_group,
                                  .note = note,
                                  .watch = scenery.watch});
}

std::shared_ptr<const Canvas> Stage::with_effects(const SceneLayer& layer, const Piece& piece, Scenery& scenery) {
    if (layer.effects.empty()) return nullptr;
    const auto make = [&] { return worked_on(layer, piece, scenery); };
    if (layer.effects_move()) return make();
    return wings_.at(&layer).canvas.get(scenery.onto.world->width, scenery.onto.world->height, make);
}

std::shared_ptr<const Canvas> Stage::worked_on(const SceneLayer& layer, const Piece& piece, Scenery& scenery) {
    auto canvas = std::make_shared<Canvas>();
    const SceneFile* const own = layer.source->file();
    const std::string whose = own != nullptr ? own->at(scenery.frame) : pictures::about(scene_.file, layer.place);
    canvas->world = pictures::at_depth(whose, *piece.picture->world, scene_.depth);
    canvas->x = piece.x;
    canvas->y = piece.y;
    for (const SceneEffect& effect : layer.effects) {
        const std::string subject = pictures::about(scene_.file, effect.place);
        const auto show_file = [&](const SceneFile& file) { return pictures_.show(file, scenery.asked()); };
        const auto note = [&](const std::string& words) {
            notes_.once(subject + words, pictures::about(subject, words));
        };
        effect.effect->apply(*canvas, {.frame = static_cast<double>(scenery.frame),
                                       .subject = subject,
                                       .picture = show_file,
                                       .note = note,
                                       .watch = scenery.watch,
                                       .layer = scenery.number_of(layer),
                                       .quality = layer.quality,
                                       .rate = scene_.rate});
    }
    return canvas;
}

bool Stage::dress(const SceneLayer& layer, Scenery& scenery, Costume& costume) {
    costume.piece = piece_of(layer, scenery);
    if (!costume.piece.picture || !cover(layer, scenery, costume.coverage)) return false;
    costume.canvas = with_effects(layer, costume.piece, scenery);
    return true;
}

Transfer Stage::transfer_of(const SceneLayer& layer, const Costume& costume, int frame) const {
    const auto& [piece, canvas, coverage] = costume;
    Transfer transfer;
    transfer.layer = canvas ? canvas->world.get() : piece.picture->world.get();
    transfer.x = layer.x + (canvas ? canvas->x : piece.x);
    transfer.y = layer.y + (canvas ? canvas->y : piece.y);
    transfer.mode = layer.mode;
    transfer.opacity = static_cast<float>(layer.opacity.at(frame)[0]);
    transfer.rgb_only = layer.rgb_only;
    transfer.seed = layer.seed;
    transfer.field = layer.field;
    transfer.tables = wings_.at(&layer).tables.get();
    transfer.mask = coverage.world.get();
    transfer.mask_kind = coverage.kind;
    transfer.mask_x = coverage.x;
    transfer.mask_y = coverage.y;
    transfer.matrices = layer.matrices(frame, transfer.x, transfer.y);
    transfer.quality = layer.quality;
    return transfer;
}

void Stage::composite(const SceneLayer& layer, Scenery& scenery) {
    Costume costume;
    if (!dress(layer, scenery, costume)) return;
    const pictures::Picture& picture = *costume.piece.picture;
    const SceneFile* const file = layer.source->file();
    if (file != nullptr && pictures_.space() == nullptr && scene_.background) {
        notes_.losses(*file, file->at(scenery.frame), taken_otherwise(picture, scenery.onto));
    }
    pictures::add_precision(scenery.onto, picture);
    lay(layer, transfer_of(layer, costume, scenery.frame), *scenery.onto.world, scenery.watch);
}

void Stage::lay(const SceneLayer& layer, const Transfer& transfer, QX_World& onto, pictures::Watch& watch) const {
    must(scene::composite(transfer, onto, watch), pictures::about(scene_.file, layer.place));
}

}  // namespace qx::scene
