// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/support/Test.h"

namespace qx::test {

template <class Pixel> inline constexpr double kScale = DepthOf<Pixel>::full;
template <class Pixel> std::vector<double> channels(const Pixel& p) {
    return {double(p.alpha), double(p.red), double(p.green), double(p.blue)};
}

/// A picture and the block that samplers take; nothing lies beside its pixels.
template <class Pixel> struct Source : Picture<Pixel> {
    QX_SampPB params{};

    Source(int width, int height, FillKind kind, std::uint64_t seed) : Picture<Pixel>(width, height, 0) {
        params.src = &this->record;
        fill_pixels(std::span(this->pixels), kind, seed);
    }
    Source(Source&&) = delete;

    /// A pixel as four doubles; zeros outside.
    std::vector<double> tap(int x, int y) {
        if (!holds({0, 0, this->record.width, this->record.height}, x, y)) return {0, 0, 0, 0};
        return channels(this->at(x, y));
    }
    QX_SampPB& radii(std::int32_t rx, std::int32_t ry) {
        params.x_radius = rx, params.y_radius = ry;
        params.area = static_cast<std::int32_t>(static_cast<std::uint64_t>(std::int64_t{rx} * ry) * 4 >> 16);
        return params;
    }
};

}  // namespace qx::test
