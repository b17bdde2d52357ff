// SPDX-License-Identifier: Apache-2.0
#include "scene/Scene.h"

#include <filesystem>
#include <set>

#include "scene/Faults.h"
#include "scene/LayerWords.h"
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

std::string absolute(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(path, ignored).string();
}

}  // namespace

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

void check_files(const Scene& scene, const FrameList& frames) {
    each_file_of(scene, frames, [&](const SceneFile& file, int frame) {
        if (file.clip || file.missing != Missing::error) return;  // looked at when the scene was read
        const std::string path = file.at(frame);
        std::error_code ignored;
        if (std::filesystem::exists(path, ignored)) return;
        throw SceneFault(scene.file, file.place, path + ": no such file, frame " + std::to_string(frame) + " needs it");
    });
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
