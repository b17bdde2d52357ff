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

}  // namespace qx::scene
