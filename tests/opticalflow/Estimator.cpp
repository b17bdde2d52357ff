// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

Block block_of(const Image& image, int gx, int gy, int size) {
    Block b{(size - kOverlap) * gx, (size - kOverlap) * gy, 0, 0};
    b.right = b.left + size;
    b.bottom = b.top + size;
    if (b.right > image.w) {
        b.left = std::max(0, b.left - (b.right - image.w));
        b.right = image.w;
    }
    if (b.bottom > image.h) {
        b.top = std::max(0, b.top - (b.bottom - image.h));
        b.bottom = image.h;
    }
    return b;
}

int grid_size(int pixels, int size) {
    return std::max(1, static_cast<int>(std::ceil(real(pixels - kOverlap) / real(size - kOverlap))));
}

namespace {

struct Sums {
    int total = 0, used = 0;
    float xx = 0, yy = 0, xy = 0, xt = 0, yt = 0, tt = 0, a = 0;
};

Sums sums_of(const Image& first, const Image& second, const Block& block, Vec v) {
    const float dx = -v.x, dy = v.y;
    const Whole u = whole(dx), w = whole(dy);
    const bool still = dx == 0 && dy == 0;
    const auto value = [&](int x, int y) {
        return still ? first.read(x, y) : first.mix(x + u.index, y + w.index, u.fraction, w.fraction);
    };
    const auto row_inside = [&](int y) { return y + w.index >= 0 && y + w.index < first.h; };
    Sums s;
    for (int y = block.bottom - 2; y >= block.top; --y) {
        if (!row_inside(y) || !row_inside(y + 1)) continue;
        for (int x = block.left + 1; x < block.right; ++x) {
            if (x + u.index < 0 || x + u.index >= first.w) continue;
            ++s.total;
            ++s.used;
            const float c = value(x, y), gx = c - value(x - 1, y), gy = c - value(x, y + 1);
            const float et = second.read(x, y) - c;
            s.xx += gx * gx;
            s.yy += gy * gy;
            s.xy += gx * gy;
            s.xt += gx * et;
            s.yt += gy * et;
            s.tt += et * et;
            s.a += std::fabs(et);
        }
    }
    return s;
}

/// Along the eigenvector of the larger eigenvalue `l`; `second` tells that it is l2.
Vec aperture_step(const Sums& s, float l1, float l2, float big) {
    const bool second = !(std::fabs(l1) > std::fabs(l2));
    Vec e;
    if (s.xy == 0) {
        e = (l1 < l2) == second ? Vec{1, 0} : Vec{0, 1};
    } else {
        const float q = ((second ? l2 : l1) - s.xx) / s.xy, n = std::sqrt(1.0F + q * q);
        e = {1.0F / n, q / n};
    }
    const float along = (e.x * s.xt + e.y * s.yt) / big;
    return {along * e.x, along * e.y};
}

Vec regular_step(const Sums& s, float big, float small) {
    const float r = ((big / small) * 0.1F) * s.tt;
    const float a = s.yy + r, b = s.xx + r, d = 1.0F / (a * b - s.xy * s.xy);
    return {s.yt * -(d * s.xy) + (s.xt * d) * a, (s.yt * d) * b + s.xt * -(d * s.xy)};
}

}  // namespace

Step solve_step(const Image& first, const Image& second, const Block& block, Vec v, float threshold) {
    Sums s = sums_of(first, second, block, v);
    if (s.used <= s.total / 6) return {{kInvalid, kInvalid}, 0, true};
    const float n = real(s.used), mean = s.a / n;
    if (mean < threshold) return {v, 0, !v.valid()};
    for (float* sum : {&s.xx, &s.yy, &s.xy, &s.xt, &s.yt, &s.tt}) *sum /= n;
    const float tr = s.xx + s.yy, radicand = tr * tr - 4.0F * (s.xx * s.yy - s.xy * s.xy);
    const float disc = radicand < 0 ? 0 : std::sqrt(radicand);
    const float l1 = (tr - disc) * 0.5F, l2 = (tr + disc) * 0.5F;
    const bool first_larger = std::fabs(l1) > std::fabs(l2);
    const float big = std::fabs(first_larger ? l1 : l2), small = std::fabs(first_larger ? l2 : l1);
    Vec step;
    if (small != 0 && big / small <= 10.0F) {
        step = regular_step(s, big, small);
    } else if (big <= 0) {
        return {{kInvalid, kInvalid}, 0, true};
    } else {
        step = aperture_step(s, l1, l2, big);
    }
    return {{v.x - step.x, v.y - step.y}, mean, false};
}

Vec solve(const Image& first, const Image& second, const Block& block, Vec start, float threshold) {
    if (!start.valid()) return start;
    Vec v = start;
    for (int i = 0; i < 10; ++i) {
        const Step step = solve_step(first, second, block, v, threshold);
        if (step.refused) break;
        v = step.v;
        if (!(step.error > 0)) break;
    }
    return v;
}

float quantised(float value, int level) {
    const float s = 0.1F * std::ldexp(1.0F, -level);
    return value == kInvalid ? value : std::floor((value + s / 2.0F) / s) * s;
}

void quantise(Field& grid, int level) {
    for (Vec& v : grid.px) v = {quantised(v.x, level), quantised(v.y, level)};
}

Field zoom_nearest(const Field& from, int w, int h, bool scale_values) {
    Field out(w, h);
    const float sx = real(from.w) / real(w), sy = real(from.h) / real(h);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const Vec v = from.read(static_cast<int>(real(x) * sx), static_cast<int>(real(y) * sy));
            out.at(x, y) = scale_values && v.valid() ? Vec{v.x / sx, v.y / sy} : v;
        }
    }
    return out;
}

Field estimate(const Image& first, const Image& second, const Params& params, const Parts& parts) {
    const int levels = level_count(second.w, second.h);
    const auto firsts = pyramid(first, levels), seconds = pyramid(second, levels);
    const Weights weights = weights_of(params.estimator_smoothness);
    Field grid;
    for (int level = levels - 1; level >= 0; --level) {
        const Image &a = firsts[static_cast<std::size_t>(level)], &b = seconds[static_cast<std::size_t>(level)];
        const int gw = grid_size(b.w, params.block), gh = grid_size(b.h, params.block);
        grid = grid.px.empty() ? Field(gw, gh) : zoom_nearest(grid, gw, gh, true);
        grid.edge = Edge::mirror;
        each_part(parts, gh, [&](Rows rows) {
            for (int gy = rows.begin; gy < rows.end; ++gy) {
                for (int gx = 0; gx < gw; ++gx) {
                    const Block block = block_of(b, gx, gy, params.block);
                    grid.at(gx, gy) = solve(a, b, block, grid.at(gx, gy), params.convergence);
                }
            }
        });
        quantise(grid, level);
        settle_blocks(grid, a, b, params.block, weights, parts);
    }
    Field out = zoom_nearest(grid, second.w, second.h, false);
    out.edge = Edge::clamp;
    return out;
}

}  // namespace flow_model
