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

/// Bytes of each sixteen by their place there; none for a negative place.
QX_INLINE Sums8 shuffle_bytes(Sums8 v, __m128i places) {
#ifdef __AVX512BW__
    return (Sums8)_mm512_shuffle_epi8((__m512i)v, _mm512_broadcast_i32x4(places));
#else
    return (Sums8)_mm256_shuffle_epi8((__m256i)v, _mm256_broadcastsi128_si256(places));
#endif
}
/// Products of words, two neighbours added.
QX_INLINE Sums8 multiply_add(Sums8 x, Sums8 y) {
#ifdef __AVX512BW__
    return (Sums8)_mm512_madd_epi16((__m512i)x, (__m512i)y);
#else
    return (Sums8)_mm256_madd_epi16((__m256i)x, (__m256i)y);
#endif
}

/// Lanes in another order.
QX_INLINE Sums8 permuted(Sums8 v, Sums8 order) {
#ifdef __AVX512BW__
    return (Sums8)_mm512_permutexvar_epi32((__m512i)order, (__m512i)v);
#else
    return (Sums8)_mm256_permutevar8x32_epi32((__m256i)v, (__m256i)order);
#endif
}

/// Two pixels of each four, from the byte `first` on: their channels side by side, times both alphas, or once.
template <char first> QX_INLINE Sums8 shares_of_two(Sums8 pixels) {
    constexpr char a = first, r = a + 1, g = a + 2, b = a + 3, n = 4;  // n leads to the neighbour
    const __m128i channels = _mm_setr_epi8(a, -1, a + n, -1, r, -1, r + n, -1, g, -1, g + n, -1, b, -1, b + n, -1);
    const __m128i alphas = _mm_setr_epi8(-1, -1, -1, -1, a, -1, a + n, -1, a, -1, a + n, -1, a, -1, a + n, -1);
    const Sums8 once =
        shuffle_bytes(splat<Sums8>(0x10001), _mm_setr_epi8(0, 1, 2, 3, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    return multiply_add(shuffle_bytes(pixels, channels), shuffle_bytes(pixels, alphas) | once);
}

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
    Sums8 out, order{};
    __builtin_memcpy(&out, pixels, sizeof out);
    for (int box = 0; box < kBoxes8; ++box) order[box] = box % kBoxesPerSums * 4 + box / kBoxesPerSums;
    return permuted(out, order);
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
                    sums[k] += shares_of_two<0>(pixels) + shares_of_two<8>(pixels);
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
