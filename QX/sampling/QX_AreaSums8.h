// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Area.h"
#include "QX/sampling/QX_AreaFootprint.h"
#include "QX/sampling/QX_SampleLanesT.h"

/// Sums over a box of 8-bit pixels in integers. A double holds every partial sum below 2^53 units exactly, whatever the
/// order, so that these are the sums of the plain loop.
namespace qx::sampling {

/// Bits of a coverage product that are zero in all of a box's pixels: 16 for each axis without partial pixels.
constexpr int idle_bits(const Extent& across, const Extent& down) {
    const auto whole = [](const Extent& e) { return e.lead() == 0 && e.tail() == 0; };
    return (whole(across) ? 16 : 0) + (whole(down) ? 16 : 0);
}

constexpr bool exact_in_integers(const Extent& across, const Extent& down) {
    constexpr std::int64_t limit = (std::int64_t{1} << 53) / (255 * 255);
    return std::int64_t{across.length()} * down.length() >> idle_bits(across, down) < limit;
}

/// Sums of alpha, and of each colour times alpha.
struct Sums8 {
    std::uint64_t channel[4] = {};
    void add(__m128i sums, std::uint64_t weight) {
        std::uint32_t part[4];
        std::memcpy(part, &sums, sizeof part);
        for (int i = 0; i < 4; ++i) channel[i] += part[i] * weight;
    }
};

/// Two pixels as words: colours times alpha, and alpha itself.
QX_INLINE __m128i shares(__m128i words) {
    const __m128i alphas = _mm_shufflehi_epi16(_mm_shufflelo_epi16(words, 0), 0);
    const __m128i one = _mm_set1_epi64x(1), colours = _mm_set1_epi64x(~0xFFFFLL);
    return _mm_mullo_epi16(alphas, _mm_or_si128(_mm_and_si128(words, colours), one));
}

/// Adds a run of pixels to four 32-bit sums.
QX_INLINE __m128i add_run(__m128i sums, const std::byte* at, std::int32_t count) {
    const __m128i zero = _mm_setzero_si128();
    for (; count >= 4; count -= 4, at += 16) {
        const auto pixels = load_at<__m128i>(at);
        const __m128i a = shares(_mm_unpacklo_epi8(pixels, zero)), b = shares(_mm_unpackhi_epi8(pixels, zero));
        const __m128i low = _mm_add_epi32(_mm_unpacklo_epi16(a, zero), _mm_unpacklo_epi16(b, zero));
        const __m128i high = _mm_add_epi32(_mm_unpackhi_epi16(a, zero), _mm_unpackhi_epi16(b, zero));
        sums = _mm_add_epi32(sums, _mm_add_epi32(low, high));
    }
    for (; count > 0; --count, at += 4) {
        const __m128i pixel = _mm_cvtsi32_si128(load_at<std::int32_t>(at));
        sums = _mm_add_epi32(sums, _mm_unpacklo_epi16(shares(_mm_unpacklo_epi8(pixel, zero)), zero));
    }
    return sums;
}

/// Adds columns * rows whole pixels with one weight.
inline void add_zone(const QX_EffectWorld& world, std::int32_t column, std::int32_t columns, std::int32_t row,
                     std::int32_t rows, std::uint64_t weight, Sums8& total) {
    constexpr std::int32_t most = 0xFFFFFFFF / (255 * 255);  // pixels that 32 bits can sum
    const std::byte* line = pixel_address(world, column, row, sizeof(QX_Pixel8));
    __m128i sums = _mm_setzero_si128();
    std::int32_t room = most;
    for (std::int32_t i = 0; i < rows; ++i, line += world.rowbytes) {
        if (room < columns) {
            total.add(sums, weight);
            sums = _mm_setzero_si128();
            room = most;
        }
        room -= columns;
        sums = add_run(sums, line, columns);
    }
    total.add(sums, weight);
}

/// One axis of a box in up to three parts: a partial pixel, whole ones, a partial pixel.
struct Zones {
    struct Zone {
        std::int32_t first, count, coverage;
    };
    Zone zone[3];
    int count = 0;

    explicit Zones(const Extent& e) {
        const std::int32_t from = e.first() + (e.lead() != 0 ? 1 : 0);
        if (e.lead() != 0) zone[count++] = {e.first(), 1, e.lead()};
        if (e.last() > from) zone[count++] = {from, e.last() - from, kOne};
        if (e.tail() != 0) zone[count++] = {e.last(), 1, e.tail()};
    }
};

inline Double4 box_in_integers(const QX_EffectWorld& world, const Extent& across, const Extent& down) {
    const Zones columns(across), rows(down);
    const int idle = idle_bits(across, down);
    Sums8 total;
    for (int k = 0; k < rows.count; ++k) {
        const auto& r = rows.zone[k];
        for (int i = 0; i < columns.count; ++i) {
            const auto& c = columns.zone[i];
            const std::uint64_t weight = static_cast<std::uint64_t>(std::int64_t{r.coverage} * c.coverage) >> idle;
            add_zone(world, c.first, c.count, r.first, r.count, weight, total);
        }
    }
    const double unit = static_cast<double>(std::int64_t{1} << idle) * 0x1p-32;
    const auto sum = [&](int i) { return static_cast<double>(static_cast<std::int64_t>(total.channel[i])) * unit; };
    return {Double2{sum(0), sum(1)}, Double2{sum(2), sum(3)}};
}

}  // namespace qx::sampling
