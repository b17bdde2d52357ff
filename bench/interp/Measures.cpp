// SPDX-License-Identifier: Apache-2.0
#include "bench/interp/Measures.h"

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Records.h"

namespace qx::bench {
namespace {

constexpr int kWindow = 11;
using Window = std::array<double, kWindow>;

Window gaussian() {
    constexpr double deviation = 1.5;
    Window window;
    double sum = 0;
    for (int i = 0; i < kWindow; ++i) {
        const double d = i - kWindow / 2;
        sum += window[std::size_t(i)] = std::exp(-d * d / (2 * deviation * deviation));
    }
    for (double& weight : window) weight /= sum;
    return window;
}

/// Numbers row by row.
struct Plane {
    int width, height;
    std::vector<double> values;
    Plane(int w, int h) : width(w), height(h), values(std::size_t(w) * std::size_t(h)) {}
    double& at(int x, int y) { return values[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
    double at(int x, int y) const { return values[std::size_t(y) * std::size_t(width) + std::size_t(x)]; }
};

Plane luma_of(const QX_World& world) {
    Plane luma(world.width, world.height);
    for (int y = 0; y < world.height; ++y) {
        const QX_Pixel8* const row = row_of<QX_Pixel8>(world, y);
        for (int x = 0; x < world.width; ++x)
            luma.at(x, y) = 0.299 * row[x].red + 0.587 * row[x].green + 0.114 * row[x].blue;
    }
    return luma;
}

/// The weighted means of a * b over all windows.
Plane means(const Plane& a, const Plane* b, const Window& window) {
    Plane lines(a.width - kWindow + 1, a.height), all(lines.width, a.height - kWindow + 1);
    for (int y = 0; y < lines.height; ++y) {
        for (int x = 0; x < lines.width; ++x) {
            double sum = 0;
            for (int i = 0; i < kWindow; ++i)
                sum += window[std::size_t(i)] * a.at(x + i, y) * (b != nullptr ? b->at(x + i, y) : 1);
            lines.at(x, y) = sum;
        }
    }
    for (int y = 0; y < all.height; ++y) {
        for (int x = 0; x < all.width; ++x) {
            double sum = 0;
            for (int i = 0; i < kWindow; ++i) sum += window[std::size_t(i)] * lines.at(x, y + i);
            all.at(x, y) = sum;
        }
    }
    return all;
}

}  // namespace

double psnr(const QX_World& picture, const QX_World& truth) {
    double sum = 0;
    const auto add = [&](int a, int b) { sum += (a - b) * (a - b); };
    for (int y = 0; y < truth.height; ++y) {
        const QX_Pixel8 *const a = row_of<QX_Pixel8>(picture, y), *const b = row_of<QX_Pixel8>(truth, y);
        for (int x = 0; x < truth.width; ++x) {
            add(a[x].red, b[x].red);
            add(a[x].green, b[x].green);
            add(a[x].blue, b[x].blue);
        }
    }
    const double count = 3.0 * truth.width * truth.height;
    return sum == 0 ? std::numeric_limits<double>::infinity() : 10 * std::log10(255.0 * 255.0 * count / sum);
}

double ssim(const QX_World& picture, const QX_World& truth) {
    constexpr double c1 = 0.01 * 255 * 0.01 * 255, c2 = 0.03 * 255 * 0.03 * 255;
    if (truth.width < kWindow || truth.height < kWindow) return std::numeric_limits<double>::quiet_NaN();
    const Window window = gaussian();
    const Plane a = luma_of(picture), b = luma_of(truth);
    const Plane mean_a = means(a, nullptr, window), mean_b = means(b, nullptr, window);
    const Plane aa = means(a, &a, window), bb = means(b, &b, window), ab = means(a, &b, window);
    double sum = 0;
    for (std::size_t i = 0; i < ab.values.size(); ++i) {
        const double x = mean_a.values[i], y = mean_b.values[i];
        const double spread = aa.values[i] - x * x + bb.values[i] - y * y, common = ab.values[i] - x * y;
        sum += (2 * x * y + c1) * (2 * common + c2) / ((x * x + y * y + c1) * (spread + c2));
    }
    return sum / static_cast<double>(ab.values.size());
}

double end_point_error(const scene::FlowField& field, const scene::FlowField& truth) {
    double sum = 0;
    std::int64_t count = 0;
    for (std::size_t i = 0; i < truth.vectors.size(); ++i) {
        const auto &a = field.vectors[i], &b = truth.vectors[i];
        if (!scene::is_known(a) || !scene::is_known(b)) continue;
        sum += std::hypot(a.u - b.u, a.v - b.v);
        ++count;
    }
    return sum / static_cast<double>(count);
}

}  // namespace qx::bench
