// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Area.h"
#include "QX/sampling/QX_AreaFootprint.h"
#include "QX/sampling/QX_SampleLanesT.h"
#include "lanes/Shuffles.h"

/// Sums over a box of 8-bit pixels in integers. A double holds every partial sum below 2^53 units exactly, whatever the
/// order, so that these are the sums of the plain loop.
namespace qx::sampling {

constexpr bool is_whole(Extent e) { return e.lead() == 0 && e.tail() == 0; }

/// @param idle  bits of a coverage product that are zero in all of the boxes' pixels: 16 for each axis without partial
///              pixels
constexpr bool exact_in_integers(Extent across, Extent down, int idle) {
    constexpr std::int64_t limit = (std::int64_t{1} << 53) / (255 * 255);
    return std::int64_t{across.length()} * down.length() >> idle < limit;
}
constexpr bool exact_in_integers(Extent across, Extent down) {
    return exact_in_integers(across, down, (is_whole(across) ? 16 : 0) + (is_whole(down) ? 16 : 0));
}

/// Two pixels, as words that alternate between them: sums of colours times alpha, and of alpha itself, in 32 bits.
QX_INLINE __m128i shares(__m128i words) {
    const __m128i colours = _mm_setr_epi32(0, -1, -1, -1), ones = _mm_setr_epi32(0x10001, 0, 0, 0);
    const __m128i alphas = _mm_shuffle_epi32(words, 0);
    return _mm_madd_epi16(words, _mm_or_si128(_mm_and_si128(alphas, colours), ones));
}

/// The same of two pixels of each four, from the byte `first` on, in registers of any width that shuffle bytes.
template <int first, class V> QX_INLINE V shares_of_two(V pixels) {
    constexpr int a = first, r = a + 1, g = a + 2, b = a + 3, n = 4;  // n leads to the neighbour
    const V words = shuffle_bytes<a, -1, a + n, -1, r, -1, r + n, -1, g, -1, g + n, -1, b, -1, b + n, -1>(pixels);
    const V alphas = shuffle_bytes<-1, -1, -1, -1, a, -1, a + n, -1, a, -1, a + n, -1, a, -1, a + n, -1>(pixels);
    return multiply_add(words, alphas | repeated<V>(_mm_setr_epi32(0x10001, 0, 0, 0)));
}
template <class V> QX_INLINE V shares_of_four(V pixels) { return shares_of_two<0>(pixels) + shares_of_two<8>(pixels); }

/// Adds a run of pixels to four 32-bit sums.
QX_INLINE __m128i add_run(__m128i sums, const std::byte* at, std::int32_t count) {
    const __m128i zero = _mm_setzero_si128();
    for (; count >= 4; count -= 4, at += 16) {
        const auto pixels = load_at<__m128i>(at);
        const __m128i pairs = _mm_unpacklo_epi8(_mm_shuffle_epi32(pixels, 0x08), _mm_shuffle_epi32(pixels, 0x0D));
        sums = _mm_add_epi32(sums, shares(_mm_unpacklo_epi8(pairs, zero)));
        sums = _mm_add_epi32(sums, shares(_mm_unpackhi_epi8(pairs, zero)));
    }
    for (; count > 0; --count, at += 4) {
        const __m128i pixel = _mm_unpacklo_epi8(_mm_cvtsi32_si128(load_at<std::int32_t>(at)), zero);
        sums = _mm_add_epi32(sums, shares(_mm_unpacklo_epi16(pixel, zero)));
    }
    return sums;
}

/// 32-bit sums without a sign, exactly.
QX_INLINE Double4 to_double(__m128i sums) {
    const __m128i high = _mm_set1_epi32(0x43300000);  // 2^52 and the sum make a double
    const Double2 base{0x1p52, 0x1p52};
    return {(Double2)_mm_unpacklo_epi32(sums, high) - base, (Double2)_mm_unpackhi_epi32(sums, high) - base};
}

/// Adds columns * rows pixels of one weight.
QX_INLINE void add_zone(const QX_EffectWorld& world, std::int32_t column, std::int32_t columns, std::int32_t row,
                        std::int32_t rows, double weight, Double4& total) {
    constexpr std::int32_t most = 0xFFFFFFFF / (255 * 255);  // pixels that 32 bits can sum
    const std::byte* line = pixel_address(world, column, row, sizeof(QX_Pixel8));
    __m128i sums = _mm_setzero_si128();
    std::int32_t room = most;
    for (; rows > 0; --rows, line += world.rowbytes) {
        if (room < columns) {
            total = total + to_double(sums) * splat4(weight);
            sums = _mm_setzero_si128();
            room = most;
        }
        room -= columns;
        sums = add_run(sums, line, columns);
    }
    total = total + to_double(sums) * splat4(weight);
}

/// True for a box of whole pixels which 32 bits can sum: that of a reduction by a whole number.
QX_INLINE constexpr bool is_small_and_whole(Extent across, Extent down) {
    return ((across.low | across.high | down.low | down.high) & 0xFFFF) == 0 &&
           std::int64_t{across.length()} * down.length() >> 32 <= 0xFFFFFFFF / (255 * 255);
}

QX_INLINE Double4 small_whole_box(const QX_EffectWorld& world, Extent across, Extent down) {
    const std::int32_t columns = across.last() - across.first();
    const std::byte* line = pixel_address(world, across.first(), down.first(), sizeof(QX_Pixel8));
    __m128i sums = _mm_setzero_si128();
    for (std::int32_t rows = down.last() - down.first(); rows > 0; --rows, line += world.rowbytes) {
        _mm_prefetch(reinterpret_cast<const char*>(line) + 1024, _MM_HINT_T0);
        sums = add_run(sums, line, columns);
    }
    return to_double(sums);
}

/// One axis of a box in up to three parts: a partial pixel, whole ones, a partial pixel.
struct Zones {
    struct Zone {
        std::int32_t first, count, coverage;
    };
    Zone zone[3];
    int count = 0;

    QX_INLINE explicit Zones(const Extent& e) {
        const std::int32_t from = e.first() + (e.lead() != 0 ? 1 : 0);
        if (e.lead() != 0) zone[count++] = {e.first(), 1, e.lead()};
        if (e.last() > from) zone[count++] = {from, e.last() - from, kOne};
        if (e.tail() != 0) zone[count++] = {e.last(), 1, e.tail()};
    }
};

[[gnu::noinline]] inline Double4 box_in_integers(const QX_EffectWorld& world, Extent across, Extent down) {
    const Zones columns(across), rows(down);
    Double4 total{};
    for (int k = 0; k < rows.count; ++k) {
        const auto& r = rows.zone[k];
        for (int i = 0; i < columns.count; ++i) {
            const auto& c = columns.zone[i];
            const double weight = static_cast<double>(r.coverage) * c.coverage * 0x1p-32;
            add_zone(world, c.first, c.count, r.first, r.count, weight, total);
        }
    }
    return total;
}

}  // namespace qx::sampling
