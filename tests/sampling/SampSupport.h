// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <span>
#include <vector>

#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SamplerSet.h"
#include "tests/support/Pixels.h"
#include "tests/support/TestHost.h"

namespace qx::test {

/// A picture whose pixels lie alone in a block of the heap, so that a sanitizer sees each byte that is read beside it.
template <class Pixel> struct Picture {
    QX_LayerDef world{};
    QX_SampPB params{};

    Picture(int width, int height, FillKind kind, std::uint64_t seed) : pixels_(new Pixel[count(width, height)]) {
        world.data = pixels_.get();
        world.width = width, world.height = height, world.rowbytes = width * static_cast<int>(sizeof(Pixel));
        world.world_flags = static_cast<std::uint32_t>(sizeof(Pixel) / 8) << 24;
        params.src = &world;
        fill_pixels(std::span(pixels_.get(), count(width, height)), kind, seed);
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    Pixel& at(int x, int y) {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(world.width) +
                       static_cast<std::size_t>(x)];
    }
    /// A pixel as four doubles; zeros outside.
    std::vector<double> tap(int x, int y) {
        if (x < 0 || y < 0 || x >= world.width || y >= world.height) return {0, 0, 0, 0};
        const Pixel& p = at(x, y);
        return {double(p.alpha), double(p.red), double(p.green), double(p.blue)};
    }
    QX_SampPB& radii(std::int32_t rx, std::int32_t ry) {
        params.x_radius = rx, params.y_radius = ry;
        params.area = static_cast<std::int32_t>(static_cast<std::uint64_t>(std::int64_t{rx} * ry) * 4 >> 16);
        return params;
    }

private:
    static std::size_t count(int w, int h) { return static_cast<std::size_t>(w) * static_cast<std::size_t>(h); }
    std::unique_ptr<Pixel[]> pixels_;
};

template <class Pixel> std::vector<double> channels(const Pixel& p) {
    return {double(p.alpha), double(p.red), double(p.green), double(p.blue)};
}
template <class Pixel> bool same(const Pixel& a, const Pixel& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

/// Full scale as the models count.
template <class Pixel> inline constexpr double kScale = DepthOf<Pixel>::full;

}  // namespace qx::test
