// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scene/SceneLayer.h"
#include "scene/sources/MadePicture.h"

namespace qx::scene {

inline constexpr int kMostNested = 32;  ///< groups in one another

/// Layers that are composited onto clear first, and become one.
class GroupSource final : public Source {
public:
    GroupSource(SceneLayers layers, const SourceSize& size) : layers_(std::move(layers)), size_(size) {}

    bool moves() const override;
    Piece picture(const SourceMoment& moment) const override;
    const SceneLayers* layers() const override { return &layers_; }

private:
    const SceneLayers layers_;
    const SourceSize size_;
};

}  // namespace qx::scene
