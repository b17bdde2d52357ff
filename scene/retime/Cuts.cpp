// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/Cuts.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_WithDepth.h"

namespace qx::scene {
namespace {

constexpr int kSmallWidth = 64;
constexpr double kFarthestPan = 60;  // pixels from frame to frame

// Measured on pictures of unlike scenes, which leave 0.5 and more of what they hold, and on pans, which leave 0.2.
constexpr double kLeastLeft = 0.02;        // of full: less is the noise of one scene
constexpr double kLeastOfContrast = 0.4;   // less is one scene that moves
constexpr double kLeastAgainstOthers = 2;  // less is a scene in which much happens

double part(std::uint8_t v) { return v / 255.0; }
double part(std::uint16_t v) { return v / 32768.0; }
double part(float v) { return v > 0 ? std::min<double>(v, 1) : 0; }  // 0 for not-a-number

/// The sums of the frame's luma in the small one's pixels.
template <class Pixel> void add_luma(const QX_World& frame, SmallLuma& to, std::vector<int>& counts) {
    for (int y = 0; y < frame.height; ++y) {
        const Pixel* const row = row_of<Pixel>(frame, y);
        const auto line = static_cast<std::size_t>(std::int64_t{y} * to.height / frame.height * to.width);
        for (int x = 0; x < frame.width; ++x) {
            const Pixel& p = row[x];
            const double luma = 0.299 * part(p.red) + 0.587 * part(p.green) + 0.114 * part(p.blue);
            const std::size_t at = line + static_cast<std::size_t>(std::int64_t{x} * to.width / frame.width);
            to.values[at] += static_cast<float>(luma * part(p.alpha));
            ++counts[at];
        }
    }
}

/// Weights 1, 2, 1 along both axes, so that a shift by a part of a pixel leaves little.
void soften(SmallLuma& luma) {
    const std::vector<float> hard = luma.values;
    const auto at = [&](int x, int y) {
        x = std::clamp(x, 0, luma.width - 1), y = std::clamp(y, 0, luma.height - 1);
        return hard[static_cast<std::size_t>(y * luma.width + x)];
    };
    for (int y = 0; y < luma.height; ++y) {
        for (int x = 0; x < luma.width; ++x) {
            const auto line = [&](int row) { return at(x - 1, row) + 2 * at(x, row) + at(x + 1, row); };
            luma.values[static_cast<std::size_t>(y * luma.width + x)] = (line(y - 1) + 2 * line(y) + line(y + 1)) / 16;
        }
    }
}

/// The mean difference where both lie when the second one is moved.
double left_at(const SmallLuma& a, const SmallLuma& b, int dx, int dy) {
    const int x0 = std::max(0, dx), x1 = a.width + std::min(0, dx);
    const int y0 = std::max(0, dy), y1 = a.height + std::min(0, dy);
    float sum = 0;
    for (int y = y0; y < y1; ++y) {
        const float* const p = a.values.data() + y * a.width;
        const float* const q = b.values.data() + (y - dy) * b.width - dx;
        for (int x = x0; x < x1; ++x) sum += std::fabs(p[x] - q[x]);
    }
    return static_cast<double>(sum) / ((x1 - x0) * (y1 - y0));
}

double contrast_of(const SmallLuma& luma) {
    double mean = 0, sum = 0;
    for (const float v : luma.values) mean += static_cast<double>(v);
    mean /= static_cast<double>(luma.values.size());
    for (const float v : luma.values) sum += std::fabs(static_cast<double>(v) - mean);
    return sum / static_cast<double>(luma.values.size());
}

}  // namespace

SmallLuma small_luma(const QX_World& frame) {
    SmallLuma luma;
    luma.width = std::min(frame.width, kSmallWidth);
    luma.shrunk = static_cast<double>(frame.width) / luma.width;
    luma.height = std::clamp(static_cast<int>(std::lround(frame.height / luma.shrunk)), 1, std::min(frame.height, 256));
    const std::size_t size = static_cast<std::size_t>(luma.width) * static_cast<std::size_t>(luma.height);
    luma.values.assign(size, 0);
    std::vector<int> counts(size);
    for_depth(
        frame.Depth(), [&]<class Pixel>() { add_luma<Pixel>(frame, luma, counts); }, [] {});
    for (std::size_t i = 0; i < size; ++i) luma.values[i] /= static_cast<float>(counts[i]);
    soften(luma);
    return luma;
}

Difference difference(const SmallLuma& a, const SmallLuma& b) {
    const int reach = static_cast<int>(std::ceil(kFarthestPan / a.shrunk)) + 1;
    const int across = std::min(reach, a.width / 2), down = std::min(reach, a.height / 2);
    double left = std::numeric_limits<double>::infinity();
    for (int dy = -down; dy <= down; ++dy) {
        for (int dx = -across; dx <= across; ++dx) left = std::min(left, left_at(a, b, dx, dy));
    }
    return {left, (contrast_of(a) + contrast_of(b)) / 2};
}

bool is_cut(const Difference& pair, const Difference* before, const Difference* after) {
    if (pair.left < kLeastLeft || pair.left < kLeastOfContrast * pair.contrast) return false;
    const auto stands_out = [&](const Difference* other) {
        return other == nullptr || pair.left > kLeastAgainstOthers * other->left;
    };
    return stands_out(before) && stands_out(after);
}

Cuts::Cuts(Clip& clip, CutSearch search, std::vector<int> begins)
    : clip_(clip), search_(search), begins_(std::move(begins)) {}

const SmallLuma& Cuts::luma(int frame, pictures::Watch& watch) {
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = lumas_.find(frame); found != lumas_.end()) return *found->second;
    }
    auto made = std::make_unique<const SmallLuma>(small_luma(*clip_.frame(frame, watch)->world));
    const std::lock_guard lock(mutex_);
    return *lumas_.emplace(frame, std::move(made)).first->second;  // the first one stays where two were made
}

const Difference* Cuts::difference_behind(int frame, pictures::Watch& watch) {
    if (frame < 0 || frame + 1 >= clip_.frames()) return nullptr;
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = differences_.find(frame); found != differences_.end()) return &found->second;
    }
    const Difference made = difference(luma(frame, watch), luma(frame + 1, watch));
    const std::lock_guard lock(mutex_);
    return &differences_.emplace(frame, made).first->second;
}

bool Cuts::behind(int frame, pictures::Watch& watch) {
    if (search_ == CutSearch::none) return false;
    if (search_ == CutSearch::listed) return std::find(begins_.begin(), begins_.end(), frame + 1) != begins_.end();
    const Difference* const pair = difference_behind(frame, watch);
    if (pair == nullptr || !is_cut(*pair, nullptr, nullptr)) return false;  // its neighbours need not be read
    return is_cut(*pair, difference_behind(frame - 1, watch), difference_behind(frame + 1, watch));
}

}  // namespace qx::scene
