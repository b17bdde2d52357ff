// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/Rims.h"

#include <algorithm>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_WithDepth.h"

namespace qx::scene {
namespace {

// Opaque pixels stay opaque but for the rounding of the mix; beyond full lies what a vector left that overflowed.
constexpr float kLeastAlpha = 0.98f, kMostAlpha = 1.02f;

}  // namespace

Rims::Rims(const QX_World& tweened, int reach)
    : width_(tweened.width), height_(tweened.height), reach_(std::clamp(reach, 1, 100)) {
    for_depth(
        tweened.Depth(), [&]<class Pixel>() { find<Pixel>(tweened); }, [] {});
    if (any_) spread();
}

template <class Pixel> void Rims::find(const QX_World& tweened) {
    const auto full = static_cast<float>(DepthOf<Pixel>::full);
    const auto is_set = [&](const Pixel& p) {
        const auto alpha = static_cast<float>(p.alpha);
        return alpha >= kLeastAlpha * full && alpha <= kMostAlpha * full;  // false for not-a-number
    };
    for (int y = 0; y < height_; ++y) {
        const Pixel* const row = row_of<Pixel>(tweened, y);
        if (std::all_of(row, row + width_, is_set)) continue;
        if (!any_) distance_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 255);
        any_ = true;
        std::uint8_t* const out = distance_.data() + std::size_t(y) * std::size_t(width_);
        for (int x = 0; x < width_; ++x) out[x] = is_set(row[x]) ? static_cast<std::uint8_t>(farthest()) : 0;
    }
}

/// Two passes over the pixels, forwards and backwards, of which each takes what its neighbours know already.
void Rims::spread() {
    const int most = farthest();
    const auto row = [&](int y) { return distance_.data() + std::size_t(y) * std::size_t(width_); };
    const auto pass = [&](int y, int before, int begin, int end, int step) {
        std::uint8_t* const own = row(y);
        const std::uint8_t* const other = before >= 0 && before < height_ ? row(before) : nullptr;
        for (int x = begin; x != end; x += step) {
            int nearest = most - 1;
            if (x != begin) nearest = std::min<int>(nearest, own[x - step]);
            for (int k = std::max(0, x - 1); other != nullptr && k <= std::min(width_ - 1, x + 1); ++k)
                nearest = std::min<int>(nearest, other[k]);
            own[x] = static_cast<std::uint8_t>(std::min<int>(own[x], nearest + 1));
        }
    };
    for (int y = 0; y < height_; ++y) pass(y, y - 1, 0, width_, 1);
    for (int y = height_ - 1; y >= 0; --y) pass(y, y + 1, width_ - 1, -1, -1);
}

template <class Pixel> void Rims::lay(const QX_World& mix, QX_World& tweened) const {
    using Channel = typename DepthOf<Pixel>::Channel;
    for (int y = 0; y < height_; ++y) {
        const std::uint8_t* const distance = distance_.data() + std::size_t(y) * std::size_t(width_);
        const Pixel* const from = row_of<Pixel>(mix, y);
        Pixel* const to = row_of<Pixel>(tweened, y);
        for (int x = 0; x < width_; ++x) {
            if (distance[x] >= farthest()) continue;
            if (distance[x] <= reach_) {
                to[x] = from[x];
                continue;
            }
            const float weight = static_cast<float>(farthest() - distance[x]) / static_cast<float>(reach_ + 1);
            const auto fade = [&](Channel a, Channel b) {
                const float sum = static_cast<float>(a) + (static_cast<float>(b) - static_cast<float>(a)) * weight;
                return static_cast<Channel>(std::is_integral_v<Channel> ? sum + 0.5f : sum);
            };
            to[x] = {fade(to[x].alpha, from[x].alpha), fade(to[x].red, from[x].red), fade(to[x].green, from[x].green),
                     fade(to[x].blue, from[x].blue)};
        }
    }
}

void Rims::mend(const QX_World& mix, QX_World& tweened) const {
    for_depth(
        tweened.Depth(), [&]<class Pixel>() { lay<Pixel>(mix, tweened); }, [] {});
}

}  // namespace qx::scene
