// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scene/Keyframes.h"
#include "scene/sources/MadePicture.h"

namespace qx::scene {

/// One colour all over.
class SolidSource final : public Source {
public:
    SolidSource(Track<4> colour, const SourceSize& size) : colour_(std::move(colour)), size_(size) {}

    bool moves() const override { return colour_.moves(); }
    Piece picture(const SourceMoment& moment) const override;

private:
    const Track<4> colour_;  ///< alpha first
    const SourceSize size_;
};

}  // namespace qx::scene
