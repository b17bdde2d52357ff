// SPDX-License-Identifier: Apache-2.0
// Samples of summed-area tables: a rectangle's sum is that up to its far corner, less what lies left and above.
#include <algorithm>
#include <cmath>

#include "QX/indep/QX_Depth.h"
#include "QX/sampling/QX_SummedArea.h"

namespace {

using qx::DepthOf;

/// NaN is 0.
double limited(double v, double full) { return v > 0 ? std::min(v, full) : 0; }
float limited(float v) { return v < 0 ? 0.0f : v > 1 ? 1.0f : v; }

/// Four sums, to which cells are added by a coefficient. A cell of none is not read.
class Sums {
public:
    template <class Cell> void add(double coefficient, const Cell* table, std::int64_t at) {
        if (coefficient == 0) return;
        const Cell& cell = table[at];
        alpha_ += coefficient * cell.alpha;
        red_ += coefficient * cell.red;
        green_ += coefficient * cell.green;
        blue_ += coefficient * cell.blue;
    }

    /// The mean of an area. Floats from a table of doubles keep colours beyond the scale.
    template <class Cell, class Pixel> void finish(double area, Pixel* out) const {
        if (!(alpha_ > 0)) {
            *out = {};
        } else if constexpr (DepthOf<Pixel>::number == 32) {
            const auto colour = [this](double sum) {
                const auto v = static_cast<float>(sum / alpha_);
                return std::is_same_v<Cell, QX_PixelFloat> ? limited(v) : v;
            };
            *out = {limited(static_cast<float>(alpha_ / area)), colour(red_), colour(green_), colour(blue_)};
        } else {
            constexpr double full = DepthOf<Pixel>::full;
            const double scale = full / alpha_;
            const auto stored = [](double v) { return static_cast<QX_ChannelOf<Pixel>>(limited(v, full) + 0.5); };
            *out = {stored(alpha_ / area), stored(red_ * scale), stored(green_ * scale), stored(blue_ * scale)};
        }
    }

private:
    double alpha_ = 0, red_ = 0, green_ = 0, blue_ = 0;
};

/// An edge within the world: how many whole pixels lie before it, and the part of the next one.
struct Edge {
    std::int32_t whole;
    double part;

    /// Beyond the number of floats that are whole an edge may come to lie a little behind the world's end.
    Edge(float at, int length) : whole(length), part(0) {
        const float floor = std::floor(at);
        if (floor >= static_cast<float>(length)) return;
        whole = static_cast<std::int32_t>(floor);
        part = static_cast<double>(at - floor);
        if (whole >= length) *this = Edge(length);
    }
    explicit Edge(int length) : whole(length), part(0) {}
};

/// Far edges at the world's end or behind it come to lie in it.
float cut(float edge, int length) {
    const auto end = static_cast<float>(length);
    return edge >= end ? end - 1e-5f : edge;
}

/// Products of whole numbers wrap.
std::int32_t times(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/// The sum up to a corner, between the four cells around it.
template <class Cell>
void add_corner(Sums& sums, int sign, const Edge& x, const Edge& y, int width, const Cell* table) {
    const std::int64_t last = (std::int64_t{y.whole} - 1) * width + x.whole - 1;
    const auto add = [&](int right, int down) {
        const std::int32_t count = times(times(sign, x.whole + right), y.whole + down);
        const double across = right != 0 ? x.part : 1 - x.part, along = down != 0 ? y.part : 1 - y.part;
        sums.add((count * across) * along, table, last + right + std::int64_t{down} * width);
    };
    add(0, 0);
    add(1, 0);
    add(0, 1);
    add(1, 1);
}

}  // namespace

template <class Pixel, class Accum>
void QX_SummedAreaTable_SampleAA(int width, int height, const Accum* table, float left, float top, float right,
                                 float bottom, Pixel* out) {
    left += 0.5f, top += 0.5f, right += 0.5f, bottom += 0.5f;
    const double area = static_cast<double>((right - left) * (bottom - top));
    right = cut(right, width), bottom = cut(bottom, height);
    left = std::max(left, 0.0f), top = std::max(top, 0.0f);
    Sums sums;
    if (area > 0 && left < right && top < bottom) {
        const Edge x0(left, width), y0(top, height), x1(right, width), y1(bottom, height);
        add_corner(sums, 1, x1, y1, width, table);
        add_corner(sums, 1, x0, y0, width, table);
        add_corner(sums, -1, x0, y1, width, table);
        add_corner(sums, -1, x1, y0, width, table);
    }
    sums.finish<Accum>(area, out);
}

template <class Pixel, class Accum>
void QX_SummedAreaTable_SampleDraft(int width, int height, const Accum* table, int left, int top, int right, int bottom,
                                    Pixel* out) {
    using Wide = std::int64_t;
    // Both at most 2^32 - 1: as a number without a sign the product fits 64 bits.
    const auto across = static_cast<std::uint64_t>(Wide{right} - left);
    const double area = static_cast<double>(across * static_cast<std::uint64_t>(Wide{bottom} - top));
    const Wide x1 = std::min(right, width), y1 = std::min(bottom, height), x0 = std::max(left, 0),
               y0 = std::max(top, 0);
    Sums sums;
    if (left < right && top < bottom && x0 < x1 && y0 < y1) {
        const auto add = [&](int sign, Wide x, Wide y) {
            sums.add(static_cast<double>(sign * (x * y)), table, (y - 1) * width + x - 1);
        };
        add(1, x1, y1);
        add(1, x0, y0);
        add(-1, x0, y1);
        add(-1, x1, y0);
    }
    sums.finish<Accum>(area, out);
}

#define QX_HERE
QX_ALL_SUMMED_AREA_SAMPLERS(QX_HERE)
#undef QX_HERE
