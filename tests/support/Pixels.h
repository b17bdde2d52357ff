// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>

#include "QX/indep/QX_Depth.h"

/// Pixels from a seed, in the shapes that find faults.
namespace qx::test {

enum class FillKind {
    random,    ///< every channel anything well-formed; float also above 1, below 0 and denormal
    opaque,    ///< full alpha, random colour
    clear,     ///< alpha 0, random colour
    extremes,  ///< every channel 0 or full
    layer,     ///< runs of clear and of opaque pixels with soft edges, as layers are
    edges      ///< every channel a quarter of the scale or one step beside it, where formulas change
};

/// Whole numbers from a seed: `low` or more, below `high`.
class Numbers {
public:
    explicit Numbers(unsigned seed) : random_(seed) {}
    int operator()(int low, int high) { return low + static_cast<int>(random_() % static_cast<unsigned>(high - low)); }

private:
    std::mt19937 random_;
};

template <class Pixel> class PixelSource {
    using D = DepthOf<Pixel>;
    using Channel = typename D::Channel;

public:
    explicit PixelSource(std::uint64_t seed) : random_(seed) {}

    Channel channel() {
        const std::uint64_t bits = random_();
        if constexpr (D::number == 32) {
            const float v = static_cast<float>(bits >> 40) * 0x1p-24f;
            switch (bits & 31) {
                case 0:
                    return v * 4.0f;
                case 1:
                    return -v;
                case 2:
                    return v * 0x1p-127f;
                case 3:
                    return 0.0f;
                case 4:
                    return 1.0f;
                case 5:
                    return 0.5f;
                default:
                    return v;
            }
        } else {
            return static_cast<Channel>(bits % static_cast<std::uint64_t>(D::full + 1));
        }
    }
    Channel edge() {
        const auto quarter = random_() % 5, beside = random_() % 3;
        if constexpr (D::number == 32) {
            const float v = static_cast<float>(quarter) * 0.25f;
            return beside == 0 ? std::nextafter(v, -1.0f) : beside == 1 ? std::nextafter(v, 2.0f) : v;
        } else {  // steps that leave the scale stay at its end
            const auto v =
                (static_cast<std::int64_t>(quarter) * D::full + 2) / 4 + static_cast<std::int64_t>(beside) - 1;
            return static_cast<Channel>(std::clamp<std::int64_t>(v, 0, D::full));
        }
    }
    Channel extreme() { return static_cast<Channel>(random_() & 1 ? D::full : 0); }
    Pixel with_alpha(Channel alpha) { return {alpha, channel(), channel(), channel()}; }
    std::size_t below(std::size_t n) { return static_cast<std::size_t>(random_() % n); }

    /// One run of a layer: clear, opaque, or a ramp between the two.
    void run(std::span<Pixel> pixels) {
        const std::size_t kind = below(10);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const double ramp = static_cast<double>(i + 1) / static_cast<double>(pixels.size() + 1);
            const double alpha = kind < 4 ? 1 : kind < 9 ? 0 : ramp;
            pixels[i] = with_alpha(static_cast<Channel>(alpha * static_cast<double>(D::full)));
        }
    }

private:
    std::mt19937_64 random_;
};

template <class Pixel> void fill_pixels(std::span<Pixel> pixels, FillKind kind, std::uint64_t seed) {
    using Channel = typename DepthOf<Pixel>::Channel;
    PixelSource<Pixel> source(seed);
    if (kind == FillKind::layer) {
        for (std::size_t done = 0; done < pixels.size();) {
            const std::size_t length = std::min(pixels.size() - done, 1 + source.below(90));
            source.run(pixels.subspan(done, length));
            done += length;
        }
        return;
    }
    for (Pixel& p : pixels) {
        switch (kind) {
            case FillKind::opaque:
                p = source.with_alpha(static_cast<Channel>(DepthOf<Pixel>::full));
                break;
            case FillKind::clear:
                p = source.with_alpha(0);
                break;
            case FillKind::extremes:
                p = {source.extreme(), source.extreme(), source.extreme(), source.extreme()};
                break;
            case FillKind::edges:
                p = {source.edge(), source.edge(), source.edge(), source.edge()};
                break;
            default:
                p = source.with_alpha(source.channel());
                break;
        }
    }
}

}  // namespace qx::test
