// SPDX-License-Identifier: Apache-2.0
// Blocks of two images, a lane each, one of them displaced by a vector of its own.
#pragma once

#include "opticalflow/src/FlowLanesT.h"
#include "opticalflow/src/FlowSolve.h"

namespace qx::QX_ISA {

/// The blocks from one of a list on; lanes beyond the last repeat it.
class BlockLanes {
public:
    QX_INLINE BlockLanes(const FlowBlocks& blocks, std::int32_t first)
        : width(blocks.width), height(blocks.height), count_(lesser(blocks.count - first, lanes_in<Floats>)) {
        std::int32_t l[lanes_in<Floats>], t[lanes_in<Floats>];
        float vx[lanes_in<Floats>], vy[lanes_in<Floats>];
        for (std::int32_t i = 0; i < lanes_in<Floats>; ++i) {
            const std::int32_t k = first + lesser(i, count_ - 1);
            l[i] = blocks.left[k];
            t[i] = blocks.top[k];
            vx[i] = blocks.vectors[k].x;
            vy[i] = blocks.vectors[k].y;
        }
        left = load_lanes<Ints>(l);
        top = load_lanes<Ints>(t);
        x = load_lanes<Floats>(vx);
        y = load_lanes<Floats>(vy);
    }

    /// Calls body(lane, of) for each block, where of(v) is the lane of a vector.
    template <class Body> QX_INLINE void for_each(const Body& body) const {
        for (std::int32_t i = 0; i < count_; ++i) {
            body(i, [i](const auto& v) QX_LAMBDA {
                if constexpr (is_wide<std::remove_cvref_t<decltype(v)>>) {
                    return v[i];
                } else {
                    return v;
                }
            });
        }
    }

    std::int32_t width, height;
    Ints left, top;
    Floats x, y;

private:
    std::int32_t count_;
};

/// A row of registers in a caller's memory.
class LaneRow {
public:
    QX_INLINE explicit LaneRow(float* first) : first_(first) {}
    QX_INLINE Floats operator[](std::int32_t i) const { return load_lanes<Floats>(first_ + i * lanes_in<Floats>); }
    QX_INLINE void set(std::int32_t i, Floats v) const { store_lanes(first_ + i * lanes_in<Floats>, v); }

private:
    float* first_;
};
QX_INLINE LaneRow scratch_row(const FlowBlocks& blocks, std::int32_t which) {
    return LaneRow(blocks.scratch + which * (blocks.width * lanes_in<Floats>));
}

/// Rows of the first image at the displaced places of the blocks' pixels. A place mixes a row with the one below it, so
/// that neighbouring rows of a block share one, which is kept mixed along x.
class DisplacedRows {
public:
    QX_INLINE DisplacedRows(const FlowImages& images, const BlockLanes& block, LaneRow kept)
        : images_(images), block_(block), kept_(kept) {
        const Places across = places_of(-block.x), down = places_of(block.y);
        still_ = both(block.x == Floats{}, block.y == Floats{});
        fx_ = across.fraction;
        fy_ = down.fraction;
        left_ = block.left + across.whole;
        top_ = block.top + down.whole;
    }

    /// Before the first row: that below it when rows go upwards, itself when they go downwards.
    QX_INLINE void begin(std::int32_t j) {
        read(j, [&](std::int32_t i, Floats v) QX_LAMBDA { kept_.set(i, v); });
    }
    QX_INLINE void next_upwards(std::int32_t j, LaneRow row) {
        read(j, [&](std::int32_t i, Floats above) QX_LAMBDA {
            row.set(i, still_ ? above : mix(above, kept_[i], fy_));
            kept_.set(i, above);
        });
    }
    QX_INLINE void next_downwards(std::int32_t j, LaneRow row) {
        read(j + 1, [&](std::int32_t i, Floats below) QX_LAMBDA {
            const Floats here = kept_[i];
            row.set(i, still_ ? here : mix(here, below, fy_));
            kept_.set(i, below);
        });
    }

    QX_INLINE Mask row_lies_inside(std::int32_t j) const { return lies_in(top_ + j, images_.height); }
    QX_INLINE Mask column_lies_inside(std::int32_t i) const { return lies_in(left_ + i, images_.width); }
    QX_INLINE Floats second(std::int32_t i, std::int32_t j) const { return pixel(images_.second, i, j); }
    QX_INLINE Mask unmasked(const float* mask, std::int32_t i, std::int32_t j) const {
        return (pixel(mask, i, j) > splat<Floats>(0.5f)) == Mask{};
    }

private:
    QX_INLINE Floats pixel(const float* image, std::int32_t i, std::int32_t j) const {
        return gather_floats(image, (block_.top + j) * splat<Ints>(images_.width) + block_.left + i);
    }
    /// The row of the first image that row j of the blocks is displaced to, mixed along x.
    template <class Take> QX_INLINE void read(std::int32_t j, const Take& take) const {
        const Ints row = limited(top_ + j, images_.height) * splat<Ints>(images_.width);
        const auto at = [&](std::int32_t i)
                            QX_LAMBDA { return gather_floats(images_.first, row + limited(left_ + i, images_.width)); };
        Floats here = at(0);
        for (std::int32_t i = 0; i < block_.width; ++i) {
            const Floats next = at(i + 1);
            take(i, still_ ? here : mix(here, next, fx_));
            here = next;
        }
    }

    const FlowImages& images_;
    const BlockLanes& block_;
    LaneRow kept_;
    Mask still_;
    Floats fx_, fy_;
    Ints left_, top_;
};

}  // namespace qx::QX_ISA
