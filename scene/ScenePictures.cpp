// SPDX-License-Identifier: Apache-2.0
#include "scene/ScenePictures.h"

#include <algorithm>

#include "QX/pixelops/QX_Premul.h"
#include "pictures/Carried.h"
#include "pictures/Losses.h"
#include "scene/Faults.h"
#include "scene/NumberedFiles.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

int unmultiply(QX_World& world, const QX_PixelFloat& matte) {
    QX_LayerDef record{};
    world.FillOutEffectWorld(&record);
    return QX_PremulColorFloat(nullptr, &record, &matte, false, &record);
}

/// Of what the scene does without.
bool is_missing(const SceneFile& file, int frame) {
    return file.missing != Missing::error && !file.clip && !pictures::is_there(file.at(frame));
}

}  // namespace

ScenePictures::ScenePictures(const Scene& scene, SceneNotes& notes, int first, pictures::Watch& watch)
    : scene_(scene), notes_(notes) {
    if (scene.colours.has_space) settle_space(first, watch);
}

void ScenePictures::settle_space(int first, pictures::Watch& watch) {
    Profile profile = scene_.colours.space ? scene_.colours.space : scene_.background->profile;
    if (!profile) {
        std::vector<std::string> told_with_the_picture;
        profile = meaning_of(stored(*scene_.background, first, watch), told_with_the_picture).profile;
    }
    space_.emplace(profile, scene_.colours.linearize);
}

void ScenePictures::bring_into_space(const SceneFile& file, const std::string& path, pictures::Picture& picture,
                                     pictures::Watch& watch) {
    if (file.is_data) return;
    if (!space_) return notes_.losses(file, path, unusable_profile(picture));
    std::vector<std::string> notes;
    space_->take(path, picture, file.profile, scene_.depth, notes, watch);
    for (const auto& note : notes) {
        if (note == kMeaningIsUsual) {
            notes_.once("", note);
        } else {
            notes_.losses(file, path, {note});
        }
    }
}

Shown ScenePictures::show(const SceneFile& file, const FrameAsked& asked, const QX_PixelFloat* matte) {
    if (is_missing(file, asked.frame)) return stand_in(file, asked, matte);
    if (file.moves()) return read(file, asked.frame, matte, asked.watch);
    Still& still = still_of(file, matte);
    const std::lock_guard lock(still.mutex);  // others wait for the picture, which they need as well
    if (!still.picture) still.picture = read(file, asked.frame, matte, asked.watch);
    return still.picture;
}

std::optional<int> ScenePictures::nearest(const SceneFile& file, int frame) {
    const std::lock_guard lock(mutex_);
    const auto [found, is_new] = there_.try_emplace(file.place);
    if (is_new && file.name.has_place()) found->second = numbers_there(file.name);
    const std::vector<int>& numbers = found->second;
    if (numbers.empty()) return std::nullopt;
    const auto behind = std::upper_bound(numbers.begin(), numbers.end(), frame + file.offset);
    return behind == numbers.begin() ? *behind : *std::prev(behind);
}

Shown ScenePictures::stand_in(const SceneFile& file, const FrameAsked& asked, const QX_PixelFloat* matte) {
    const std::string path = file.at(asked.frame);
    const auto note = [&](const std::string& words) {
        notes_.once(path + words, pictures::about(path, "is missing, " + words));
    };
    if (file.missing == Missing::skip) {
        note("its layer is left out");
        return nullptr;
    }
    const std::optional<int> number = nearest(file, asked.frame);
    if (file.missing == Missing::hold) {
        if (!number) throw pictures::Failure(path, "is missing, and no other picture of it is there");
        note(file.name.name(*number) + " is shown");
        return read(file, *number - file.offset, matte, asked.watch);
    }
    note("black is shown");
    pictures::PictureSize size{asked.width, asked.height};
    if (number) size = pictures::picture_size(file.name.name(*number), asked.watch, {.orient = scene_.orient});
    auto black = std::make_shared<pictures::Picture>();
    black->world = pictures::new_world(path, size.width, size.height, scene_.depth, false);
    black->world->Fill(QX_PixelFloat{1, 0, 0, 0}, nullptr);
    return black;
}

ScenePictures::Still& ScenePictures::still_of(const SceneFile& file, const QX_PixelFloat* matte) {
    const std::lock_guard lock(mutex_);
    const std::string kind = matte != nullptr || file.profile ? file.place : file.is_data ? "data" : "";
    return stills_[kind + '\n' + file.at(0)];
}

void ScenePictures::read_stills(pictures::Watch& watch) {
    try {
        each_file(scene_, [&](const SceneFile& file, const QX_PixelFloat* matte) {
            if (file.moves() || is_missing(file, 0)) return;
            Still& still = still_of(file, matte);
            const std::unique_lock lock(still.mutex, std::try_to_lock);
            if (lock && !still.picture) still.picture = read(file, 0, matte, watch);
        });
    } catch (const pictures::Failure&) {
    }
}

SceneClip& ScenePictures::clip_of(const SceneFile& file) {
    OpenClip& open = [&]() -> OpenClip& {
        const std::lock_guard lock(mutex_);
        return clips_[file.place];
    }();
    const std::lock_guard lock(open.mutex);
    if (!open.clip) {
        try {
            open.clip = std::make_unique<SceneClip>(*file.clip, Rational(scene_.rate.number, scene_.rate.per),
                                                    scene_.depth, scene_.orient);
        } catch (const BadText& bad) {
            throw SceneFault(scene_.file, file.place + "/cuts", bad.what());
        }
        notes_.losses(file, file.clip->path, open.clip->notes());
    }
    return *open.clip;
}

pictures::Picture ScenePictures::stored(const SceneFile& file, int frame, pictures::Watch& watch) {
    if (file.clip) return clip_of(file).frame(frame, watch);
    return pictures::read_picture(file.at(frame), watch, {.orient = scene_.orient});
}

Shown ScenePictures::read(const SceneFile& file, int frame, const QX_PixelFloat* matte, pictures::Watch& watch) {
    const std::string path = file.at(frame);
    auto picture = std::make_shared<pictures::Picture>(stored(file, frame, watch));
    notes_.losses(file, path, picture->notes);
    notes_.losses(file, path, pictures::lost_at_depth(*picture, scene_.depth));
    if (matte != nullptr) must(unmultiply(*picture->world, *matte), pictures::about(scene_.file, file.place));
    bring_into_space(file, path, *picture, watch);
    pictures::bring_to_depth(path, *picture, scene_.depth);
    if (scene_.background && &file == &*scene_.background) return picture;
    notes_.losses(file, path, pictures::lost_beside(*picture));
    pictures::drop_beside(*picture);
    return picture;
}

}  // namespace qx::scene
