// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Painted ground, whose motion and truth are known.
#include <cmath>
#include <cstdint>

#include "QX/indep/QX_Area.h"
#include "QX/world/QX_World.h"

namespace qx::test {

inline double lattice(int seed, int x, int y) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 374761393u + static_cast<std::uint32_t>(y) * 668265263u +
                      static_cast<std::uint32_t>(seed) * 2246822519u;
    h = (h ^ h >> 13) * 1274126177u;
    h = (h ^ h >> 16) * 2654435769u;
    return static_cast<double>(h >> 8) / (1 << 24);
}

/// Smooth noise of one size.
inline double bumps(int seed, double x, double y) {
    const double fx = std::floor(x), fy = std::floor(y);
    const auto smooth = [](double u) { return u * u * (3 - 2 * u); };
    const double u = smooth(x - fx), v = smooth(y - fy);
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const auto row = [&](int line) { return lattice(seed, ix, line) * (1 - u) + lattice(seed, ix + 1, line) * u; };
    return row(iy) * (1 - v) + row(iy + 1) * v;
}

/// From 0 to 1, with parts of several sizes.
inline double painted(int seed, double x, double y) {
    return 0.5 * bumps(seed, x / 24, y / 24) + 0.3 * bumps(seed + 100, x / 9, y / 9) +
           0.2 * bumps(seed + 200, x / 4, y / 4);
}

/// Of what lies away from the border by so many pixels, at 8 bits.
inline double inner_psnr(const QX_World& a, const QX_World& b, int margin) {
    double sum = 0;
    int count = 0;
    for (int y = margin; y < a.height - margin; ++y) {
        const QX_Pixel8 *const p = row_of<QX_Pixel8>(a, y), *const q = row_of<QX_Pixel8>(b, y);
        for (int x = margin; x < a.width - margin; ++x, ++count) sum += std::pow(p[x].red - q[x].red, 2);
    }
    return 10 * std::log10(255.0 * 255.0 * count / std::max(sum, 1e-9));
}

}  // namespace qx::test
