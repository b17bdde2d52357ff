// SPDX-License-Identifier: Apache-2.0
#include "scene/LayerPlace.h"

#include <algorithm>
#include <cmath>

namespace qx::scene {
namespace {

double nearest_whole(double number) { return std::floor(number + 0.5); }

/// Sides are whole pixels, so that a layer that is fitted has no soft edge.
void fit_to(const Fit& fit, Extent layer, Extent background, Placing& placing) {
    const Extent box = fit.kind == Fit::Kind::box ? fit.box : background;
    const double across = double(box.width) / layer.width, down = double(box.height) / layer.height;
    const double factor = fit.kind == Fit::Kind::cover ? std::max(across, down) : std::min(across, down);
    const auto scale = [=](int side) { return std::max(1.0, nearest_whole(side * factor)) / side; };
    placing.scale[0] = scale(layer.width);
    placing.scale[1] = scale(layer.height);
}

/// One coordinate of the move that brings what lies from `near` to `far` to its place along a side.
/// @param pull  0 to the side's begin, 1 to its middle, 2 to its end; negative for none
double along(const LayerPlace::Along& told, int pull, int side, double near, double far) {
    const double distance = told.per_cent ? side * told.number / 100 : told.number;
    if (pull < 0) return told.per_cent ? nearest_whole(distance) : distance;
    const double starts[] = {-near, (side - far - near) / 2, side - far};
    return nearest_whole(starts[pull] + (pull == 2 ? -distance : distance));
}

}  // namespace

M_FloatRect bounds_of(const M_FloatRect& rect, const M_Matrix3& matrix) {
    const auto& m = matrix.m;
    M_FloatRect bounds{HUGE_VAL, HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    for (const double x : {rect.left, rect.right}) {
        for (const double y : {rect.top, rect.bottom}) {
            const double at_x = x * m[0][0] + y * m[1][0] + m[2][0], at_y = x * m[0][1] + y * m[1][1] + m[2][1];
            bounds = {std::min(bounds.left, at_x), std::min(bounds.top, at_y), std::max(bounds.right, at_x),
                      std::max(bounds.bottom, at_y)};
        }
    }
    return bounds;
}

Settled settle(const LayerPlace& place, const Placing* placing, const M_Matrix3* matrix, Extent layer,
               Extent background) {
    Placing own = placing != nullptr ? *placing : Placing{};
    if (place.fit) fit_to(*place.fit, layer, background, own);
    const M_Matrix3 shape = matrix != nullptr ? *matrix : matrix_of(own);
    const bool centred = place.fit && place.fit->kind != Fit::Kind::box;
    const int gravity = place.gravity.value_or(centred ? kCenter : -1);
    const M_FloatRect covered = bounds_of({0, 0, double(layer.width), double(layer.height)}, shape);
    const double x = along(place.x, gravity < 0 ? -1 : gravity % 3, background.width, covered.left, covered.right);
    const double y = along(place.y, gravity < 0 ? -1 : gravity / 3, background.height, covered.top, covered.bottom);
    Settled settled{static_cast<int>(nearest_whole(x)), static_cast<int>(nearest_whole(y)), {}};
    const bool whole = x == settled.x && y == settled.y;
    const bool plain = placing == nullptr && matrix == nullptr && !place.fit;
    if (!plain || !whole) settled.matrix = moved(shape, x, y);
    return settled;
}

}  // namespace qx::scene
