// SPDX-License-Identifier: Apache-2.0
#include "scene/SceneLayer.h"

#include <algorithm>

namespace qx::scene {

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
    return source->moves() ||
           std::any_of(effects.begin(), effects.end(), [](const SceneEffect& effect) { return effect.moves; });
}

bool SceneLayer::moves() const {
    const bool ends = in > -kMostFrame || out < kMostFrame;
    const auto move = [](const SceneTransform* one) { return one->moves(); };
    const auto all = transforms();
    return ends || effects_move() || opacity.moves() || (mask && mask->moves()) ||
           std::any_of(all.begin(), all.end(), move);
}

std::vector<const SceneTransform*> SceneLayer::transforms() const {
    std::vector<const SceneTransform*> transforms;
    if (transform) transforms.push_back(&*transform);
    for (const auto& parent : parents) transforms.push_back(parent.get());
    return transforms;
}

std::vector<M_Matrix3> SceneLayer::matrices(int frame, int left, int top) const {
    return matrices_of(transforms(), shutter, frame, left, top);
}

std::vector<M_Matrix3> matrices_of(std::span<const SceneTransform* const> transforms, const Shutter& shutter, int frame,
                                   int left, int top) {
    if (transforms.empty()) return {};
    const bool moves =
        std::any_of(transforms.begin(), transforms.end(), [](const SceneTransform* one) { return one->moves(); });
    const int count = shutter.angle > 0 && moves ? shutter.matrices : 1;
    std::vector<M_Matrix3> matrices;
    for (int i = 0; i < count; ++i) {
        const double open = count == 1 ? 0 : shutter.angle * i / (count - 1);
        const double time = frame + (shutter.phase + open) / 360;
        M_Matrix3 matrix = transforms.front()->at(time);
        for (const SceneTransform* parent : transforms.subspan(1)) matrix = M_MultiplyMatrix(matrix, parent->at(time));
        const bool is_moved = left != 0 || top != 0;
        matrices.push_back(is_moved ? M_MultiplyMatrix(moved(kM_IdentityMatrix, left, top), matrix) : matrix);
    }
    return matrices;
}

}  // namespace qx::scene
