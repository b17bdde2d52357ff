// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneRender.h"

#include <algorithm>

#include "QX/pixelops/QX_Premul.h"
#include "pictures/Carried.h"
#include "pictures/Losses.h"
#include "scene/Faults.h"
#include "scene/LayerWords.h"

namespace qx::scene {
namespace {

int unmultiply(QX_World& world, const QX_PixelFloat& matte) {
    QX_LayerDef record{};
    world.FillOutEffectWorld(&record);
    return QX_PremulColorFloat(nullptr, &record, &matte, false, &record);
}

}  // namespace

SceneRender::SceneRender(const Scene& scene, Notes notes, int first, pictures::Watch& watch)
    : scene_(scene), notes_(std::move(notes)) {
    if (scene.colours.has_space) settle_space(first, watch);
    for (const SceneLayer& layer : scene.layers) {
        if (layer.mode == xfer_dissolve && scene.depth == 32)
            note_once("", pictures::about(scene.file, kDissolveIsIdle));
        prepared_.push_back(std::make_unique<Prepared>());
        tables_.push_back(tables_of(layer.light, space_ ? &*space_ : nullptr));
    }
}

SceneRender::~SceneRender() {
    for (const SceneLayer& layer : scene_.layers) {
        for (const SceneEffect& effect : layer.effects) effect.effect->rest();
    }
}

void SceneRender::settle_space(int first, pictures::Watch& watch) {
    Profile profile = scene_.colours.space ? scene_.colours.space : scene_.background->profile;
    if (!profile) {
        std::vector<std::string> told_with_the_picture;
        profile = meaning_of(stored(*scene_.background, first, watch), told_with_the_picture).profile;
    }
    space_.emplace(profile, scene_.colours.linearize);
}

void SceneRender::bring_into_space(const SceneFile& file, const std::string& path, pictures::Picture& picture,
                                   pictures::Watch& watch) {
    if (file.is_data) return;
    if (!space_) return note_losses(file, path, unusable_profile(picture));
    std::vector<std::string> notes;
    space_->take(path, picture, file.profile, scene_.depth, notes, watch);
    for (const auto& note : notes) {
        if (note == kMeaningIsUsual) {
            note_once("", note);
        } else {
            note_losses(file, path, {note});
        }
    }
}

void SceneRender::note_once(const std::string& key, const std::string& note) {
    const std::lock_guard lock(mutex_);
    if (noted_.insert(key).second && notes_) notes_(note);
}

/// Of a sequence, each is told of the first picture that it holds for, and once however many layers show it.
void SceneRender::note_losses(const SceneFile& file, const std::string& path, const std::vector<std::string>& notes) {
    for (const auto& note : notes) note_once(file.at(0) + note, pictures::about(path, note));
}

SceneRender::Shown SceneRender::show(const SceneFile& file, int frame, const QX_PixelFloat* matte,
                                     pictures::Watch& watch) {
    if (file.moves()) return read(file, frame, matte, watch);
    Still& still = still_of(file, matte);
    const std::lock_guard lock(still.mutex);  // others wait for the picture, which they need as well
    if (!still.picture) still.picture = read(file, frame, matte, watch);
    return still.picture;
}

SceneRender::Still& SceneRender::still_of(const SceneFile& file, const QX_PixelFloat* matte) {
    const std::lock_guard lock(mutex_);
    const std::string kind = matte != nullptr || file.profile ? file.place : file.is_data ? "data" : "";
    return stills_[kind + '\n' + file.at(0)];
}

/// Those that no other frame has read or reads at the moment, so that the first frames read different ones. A fault is
/// left to where the picture is shown.
void SceneRender::read_stills(pictures::Watch& watch) {
    const auto visit = [&](const SceneFile& file, const QX_PixelFloat* matte) {
        if (file.moves()) return;
        Still& still = still_of(file, matte);
        const std::unique_lock lock(still.mutex, std::try_to_lock);
        if (lock && !still.picture) still.picture = read(file, 0, matte, watch);
    };
    try {
        if (scene_.background) visit(*scene_.background, nullptr);
        for (const SceneLayer& layer : scene_.layers) {
            visit(layer.file, layer.matte ? &*layer.matte : nullptr);
            if (layer.mask) visit(layer.mask->file, nullptr);
            for (const SceneEffect& effect : layer.effects) {
                for (const SceneFile* file : effect.effect->files()) visit(*file, nullptr);
            }
        }
    } catch (const pictures::Failure&) {
    }
}

SceneClip& SceneRender::clip_of(const SceneFile& file) {
    OpenClip& open = [&]() -> OpenClip& {
        const std::lock_guard lock(mutex_);
        return clips_[file.place];
    }();
    const std::lock_guard lock(open.mutex);
    if (!open.clip) {
        try {
            open.clip =
                std::make_unique<SceneClip>(*file.clip, Rational(scene_.rate.number, scene_.rate.per), scene_.depth);
        } catch (const BadText& bad) {
            throw SceneFault(scene_.file, file.place + "/cuts", bad.what());
        }
        note_losses(file, file.clip->path, open.clip->notes());
    }
    return *open.clip;
}

pictures::Picture SceneRender::stored(const SceneFile& file, int frame, pictures::Watch& watch) {
    return file.clip ? clip_of(file).frame(frame, watch) : pictures::read_picture(file.at(frame), watch);
}

SceneRender::Shown SceneRender::read(const SceneFile& file, int frame, const QX_PixelFloat* matte,
                                     pictures::Watch& watch) {
    const std::string path = file.at(frame);
    auto picture = std::make_shared<pictures::Picture>(stored(file, frame, watch));
    note_losses(file, path, picture->notes);
    note_losses(file, path, pictures::lost_at_depth(*picture, scene_.depth));
    if (matte != nullptr) must(unmultiply(*picture->world, *matte), pictures::about(scene_.file, file.place));
    bring_into_space(file, path, *picture, watch);
    pictures::bring_to_depth(path, *picture, scene_.depth);
    if (scene_.background && &file == &*scene_.background) return picture;
    note_losses(file, path, pictures::lost_beside(*picture));
    pictures::drop_beside(*picture);
    return picture;
}

void SceneRender::size(int number, pictures::Watch& watch, int* width, int* height) {
    *width = scene_.width;
    *height = scene_.height;
    if (scene_.width != 0) return;
    const Shown picture = show(*scene_.background, number, nullptr, watch);
    *width = picture->world->width;
    *height = picture->world->height;
}

int SceneRender::frames_within(std::uint64_t bytes, int width, int height) const {
    std::uint64_t stills = 0, read = 0;
    bool worked = false;
    const auto count = [&](const SceneFile& file) { ++(file.moves() ? read : stills); };
    if (scene_.background) count(*scene_.background);
    for (const SceneLayer& layer : scene_.layers) {
        count(layer.file);
        if (layer.mask) count(layer.mask->file);
        for (const SceneEffect& effect : layer.effects) {
            for (const SceneFile* file : effect.effect->files()) count(*file);
        }
        if (!layer.effects.empty()) ++(layer.effects_move() ? read : stills);
        worked = worked || !layer.effects.empty();
    }
    const std::uint64_t picture = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) *
                                  static_cast<unsigned>(scene_.depth / 2);
    // The result and what its file is made from; a picture as the file has it and at the scene's depth; an effect at
    // work has its layer three times, sums of means as four floats or doubles a pixel.
    const std::uint64_t frame = picture * (2 + 2 * read + (worked ? 3 + 8 : 0));
    const std::uint64_t left = bytes - std::min(bytes, picture * stills);
    return static_cast<int>(std::clamp<std::uint64_t>(left / frame, 1, kMostFrame));
}

