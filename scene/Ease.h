// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx::scene {

enum class Between { linear, smooth, hold, bezier };

/// How a value goes from its key to the next one.
struct Ease {
    Between between = Between::linear;
    double x1 = 0, y1 = 0, x2 = 1, y2 = 1;  ///< of bezier: control points of a curve from 0, 0 to 1, 1; x from 0 to 1

    constexpr Ease() = default;
    constexpr Ease(Between words) : between(words) {}  // NOLINT: a word is an ease
    constexpr Ease(double x1, double y1, double x2, double y2)
        : between(Between::bezier), x1(x1), y1(y1), x2(x2), y2(y2) {}

    /// How much of the next key's value there is after part `u` of the way, below 1. Smooth starts and ends at rest.
    constexpr double share(double u) const {
        switch (between) {
            case Between::linear:
                return u;
            case Between::smooth:
                return u * u * (3 - 2 * u);
            case Between::hold:
                return 0;
            default:
                return u <= 0 ? 0 : along(y1, y2, part_at(u));
        }
    }

private:
    /// A coordinate of the curve at part `s` of it.
    static constexpr double along(double first, double second, double s) {
        const double linear = 3 * first, square = 3 * (second - first) - linear, cube = 1 - linear - square;
        return ((cube * s + square) * s + linear) * s;
    }

    /// The part of the curve where x is `u`: halves it so often that no double lies between, whatever the machine.
    constexpr double part_at(double u) const {
        double below = 0, above = 1;
        for (int i = 0; i < 64; ++i) {
            const double middle = (below + above) / 2;
            (along(x1, x2, middle) < u ? below : above) = middle;
        }
        return above;
    }
};

}  // namespace qx::scene
