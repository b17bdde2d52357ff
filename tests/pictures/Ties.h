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
inline std::vector<Tie> ties() {
    std::vector<Tie> ties;
    for (int below = 0; below < 255; ++below) {
        const auto value = static_cast<float>((below + 0.5) / 255);
        if (value * 255.0f == static_cast<float>(below) + 0.5f) ties.push_back({value, below});
    }
    return ties;
}

/// An opaque grey of such a value.
inline QX_PixelFloat tie_at(int index) {
    static const std::vector<Tie> all = ties();
    const float v = all[static_cast<std::size_t>(index) % all.size()].value;
    return {1, v, v, v};
}
/// The channels that it becomes in 8 bits when halves go to the even value.
inline std::vector<double> even_tie(int index) {
    static const std::vector<Tie> all = ties();
    const int below = all[static_cast<std::size_t>(index) % all.size()].below;
    const double even = below % 2 == 0 ? below : below + 1;
    return {255, even, even, even};
}

}  // namespace qx::test