pictures::Picture SceneRender::background(int number, pictures::Watch& watch) {
    const Shown picture = scene_.background ? show(*scene_.background, number, nullptr, watch) : nullptr;
    pictures::Picture frame;
    const int width = scene_.width != 0 ? scene_.width : picture->world->width;
    const int height = scene_.width != 0 ? scene_.height : picture->world->height;
    const bool as_large = picture && width == picture->world->width && height == picture->world->height;
    frame.world = pictures::new_world(scene_.file, width, height, scene_.depth, false);
    if (!as_large) frame.world->Fill(scene_.colour, nullptr);
    frame.has_alpha = scene_.colour.alpha < 1;
    if (!picture) return frame;
    frame.world->CopyRect(picture->world.get(), {0, 0, picture->world->width, picture->world->height}, 0, 0);
    frame.about() = picture->about();
    if (as_large) {
        frame.beside() = picture->beside();
    } else {
        note_losses(*scene_.background, scene_.background->at(number), pictures::lost_beside(*picture));
    }
    return frame;
}

std::shared_ptr<const Canvas> SceneRender::with_effects(std::size_t index, int number, const pictures::Picture& picture,
                                                        pictures::Watch& watch) {
    const SceneLayer& layer = scene_.layers[index];
    if (layer.effects.empty()) return nullptr;
    if (layer.effects_move()) return worked_on(layer, number, picture, watch);
    Prepared& prepared = *prepared_[index];
    const std::lock_guard lock(prepared.mutex);  // others wait for it, which they need as well
    if (!prepared.canvas) prepared.canvas = worked_on(layer, number, picture, watch);
    return prepared.canvas;
}

