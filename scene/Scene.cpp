// SPDX-License-Identifier: Apache-2.0
#include "scene/Scene.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "scene/retime/SceneClip.h"

#include "scene/Faults.h"

namespace qx::scene {
namespace {

/// Hands each file that the frames show to `see`, with the first frame that shows it.
template <class See> void each_file(const Scene& scene, const FrameRange& frames, const See& see) {
    for (int i = 0; i < frames.count(); ++i) {
        const auto visit = [&](const SceneFile& file) {
            if (i == 0 || file.moves()) see(file, frames.frame(i));
        };
        if (scene.background) visit(*scene.background);
        for (const SceneLayer& layer : scene.layers) {
            visit(layer.file);
            if (layer.mask) visit(layer.mask->file);
            for (const SceneEffect& effect : layer.effects) {
                for (const SceneFile* file : effect.effect->files()) visit(*file);
            }
        }
    }
}

std::string absolute(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(path, ignored).string();
}

}  // namespace

bool SceneTransform::moves() const {
    if (matrix) return matrix->moves();
    return anchor.moves() || translate.moves() || scale.moves() || rotate.moves();
}

M_Matrix3 SceneTransform::at(double frame) const {
    if (matrix) return matrix_of(matrix->at(frame));
    Placing placing;
    const auto take = [&](const Track<2>& track, double(&pair)[2]) {
        const auto value = track.at(frame);
        pair[0] = value[0];
        pair[1] = value[1];
    };
    take(anchor, placing.anchor);
    take(translate, placing.translate);
    take(scale, placing.scale);
    placing.degrees = rotate.at(frame)[0];
    return matrix_of(placing);
}

bool SceneLayer::effects_move() const {
    return file.moves() ||
           std::any_of(effects.begin(), effects.end(), [](const SceneEffect& effect) { return effect.moves; });
}

std::vector<M_Matrix3> SceneLayer::matrices(int frame, int left, int top) const {
    if (!transform) return {};
    const int count = shutter.angle > 0 && transform->moves() ? shutter.matrices : 1;
    std::vector<M_Matrix3> matrices;
    for (int i = 0; i < count; ++i) {
        const double open = count == 1 ? 0 : shutter.angle * i / (count - 1);
        const M_Matrix3 matrix = transform->at(frame + (shutter.phase + open) / 360);
        const bool is_moved = left != 0 || top != 0;
        matrices.push_back(is_moved ? M_MultiplyMatrix(moved(kM_IdentityMatrix, left, top), matrix) : matrix);
    }
    return matrices;
}

void check_files(const Scene& scene, const FrameRange& frames) {
    each_file(scene, frames, [&](const SceneFile& file, int frame) {
        if (file.clip) return;  // it was looked at when the scene was read
        const std::string path = file.at(frame);
        std::error_code ignored;
        if (std::filesystem::exists(path, ignored)) return;
        throw SceneFault(scene.file, file.place, path + ": no such file, frame " + std::to_string(frame) + " needs it");
    });
}

std::optional<Overwritten> overwritten(const Scene& scene, const FrameRange& frames, const FramePattern& names) {
    std::set<std::string> outputs;
    for (int i = 0; i < frames.count(); ++i) outputs.insert(absolute(names.name(frames.frame(i))));
    std::optional<Overwritten> first;
    each_file(scene, frames, [&](const SceneFile& file, int frame) {
        const auto check = [&](const std::string& path) {
            if (!first && outputs.count(absolute(path)) != 0) first = {path, file.place};
        };
        if (!file.clip) return check(file.at(frame));
        for (const auto& path : file.clip->files()) check(path);
    });
    return first;
}

}  // namespace qx::scene
