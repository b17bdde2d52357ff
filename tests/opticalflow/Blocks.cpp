// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "tests/opticalflow/FlowModel.h"

namespace flow_model {

float block_error(const Image& first, const Image& second, const Block& block, Vec v) {
    const float dx = -v.x, dy = v.y;
    const Whole u = whole(dx), w = whole(dy);
    const bool still = dx == 0 && dy == 0;
    float sum = 0;
    int count = 0;
    for (int y = block.top; y < block.bottom; ++y) {
        for (int x = block.left; x < block.right; ++x) {
            const int i = x + u.index, j = y + w.index;
            if (i < 0 || i >= first.w || j < 0 || j >= first.h) continue;
            const float c = still ? first.read(x, y) : first.mix(i, j, u.fraction, w.fraction);
            sum += std::fabs(second.read(x, y) - c);
            ++count;
        }
    }
    const int pixels = (block.right - block.left) * (block.bottom - block.top);
    return count > pixels / 4 ? sum / real(count) : kInvalid;
}

namespace {

struct Choice {
    Vec v;
    float data;
};

/// The cheapest of two or more candidates.
Choice cheapest(const List& list, Vec own, Vec mean, float cached, const Weights& weights,
                const std::function<float(Vec)>& error) {
    Choice choice{own, kInvalid};
    float best = kInvalid;
    for (const Vec& c : list) {
        if (best == 0) break;
        const float s = (std::fabs(c.x - mean.x) + std::fabs(c.y - mean.y)) / 400.0F / 255.0F * weights.smoothness;
        if (s >= best) continue;
        const float e = c == own && cached != kInvalid ? cached : error(c);
        const float d = e == kInvalid ? 2.0F * weights.data : e * weights.data;
        float total = d + s;
        if (total < 1e-06F) total = 0;
        if (total < best) {
            best = total;
            choice = {c, d};
        }
    }
    return choice;
}

}  // namespace

void smooth_blocks(Field& grid, Image& costs, const Monitor& monitor, const Image& first, const Image& second, int size,
                   const Weights& weights, const Parts& parts) {
    each_part(parts, grid.h, [&](Rows rows) {
        Random random;
        for (int y = rows.begin; y < rows.end; ++y) {
            for (int x = 0; x < grid.w; ++x) {
                List list = monitor.candidates(x, y);
                if (list.empty()) continue;
                const Vec own = grid.at(x, y);
                list.insert(list.begin(), own);
                list = filtered(list);
                shuffle(list, random);
                if (list.empty()) continue;
                if (list.size() == 1) {
                    if (!(list[0] == own)) costs.at(x, y) = kInvalid;
                    grid.at(x, y) = list[0];
                    continue;
                }
                const Block block = block_of(second, x, y, size);
                const Choice choice = cheapest(list, own, neighbour_mean(monitor.saved, x, y), costs.at(x, y), weights,
                                               [&](Vec v) { return block_error(first, second, block, v); });
                grid.at(x, y) = choice.v;
                costs.at(x, y) = choice.data;
            }
        }
    });
}

void settle_blocks(Field& grid, const Image& first, const Image& second, int size, const Weights& weights,
                   const Parts& parts) {
    Monitor monitor;
    monitor.run(grid);
    Image costs(grid.w, grid.h, kInvalid);
    for (int pass = 0; pass < 5 || (pass < 105 && monitor.saw_invalid); ++pass) {
        smooth_blocks(grid, costs, monitor, first, second, size, weights, parts);
        monitor.run(grid);
    }
    if (monitor.saw_invalid) std::fill(grid.px.begin(), grid.px.end(), Vec{});
}

}  // namespace flow_model
