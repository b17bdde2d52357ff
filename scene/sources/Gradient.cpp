// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/Gradient.h"

#include <algorithm>
#include <cmath>

namespace qx::scene {
namespace {

/// Part `u` of the way between two colours, which count by their alphas, so that what is clear leaves no fringe.
Gradient::Colour mix(const Gradient::Colour& a, const Gradient::Colour& b, double u) {
    const double alpha = a[0] + (b[0] - a[0]) * u;
    const double of_a = a[0] * (1 - u), of_b = b[0] * u, both = of_a + of_b;
    const double share = both > 0 ? of_b / both : u;
    Gradient::Colour mixed{alpha};
    for (std::size_t i = 1; i < 4; ++i) mixed[i] = a[i] + (b[i] - a[i]) * share;
    return mixed;
}

}  // namespace

/// Where both points are one, all lies behind the last stop.
double Gradient::position(double x, double y) const {
    const double along_x = to[0] - from[0], along_y = to[1] - from[1];
    const double dx = x - from[0], dy = y - from[1];
    const double length = along_x * along_x + along_y * along_y;
    if (!(length > 0)) return 1;
    return radial ? std::sqrt((dx * dx + dy * dy) / length) : (dx * along_x + dy * along_y) / length;
}

Gradient::Colour Gradient::at(double x, double y) const {
    const double u = position(x, y);
    const auto next =
        std::upper_bound(stops.begin(), stops.end(), u, [](double place, const Stop& stop) { return place < stop.at; });
    if (next == stops.begin()) return stops.front().colour;
    if (next == stops.end()) return stops.back().colour;
    const Stop& before = *std::prev(next);
    return mix(before.colour, next->colour, (u - before.at) / (next->at - before.at));
}

}  // namespace qx::scene
