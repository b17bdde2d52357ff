// SPDX-License-Identifier: Apache-2.0
// The files that the frames of a scene need.
#include <algorithm>
#include <filesystem>
#include <set>

#include "scene/Faults.h"
#include "scene/Scene.h"
#include "scene/retime/SceneClip.h"

namespace qx::scene {
namespace {

/// Hands each file that the frames show to `see`, with the first frame that shows it.
template <class See> void each_file_of(const Scene& scene, const FrameList& frames, const See& see) {
    each_file(scene, [&](const SceneFile& file, const QX_PixelFloat*) {
        if (!file.moves()) see(file, frames.frame(0));
    });
    for (int i = 0; i < frames.count(); ++i) {
        const auto visit = [&](const SceneFile& file, const QX_PixelFloat*) {
            if (file.moves()) see(file, frames.frame(i));
        };
        if (scene.background) visit(*scene.background, nullptr);
        each_layer(scene.layers, [&](const SceneLayer& layer) {
            if (layer.lasts(frames.frame(i))) each_file(layer, visit);
            return layer.lasts(frames.frame(i));
        });
    }
}

void must_be_there(const Scene& scene, const SceneFile& file, const std::string& path, int frame) {
    if (pictures::is_there(path)) return;
    throw SceneFault(scene.file, file.place, path + ": no such file, frame " + std::to_string(frame) + " needs it");
}

/// Throws pictures::Failure for a file that is not there, or is none of those that can be read.
void look_at(const Scene& scene, const SceneFile& file, const std::string& path, int frame, pictures::Watch& watch) {
    if (file.missing != Missing::error && !pictures::is_there(path)) return;
    must_be_there(scene, file, path, frame);
    try {
        if (file.clip && !file.clip->is_pictures()) {
            const pictures::InputFile movie(path);
        } else {
            pictures::picture_size(path, watch, {.orient = scene.orient});
        }
    } catch (const pictures::Failure& fault) {
        throw SceneFault(scene.file, file.place, fault.what());
    }
}

std::string absolute(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(pictures::file_of(path), ignored).string();
}

}  // namespace

void check_files(const Scene& scene, const FrameList& frames) {
    each_file_of(scene, frames, [&](const SceneFile& file, int frame) {
        if (file.clip || file.missing != Missing::error) return;  // looked at when the scene was read
        must_be_there(scene, file, file.at(frame), frame);
    });
}

std::vector<std::string> faults_of_files(const Scene& scene, const FrameList& frames, pictures::Watch& watch) {
    std::set<std::string> seen;
    std::vector<std::string> faults;
    each_file_of(scene, frames, [&](const SceneFile& file, int frame) {
        for (const std::string& path : file.clip ? file.clip->files() : std::vector<std::string>{file.at(frame)}) {
            watch.must_go_on();
            if (!seen.insert(path).second) continue;
            try {
                look_at(scene, file, path, frame, watch);
            } catch (const pictures::Failure& fault) {
                faults.emplace_back(fault.what());
            }
        }
    });
    return faults;
}

InputChanges::InputChanges(const Scene& scene) : scene_(scene) {
    each_file(scene, [&](const SceneFile& file, const QX_PixelFloat*) {
        if (file.moves() && !file.clip) return;
        for (const auto& path : file.clip ? file.clip->files() : std::vector<std::string>{file.at(0)})
            shown_always_ = std::max(shown_always_, pictures::changed_at(path));
    });
}

std::int64_t InputChanges::latest(int frame) const {
    std::int64_t latest = shown_always_;
    each_file_of(scene_, FrameRange{frame, frame, 1}, [&](const SceneFile& file, int number) {
        if (file.moves() && !file.clip) latest = std::max(latest, pictures::changed_at(file.at(number)));
    });
    return latest;
}

std::optional<Overwritten> overwritten(const Scene& scene, const FrameList& frames, const FramePattern& names) {
    std::set<std::string> outputs;
    for (int i = 0; i < frames.count(); ++i) outputs.insert(absolute(names.name(frames.frame(i))));
    std::optional<Overwritten> first;
    each_file_of(scene, frames, [&](const SceneFile& file, int frame) {
        const auto check = [&](const std::string& path) {
            if (!first && outputs.count(absolute(path)) != 0) first = {path, file.place};
        };
        if (!file.clip) return check(file.at(frame));
        for (const auto& path : file.clip->files()) check(path);
    });
    return first;
}

}  // namespace qx::scene