std::shared_ptr<const Canvas> SceneRender::worked_on(const SceneLayer& layer, int number,
                                                     const pictures::Picture& picture, pictures::Watch& watch) {
    auto canvas = std::make_shared<Canvas>();
    canvas->world = pictures::at_depth(layer.file.at(number), *picture.world, scene_.depth);
    for (const SceneEffect& effect : layer.effects) {
        const std::string subject = pictures::about(scene_.file, effect.place);
        const auto show_file = [&](const SceneFile& file) {
            const Shown shown = show(file, number, nullptr, watch);
            return std::shared_ptr<const QX_World>(shown, shown->world.get());
        };
        const auto note = [&](const std::string& words) {
            note_once(subject + words, pictures::about(subject, words));
        };
        effect.effect->apply(*canvas, {.frame = static_cast<double>(number),
                                       .subject = subject,
                                       .picture = show_file,
                                       .note = note,
                                       .watch = watch,
                                       .layer = static_cast<int>(&layer - scene_.layers.data()) + 1,
                                       .quality = layer.quality,
                                       .rate = scene_.rate});
    }
    return canvas;
}

void SceneRender::composite_layer(std::size_t index, int number, pictures::Picture& onto, pictures::Watch& watch) {
    const SceneLayer& layer = scene_.layers[index];
    const Shown picture = show(layer.file, number, layer.matte ? &*layer.matte : nullptr, watch);
    const Shown mask = layer.mask ? show(layer.mask->file, number, nullptr, watch) : nullptr;
    if (!space_ && scene_.background) note_losses(layer.file, layer.file.at(number), taken_otherwise(*picture, onto));
    pictures::add_precision(onto, *picture);
    Transfer transfer;
    const auto canvas = with_effects(index, number, *picture, watch);
    transfer.layer = canvas ? canvas->world.get() : picture->world.get();
    if (canvas) {
        transfer.x = canvas->x;
        transfer.y = canvas->y;
    }
    transfer.mode = layer.mode;
    transfer.opacity = static_cast<float>(layer.opacity.at(number)[0]);
    transfer.rgb_only = layer.rgb_only;
    transfer.seed = layer.seed;
    transfer.field = layer.field;
    transfer.tables = tables_[index].get();
    if (layer.mask) {
        transfer.mask = mask->world.get();
        transfer.mask_kind = layer.mask->kind;
        transfer.mask_x = layer.mask->x;
        transfer.mask_y = layer.mask->y;
    }
    transfer.matrices = layer.matrices(number, transfer.x, transfer.y);
    transfer.quality = layer.quality;
    must(composite(transfer, *onto.world, watch), pictures::about(scene_.file, layer.place));
}

pictures::Picture SceneRender::frame(int number, pictures::Watch& watch) {
    watch.must_go_on();
    read_stills(watch);
    pictures::Picture frame = background(number, watch);
    if (space_) assign(frame, space_->profile());
    for (std::size_t i = 0; i < scene_.layers.size(); ++i) composite_layer(i, number, frame, watch);
    if (space_ && scene_.colours.output) space_->give(scene_.file, frame, scene_.colours.output, watch);
    return frame;
}

}  // namespace qx::scene
