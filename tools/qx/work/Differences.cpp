// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/Differences.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

#include "pictures/Picture.h"

namespace qx::tool {
namespace {

using Argb = std::array<float, 4>;

Argb channels(const QX_PixelFloat& p) { return {p.alpha, p.red, p.green, p.blue}; }

/// Equal bits are equal whatever they are; else what is no number is infinitely far.
double distance(float a, float b) {
    if (a == b || std::memcmp(&a, &b, sizeof a) == 0) return 0;
    const double far = std::abs(double{a} - double{b});
    return std::isnan(far) ? std::numeric_limits<double>::infinity() : far;
}

/// Of a pixel's channels the one that differs most.
struct Worst {
    double difference = 0;
    int channel = 0;
};

Worst worst(const Argb& a, const Argb& b) {
    Worst found;
    for (int c = 0; c < 4; ++c) {
        const auto i = static_cast<std::size_t>(c);
        const double difference = distance(a[i], b[i]);
        if (difference > found.difference) found = {difference, c};
    }
    return found;
}

/// From dark red over red and yellow to white.
QX_Pixel8 glow(double part) {
    const auto channel = [](double value) {
        return static_cast<std::uint8_t>(std::lround(255 * std::clamp(value, 0.0, 1.0)));
    };
    const double lit = 0.25 + 0.75 * part;  // so that the smallest is seen
    return {255, channel(3 * lit), channel(3 * lit - 1), channel(3 * lit - 2)};
}

}  // namespace

std::optional<double> Differences::psnr() const {
    if (mean_square == 0) return std::nullopt;
    return -10 * std::log10(mean_square);
}

Differences differences(const QX_World& a, const QX_World& b, double tolerance) {
    Differences found;
    double sum = 0, squares = 0;
    for (int y = 0; y < a.height; ++y) {
        const auto *p = pictures::row_of<QX_PixelFloat>(a, y), *q = pictures::row_of<QX_PixelFloat>(b, y);
        for (int x = 0; x < a.width; ++x) {
            const Argb one = channels(p[x]), other = channels(q[x]);
            const Worst here = worst(one, other);
            if (here.difference == 0) continue;
            for (std::size_t c = 0; c < 4; ++c) {
                const double d = distance(one[c], other[c]);
                sum += d;
                squares += d * d;
            }
            if (here.difference > tolerance) ++found.differing;
            if (here.difference > found.largest) {
                found.largest = here.difference;
                found.x = x;
                found.y = y;
                found.channel = here.channel;
            }
        }
    }
    found.pixels = std::int64_t{a.width} * a.height;
    const double values = 4 * static_cast<double>(found.pixels);
    found.mean = sum / values;
    found.mean_square = squares / values;
    return found;
}

std::unique_ptr<QX_World> heat(const QX_World& a, const QX_World& b, double tolerance, double largest) {
    auto picture = pictures::new_world("heat", a.width, a.height, 8);
    pictures::each_pixel<QX_Pixel8>(*picture, [&](QX_Pixel8& to, int x, int y) {
        const Worst here = worst(channels(pictures::row_of<QX_PixelFloat>(a, y)[x]),
                                 channels(pictures::row_of<QX_PixelFloat>(b, y)[x]));
        const double part = std::isfinite(largest) ? here.difference / largest : std::isinf(here.difference) ? 1 : 0;
        to = here.difference > tolerance ? glow(part) : QX_Pixel8{255, 0, 0, 0};
    });
    return picture;
}

}  // namespace qx::tool
