// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "QX/indep/QX_Depth.h"

/// Lines of pixels as blurs read and write them: in either direction, at any alignment.
namespace qx {

template <class Pixel> using ChannelArray = std::array<QX_ChannelOf<Pixel>, 4>;

/// Positions count from the first pixel.
template <class Pixel> struct BlurLine {
    std::byte* first;
    std::ptrdiff_t step;  ///< bytes from a pixel to the next
    std::int64_t length;

    bool has(std::int64_t at) const { return at >= 0 && at < length; }
    ChannelArray<Pixel> load(std::int64_t at) const {
        ChannelArray<Pixel> pixel;
        std::memcpy(&pixel, first + at * step, sizeof pixel);
        return pixel;
    }
    void store(std::int64_t at, const ChannelArray<Pixel>& pixel) const {
        std::memcpy(first + at * step, &pixel, sizeof pixel);
    }
    void clear() const {
        for (std::int64_t i = 0; i < length; ++i) store(i, {});
    }
    /// Copies as many pixels as this line has from a place in another one.
    void copy(const BlurLine& from, std::int64_t begin) const {
        for (std::int64_t i = 0; i < length; ++i) store(i, from.load(begin + i));
    }
    /// The same with selected colours multiplied by alpha.
    void copy_matted(const BlurLine& from, std::int64_t begin, std::uint32_t conv_flags) const {
        using D = DepthOf<Pixel>;
        using Lane = std::conditional_t<D::number == 32, float, std::uint32_t>;
        for (std::int64_t i = 0; i < length; ++i) {
            ChannelArray<Pixel> pixel = from.load(begin + i);
            for (unsigned c = 1; c < 4; ++c) {
                if ((conv_flags >> c & 1) == 0) continue;
                pixel[c] = static_cast<QX_ChannelOf<Pixel>>(D::template mul<Lane>(pixel[0], pixel[c]));
            }
            store(i, pixel);
        }
    }
};

}  // namespace qx
