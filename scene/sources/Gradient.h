// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <vector>

namespace qx::scene {

/// Colours that change along a line, or outwards from a point, in double: one written order of sums and products and a
/// square root, which every machine rounds alike.
struct Gradient {
    using Colour = std::array<double, 4>;  ///< alpha first
    struct Stop {
        double at;  ///< 0 at `from`, 1 at `to`; not below that of the stop before
        Colour colour;
    };
    bool radial = false;  ///< about `from`, as far as `to`; else along the line from one to the other
    std::array<double, 2> from{}, to{};
    std::vector<Stop> stops;  ///< at least one

    /// The colour at a point. Where two stops lie at one place, the second begins there.
    Colour at(double x, double y) const;

private:
    double position(double x, double y) const;
};

}  // namespace qx::scene
