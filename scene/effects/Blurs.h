// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "scene/effects/Effect.h"

// The four blurs of a layer. Colours count by their alpha, so that what is clear has no colour to give.
namespace qx::scene {

/// What makes highlights of a disc.
struct Disc {
    double gain = 0, threshold = 0.8, saturation = 0;
    double aspect = 1, degrees = 0;
    double gamma = 0;  ///< exponent to linear light; 0 works on the stored values
};

struct BlurCall {
    double radius_x = 0, radius_y = 0;
    int passes = 1;
    bool keeps_edge = true;               ///< means are over what lies inside; else what lies outside is clear
    bool grows = false;                   ///< the canvas grows by what spreads
    unsigned channels = 15;               ///< bits 0 to 3 for alpha, red, green, blue; others stay
    std::shared_ptr<const QX_World> map;  ///< its luma is a factor of the radius; null is 1 everywhere
    int map_x = 0, map_y = 0;             ///< where the layer's left top corner lies on it
    Disc disc;
};

void blur_gaussian(Canvas& canvas, const BlurCall& call, const Moment& moment);
void blur_box(Canvas& canvas, const BlurCall& call, const Moment& moment);
/// Means of rectangles.
void blur_mean(Canvas& canvas, const BlurCall& call, const Moment& moment);
/// Means of ellipses, which make light round.
void blur_disc(Canvas& canvas, const BlurCall& call, const Moment& moment);

}  // namespace qx::scene
