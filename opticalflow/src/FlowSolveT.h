// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "opticalflow/src/FlowBlocksT.h"
#include "opticalflow/src/FlowSolve.h"

namespace qx::QX_ISA {

/// Sums over the counted pixels of a block: products of the gradients along x and y and of the difference in time.
struct Structure {
    Floats xx{}, yy{}, xy{}, xt{}, yt{}, tt{}, size{};  ///< `size`: of the differences
    Ints total{}, used{};

    QX_INLINE void add(Mask counts, Mask uses, Floats gx, Floats gy, Floats et) {
        const auto add_to = [uses](Floats& sum, Floats value) QX_LAMBDA { sum += uses ? value : Floats{}; };
        add_to(xx, gx * gx);
        add_to(yy, gy * gy);
        add_to(xy, gx * gy);
        add_to(xt, gx * et);
        add_to(yt, gy * et);
        add_to(tt, et * et);
        add_to(size, size_of(et));
        total += counts ? splat<Ints>(1) : Ints{};
        used += uses ? splat<Ints>(1) : Ints{};
    }
    QX_INLINE void divide() {
        const Floats n = to_float(used);
        xx /= n, yy /= n, xy /= n, xt /= n, yt /= n, tt /= n;
    }
};

/// Rows from the bottom, pixels from the left. The row below and the pixel to the left give the gradients, so the
/// bottom row and the left column count nothing themselves.
QX_INLINE Structure structure_of(const FlowImages& images, const FlowBlocks& blocks, const BlockLanes& block) {
    Structure sums;
    LaneRow row = scratch_row(blocks, 1), below = scratch_row(blocks, 2);
    DisplacedRows rows(images, block, scratch_row(blocks, 0));
    const std::int32_t bottom = block.height - 1;
    rows.begin(bottom + 1);
    Mask has_below{};
    for (std::int32_t j = bottom; j >= 0; --j) {
        const Mask inside = rows.row_lies_inside(j);
        rows.next_upwards(j, row);
        const Mask row_counts = both(inside, has_below);
        if (any(row_counts)) {
            for (std::int32_t i = 1; i < block.width; ++i) {
                const Floats c = row[i];
                const Mask counts = both(row_counts, rows.column_lies_inside(i));
                const Mask uses = images.mask == nullptr ? counts : both(counts, rows.unmasked(images.mask, i, j));
                sums.add(counts, uses, c - row[i - 1], c - below[i], rows.second(i, j) - c);
            }
        }
        std::swap(row, below);
        has_below = inside;
    }
    return sums;
}

/// What a step changes of a vector.
struct FlowMove {
    Floats x, y;
};

QX_INLINE Floats larger_size(Floats a, Floats b) { return size_of(a) > size_of(b) ? size_of(a) : size_of(b); }

/// Both gradients tell: the matrix of the structure inverted, made safer by the difference in time.
QX_INLINE FlowMove full_move(const Structure& s, Floats ratio) {
    const Floats r = ratio * splat<Floats>(0.1f) * s.tt;
    const Floats a = s.yy + r, b = s.xx + r;
    const Floats d = 1.0f / (a * b - s.xy * s.xy);
    const Floats mixed = -(d * s.xy);
    return {s.yt * mixed + s.xt * d * a, s.yt * d * b + s.xt * mixed};
}

/// One direction alone tells, that of the larger eigenvalue.
QX_INLINE FlowMove edge_move(const Structure& s, Floats l1, Floats l2, Floats big) {
    const Mask takes_first = size_of(l1) > size_of(l2);
    const Floats l = takes_first ? l1 : l2;
    const Floats q = (l - s.xx) / s.xy;
    const Floats n = root(1.0f + q * q);
    // Without a mixed product the axes are the directions: of the greater eigenvalue (1, 0), of the other (0, 1).
    const Floats one = splat<Floats>(1.0f);
    const Floats along_x = l1 < l2 ? (takes_first ? Floats{} : one) : (takes_first ? one : Floats{});
    const Mask has_axes = s.xy == Floats{};
    const Floats ex = has_axes ? along_x : 1.0f / n;
    const Floats ey = has_axes ? one - along_x : q / n;
    const Floats step = (ex * s.xt + ey * s.yt) / big;
    return {step * ex, step * ey};
}

inline void solve(const FlowImages& images, const FlowBlocks& blocks, float threshold, HvVec2* moved, FlowStep* steps) {
    for (std::int32_t at = 0; at < blocks.count; at += lanes_in<Floats>) {
        const BlockLanes block(blocks, at);
        Structure s = structure_of(images, blocks, block);
        const Mask refused = s.used * 6 <= s.total;
        const Floats mean = s.size / to_float(s.used);
        const Mask converged = mean < splat<Floats>(threshold);
        s.divide();
        const Floats trace = s.xx + s.yy;
        const Floats radicand = trace * trace - 4.0f * (s.xx * s.yy - s.xy * s.xy);
        const Floats disc = root(radicand < Floats{} ? Floats{} : radicand);
        const Floats l1 = (trace - disc) * 0.5f, l2 = (trace + disc) * 0.5f;
        const Floats big = larger_size(l1, l2), small = size_of(l1) > size_of(l2) ? size_of(l2) : size_of(l1);
        const Floats ratio = big / small;
        const Mask is_full = both(small != Floats{}, ratio <= splat<Floats>(10.0f));
        const FlowMove full = full_move(s, ratio), edge = edge_move(s, l1, l2, big);
        const Mask flat = both(is_full == Mask{}, big <= Floats{});
        const Floats x = block.x - (is_full ? full.x : edge.x), y = block.y - (is_full ? full.y : edge.y);
        const auto put = [&](int lane, FlowStep step, float vx, float vy) {
            steps[at + lane] = step;
            moved[at + lane] = {vx, vy};
        };
        block.for_each([&](int lane, const auto& of) QX_LAMBDA {
            if (of(refused)) {
                put(lane, FlowStep::refused, of(block.x), of(block.y));
            } else if (of(converged)) {
                put(lane, FlowStep::converged, of(block.x), of(block.y));
            } else if (of(flat)) {
                put(lane, FlowStep::refused, of(block.x), of(block.y));
            } else {
                put(lane, of(mean) > 0.0f ? FlowStep::moved : FlowStep::converged, of(x), of(y));
            }
        });
    }
}

/// Rows downwards, pixels from the left.
inline void block_errors(const FlowImages& images, const FlowBlocks& blocks, float* errors) {
    const std::int32_t quarter = blocks.width * blocks.height / 4;
    for (std::int32_t at = 0; at < blocks.count; at += lanes_in<Floats>) {
        const BlockLanes block(blocks, at);
        Floats sum{};
        Ints count{};
        const LaneRow row = scratch_row(blocks, 1);
        DisplacedRows rows(images, block, scratch_row(blocks, 0));
        rows.begin(0);
        for (std::int32_t j = 0; j < block.height; ++j) {
            const Mask inside = rows.row_lies_inside(j);
            rows.next_downwards(j, row);
            for (std::int32_t i = 0; i < block.width; ++i) {
                Mask counts = both(inside, rows.column_lies_inside(i));
                if (images.mask != nullptr) counts = both(counts, rows.unmasked(images.mask, i, j));
                sum += counts ? size_of(rows.second(i, j) - row[i]) : Floats{};
                count += counts ? splat<Ints>(1) : Ints{};
            }
        }
        const Floats error = count > splat<Ints>(quarter) ? sum / to_float(count) : splat<Floats>(INVALID_VECTOR);
        block.for_each([&](int lane, const auto& of) QX_LAMBDA { errors[at + lane] = of(error); });
    }
}

extern const FlowSolve flow_solve;
const FlowSolve flow_solve{.solve = &solve, .errors = &block_errors};

}  // namespace qx::QX_ISA
