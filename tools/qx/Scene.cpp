// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Scene.h"

#include <filesystem>

#include "tools/qx/io/Picture.h"

namespace qx::tool {
namespace {

void check_file(const Scene& scene, const SceneFile& file, int frame) {
    const std::string path = file.at(frame);
    std::error_code error;
    if (std::filesystem::exists(path, error)) return;
    throw io::Failure(scene.file,
                      file.place + " " + path + ": no such file, frame " + std::to_string(frame) + " needs it");
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

std::vector<M_Matrix3> SceneLayer::matrices(int frame) const {
    if (!transform) return {};
    const int count = shutter.angle > 0 && transform->moves() ? shutter.matrices : 1;
    std::vector<M_Matrix3> matrices;
    for (int i = 0; i < count; ++i) {
        const double open = count == 1 ? 0 : shutter.angle * i / (count - 1);
        matrices.push_back(transform->at(frame + (shutter.phase + open) / 360));
    }
    return matrices;
}

void check_files(const Scene& scene, const FrameRange& frames) {
    for (int i = 0; i < frames.count(); ++i) {
        const auto check = [&](const SceneFile& file) {
            if (i == 0 || file.name.has_place()) check_file(scene, file, frames.frame(i));
        };
        if (scene.background) check(*scene.background);
        for (const SceneLayer& layer : scene.layers) {
            check(layer.file);
            if (layer.mask) check(layer.mask->file);
        }
    }
}

}  // namespace qx::tool
