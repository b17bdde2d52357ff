// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "QX/indep/QX_Pixel.h"

namespace qx::test {

/// Floats whose product with 255 is a number and a half exactly, and that number.
struct Tie {
    float value;
    int below;
};
inline const std::vector<Tie>& ties() {
    static const std::vector<Tie> all = [] {
        std::vector<Tie> found;
        for (int below = 0; below < 255; ++below) {
            const auto value = static_cast<float>((below + 0.5) / 255);
            if (value * 255.0f == static_cast<float>(below) + 0.5f) found.push_back({value, below});
        }
        return found;
    }();
    return all;
}
inline Tie tie(int index) { return ties()[static_cast<std::size_t>(index) % ties().size()]; }

/// An opaque grey of such a value, and the channels that it becomes in 8 bits when halves go to the even value.
inline QX_PixelFloat tie_at(int index) { return {1, tie(index).value, tie(index).value, tie(index).value}; }
inline std::vector<double> even_tie(int index) {
    const double even = (tie(index).below + 1) / 2 * 2;
    return {255, even, even, even};
}

}  // namespace qx::test
