// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "QX/world/QX_World.h"

namespace qx::tool {

/// An 8-bit picture brought to another size: each pixel is the mean of the box that it covers, weighted by alpha.
std::unique_ptr<QX_World> scaled(const QX_World& source, int width, int height);

/// The largest size with the proportions of `world` that fits into a square.
void fit(const QX_World& world, int side, int* width, int* height);

/// Gives an opaque 8-bit picture soft edges: full alpha in the middle, falling to 0 over a sixth of each side.
void soften_edges(QX_World& world);

/// Fills an 8-bit world with grey squares, on which transparency shows.
void draw_checkers(QX_World& world);

/// Alpha from 0 at the left edge to full at the right one.
std::unique_ptr<QX_World> ramp(int width, int height);

}  // namespace qx::tool
