// SPDX-License-Identifier: Apache-2.0
// A row of area samples of 8 bits whose boxes are whole pixels, a multiple of four of them wide, for one level: that of
// a reduction to a quarter. Four neighbours become the sums of their box at once; all sums are exact.
#pragma once

#include "QX/sampling/QX_AreaRunT.h"
#include "QX/sampling/QX_AreaSums8.h"
#include "QX/sampling/QX_RunKernels.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/Scattered.h"

namespace qx::QX_ISA {

using Sums8 = Wide<std::int32_t>;  // of each box in turn: alpha, and the colours times alpha
/// Boxes side by side: four registers, whose lanes are turned over when they are finished.
inline constexpr int kBoxes8 = lanes_in<Sums8>, kBoxesPerSums = kBoxes8 / 4;

/// The pixels of as many boxes. Colours don't pass full scale, since no colour of a box does.
QX_INLINE Sums8 finish_boxes(const Sums8 (&sums)[4], double scale) {
    using Half = Vector<std::int32_t, kRegister / 2>;
    using D = Wide<double>;
    const Planes<Sums8> turned = transposed(sums[0], sums[1], sums[2], sums[3]);
    Half part[4][2], pixels[2];
    __builtin_memcpy(part, &turned, sizeof part);
    for (int k = 0; k < 2; ++k) {
        const D total = to_double(part[0][k]);
        const D share = 1.0 / (total == 0 ? splat<D>(1) : total);
        const auto rounded = [](D v) QX_LAMBDA { return narrowed_to_int(v + 0.5); };
        const auto colour = [&](int channel) QX_LAMBDA { return rounded(to_double(part[channel][k]) * share); };
        const Half visible =
            rounded(lesser(total * scale, splat<D>(255))) | colour(1) << 8 | colour(2) << 16 | colour(3) << 24;
        pixels[k] = part[0][k] == 0 ? Half{} : visible;
    }
    Sums8 out;
    __builtin_memcpy(&out, pixels, sizeof out);
    return reordered(out, out, [](int box) { return box % kBoxesPerSums * 4 + box / kBoxesPerSums; });
}

/// Rows of boxes side by side.
struct BoxRows {
    const std::byte* top;
    std::ptrdiff_t rowbytes, step;
    std::int32_t rows, fours;

    /// @param ahead  bytes to what is asked for meanwhile
    /// @tparam Adjacent  whether the boxes are four pixels wide and touch each other
    template <bool Adjacent> QX_INLINE void sum(const std::byte* first, std::ptrdiff_t ahead, Sums8 (&sums)[4]) const {
        for (std::int32_t row = 0; row < rows; ++row, first += rowbytes) {
            const std::byte* at = first;
            for (std::int32_t i = 0; i < fours; ++i, at += 16) {
                for (int k = 0; k < 4; ++k) {
                    const auto place = [&](int box) QX_LAMBDA { return at + (k * kBoxesPerSums + box) * step; };
                    const Sums8 pixels = Adjacent ? load_lanes<Sums8>(place(0)) : load_sixteens<Sums8>(place);
                    if (Adjacent) __builtin_prefetch(place(0) + ahead);
                    sums[k] += sampling::shares_of_four(pixels);
                }
            }
        }
    }
};

template <bool Adjacent>
QX_INLINE std::int32_t finish_rows(const BoxRows& boxes, std::int32_t count, double scale, std::uint32_t* sum,
                                   QX_Pixel8* out) {
    Sums8 alphas{};
    std::int32_t i = 0;
    for (; i + kBoxes8 <= count; i += kBoxes8) {
        Sums8 sums[4] = {};
        const std::ptrdiff_t left = (count - i) * boxes.step;  // bytes; behind them the next row of boxes is asked for
        const std::ptrdiff_t next = left > kBytesAhead ? 0 : boxes.rows * boxes.rowbytes - count * boxes.step;
        boxes.sum<Adjacent>(boxes.top + i * boxes.step, kBytesAhead + next, sums);
        const Sums8 pixels = finish_boxes(sums, scale);
        store_lanes(out + i, pixels);
        alphas += pixels & 255;
    }
    for (int k = 0; k < kBoxes8; ++k) *sum += static_cast<std::uint32_t>(alphas[k]);
    return i;
}

/// As area_run8, which takes what does not fit here.
inline void area_boxes8(std::int32_t count, FixedPoint at, std::int32_t step, const QX_SampPB& block,
                        std::uint32_t* sum, QX_Pixel8* out) {
    constexpr std::int32_t most = INT32_MAX / (255 * 255);  // pixels that a lane can sum
    const QX_EffectWorld& world = *block.src;
    const sampling::Extent across(at.x, block.x_radius);
    const sampling::Extent down = sampling::Extent(at.y, block.y_radius).clipped(world.height);
    const std::int32_t columns = across.length() >> 16, rows = down.length() >> 16;
    std::int32_t done = 0;
    if ((step & 0xFFFF) == 0 && sampling::is_small_and_whole(across, down) && columns % 4 == 0 &&
        std::int64_t{columns} * rows <= most) {
        const BoxRows boxes{static_cast<const std::byte*>(world.data) + std::ptrdiff_t{down.first()} * world.rowbytes +
                                std::ptrdiff_t{across.first()} * 4,
                            world.rowbytes, std::ptrdiff_t{step >> 16} * 4, rows, columns / 4};
        const double scale = 0.25 / (block.x_radius * 0x1p-16 * (block.y_radius * 0x1p-16));
        done = columns == 4 && step == 4 * kFixedOne ? finish_rows<true>(boxes, count, scale, sum, out)
                                                     : finish_rows<false>(boxes, count, scale, sum, out);
    }
    if (done < count) {
        avx2::area_run8(count - done, {at.x + step * done, at.y}, step, block, sum, out + done);
    }
}

}  // namespace qx::QX_ISA
