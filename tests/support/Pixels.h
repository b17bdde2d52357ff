// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <random>
#include <span>

#include "QX/indep/QX_Depth.h"

/// Pixels are equal when their bits are.
template <class P>
concept IsPixel = std::is_same_v<P, typename qx::DepthOf<P>::Pixel>;
template <IsPixel P> bool operator==(const P& a, const P& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
template <IsPixel P> std::ostream& operator<<(std::ostream& out, const P& p) {
    const auto digits = out.precision(9);
    out << '(' << +p.alpha << ", " << +p.red << ", " << +p.green << ", " << +p.blue << ')';
    out.precision(digits);
    return out;
}

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

inline constexpr FillKind kAllFills[] = {FillKind::random,   FillKind::opaque, FillKind::clear,
                                         FillKind::extremes, FillKind::edges,  FillKind::layer};

using AllDepths = testing::Types<QX_Pixel8, QX_Pixel16, QX_PixelFloat>;
template <class Pixel> inline constexpr auto kFull = static_cast<QX_ChannelOf<Pixel>>(DepthOf<Pixel>::full);

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
            const float special[] = {v * 4.0f, -v, v * 0x1p-127f, 0.0f, 1.0f, 0.5f};
            return (bits & 31) < std::size(special) ? special[bits & 31] : v;
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
    Channel extreme() { return random_() & 1 ? kFull<Pixel> : Channel{}; }
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
        const auto special = [&] { return kind == FillKind::edges ? source.edge() : source.extreme(); };
        if (kind == FillKind::opaque) p = source.with_alpha(kFull<Pixel>);
        if (kind == FillKind::clear) p = source.with_alpha(0);
        if (kind == FillKind::random) p = source.with_alpha(source.channel());
        if (kind == FillKind::edges || kind == FillKind::extremes) p = {special(), special(), special(), special()};
    }
}

}  // namespace qx::test
