// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/world/QX_World.h"
#include "scene/retime/Field.h"

// How near a picture or a field comes to the true one. All pictures are of 8 bits and of one size.
namespace qx::bench {

/// In dB, over red, green and blue.
double psnr(const QX_World& picture, const QX_World& truth);

/// Structural similarity of luma: windows of 11 x 11 pixels that lie in the picture, Gaussian of deviation 1.5.
double ssim(const QX_World& picture, const QX_World& truth);

/// The mean distance of a field's vectors from true ones, where both are known.
double end_point_error(const scene::FlowField& field, const scene::FlowField& truth);

}  // namespace qx::bench
