// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "scene/Keyframes.h"
#include "scene/sources/Gradient.h"
#include "scene/sources/MadePicture.h"

namespace qx::scene {

/// A gradient as a scene tells it.
struct GradientTracks {
    struct Stop {
        double at;
        Track<4> colour;  ///< alpha first
    };
    bool radial = false;
    Track<2> from{Track<2>::Value{0, 0}}, to{Track<2>::Value{0, 0}};
    std::vector<Stop> stops;

    bool moves() const;
    Gradient at(int frame) const;
};

/// Taken at the middles of pixels, and rounded once to the depth.
class GradientSource final : public Source {
public:
    GradientSource(GradientTracks gradient, const SourceSize& size) : gradient_(std::move(gradient)), size_(size) {}

    bool moves() const override { return gradient_.moves(); }
    Piece picture(const SourceMoment& moment) const override;

private:
    const GradientTracks gradient_;
    const SourceSize size_;
};

}  // namespace qx::scene
