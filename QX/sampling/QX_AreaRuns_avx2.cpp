// SPDX-License-Identifier: Apache-2.0
// A row of area samples of 8 bits: first the columns of their common rows are summed, some hundreds at a time, then the
// columns of each box, then four samples are finished at once. All sums are exact, so that their order is free. What
// stands here beside the kernel is inlined always, so that no other level shares it.
#include <immintrin.h>

#include "QX/sampling/QX_AreaRuns.h"
#include "QX/sampling/QX_AreaSums8.h"
#include "QX/sampling/QX_SampForms.h"

#pragma GCC diagnostic ignored "-Wpsabi"  // vectors stay inside this file

namespace qx::avx2 {
namespace {

using sampling::Extent;
using sampling::kOne;

typedef double Reals [[gnu::vector_size(32)]];
typedef std::int32_t Pixels [[gnu::vector_size(16)]];

constexpr std::int32_t kColumns = 512, kGroup = 8;

/// Of each column alpha, and the colours times alpha: as integers over rows of one weight, and weighed.
struct ColumnSums {
    alignas(64) std::uint32_t whole[kColumns][4];
    alignas(64) double weighed[kColumns][4];
};

/// Adds two rows of eight pixels; sums[k] has pixels k and k + 4.
QX_INLINE void add_pair(__m256i (&sums)[4], __m256i row, __m256i next) {
    const __m256i zero = _mm256_setzero_si256(), ones = _mm256_set1_epi32(0x10001);
    const __m256i low = _mm256_unpacklo_epi8(row, next), high = _mm256_unpackhi_epi8(row, next);
    const __m256i words[4] = {_mm256_unpacklo_epi8(low, zero), _mm256_unpackhi_epi8(low, zero),
                              _mm256_unpacklo_epi8(high, zero), _mm256_unpackhi_epi8(high, zero)};
    for (int k = 0; k < 4; ++k) {
        const __m256i alphas = _mm256_blend_epi32(_mm256_shuffle_epi32(words[k], 0), ones, 0x11);
        sums[k] = _mm256_add_epi32(sums[k], _mm256_madd_epi16(words[k], alphas));
    }
}

/// Adds rows of eight pixels to the sums of their columns, or begins these.
template <int kRows, class Load>
QX_INLINE void add_group(const std::byte* at, std::ptrdiff_t rowbytes, bool begins, std::uint32_t (*sums)[4],
                         const Load& load) {
    auto* const to = reinterpret_cast<__m256i*>(sums);
    __m256i total[4] = {};
    for (int row = 0; row < kRows; ++row) {  // the next block of columns: rows are a few bytes of many pages
        _mm_prefetch(reinterpret_cast<const char*>(at + row * rowbytes) + kColumns * 4, _MM_HINT_T0);
    }
    for (int row = 0; row < kRows; row += 2) {
        const std::byte* line = at + row * rowbytes;
        add_pair(total, load(line), row + 1 < kRows ? load(line + rowbytes) : _mm256_setzero_si256());
    }
    const __m256i in_order[4] = {
        _mm256_permute2x128_si256(total[0], total[1], 0x20), _mm256_permute2x128_si256(total[2], total[3], 0x20),
        _mm256_permute2x128_si256(total[0], total[1], 0x31), _mm256_permute2x128_si256(total[2], total[3], 0x31)};
    for (int k = 0; k < 4; ++k) {
        _mm256_store_si256(to + k, begins ? in_order[k] : _mm256_add_epi32(_mm256_load_si256(to + k), in_order[k]));
    }
}

template <int kRows>
QX_INLINE void add_rows(const std::byte* at, std::ptrdiff_t rowbytes, std::int32_t columns, bool begins,
                        std::uint32_t (*sums)[4]) {
    std::int32_t i = 0;
    for (; i + kGroup <= columns; i += kGroup, at += kGroup * 4) {
        add_group<kRows>(
            at, rowbytes, begins, sums + i, [](const std::byte* p) __attribute__((always_inline)) {
                return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
            });
    }
    if (i == columns) return;
    const __m256i left = _mm256_cmpgt_epi32(_mm256_set1_epi32(columns - i), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    add_group<kRows>(
        at, rowbytes, begins, sums + i, [left](const std::byte* p) __attribute__((always_inline)) {
            return _mm256_maskload_epi32(reinterpret_cast<const int*>(p), left);  // a row ends where it ends
        });
}

/// Columns over `rows` rows. A few at a time pass through the sums: tall boxes would lose the cache column by column.
void sum_columns(const std::byte* at, std::ptrdiff_t rowbytes, std::int32_t rows, std::int32_t columns,
                 std::uint32_t (*sums)[4]) {
    if (rows <= 0) __builtin_memset(sums, 0, sizeof *sums * static_cast<std::size_t>(columns));
    for (bool begins = true; rows > 0; begins = false) {
        const int now = rows >= 4 ? 4 : rows >= 2 ? 2 : 1;
        if (now == 4) add_rows<4>(at, rowbytes, columns, begins, sums);
        if (now == 2) add_rows<2>(at, rowbytes, columns, begins, sums);
        if (now == 1) add_rows<1>(at, rowbytes, columns, begins, sums);
        rows -= now;
        at += now * rowbytes;
    }
}

/// Integers without a sign, exactly.
QX_INLINE Reals to_reals(__m128i sums) {
    const __m256i base = _mm256_set1_epi64x(0x4330000000000000);  // 2^52: with the sum below it a double
    return (Reals)_mm256_or_si256(_mm256_cvtepu32_epi64(sums), base) - (Reals)base;
}

/// Columns over rows of up to three weights.
void weigh_columns(const std::byte* top, std::ptrdiff_t rowbytes, const sampling::Zones& rows, std::int32_t columns,
                   ColumnSums& sums) {
    __builtin_memset(sums.weighed, 0, sizeof *sums.weighed * static_cast<std::size_t>(columns));
    for (int k = 0; k < rows.count; ++k) {
        const auto& zone = rows.zone[k];
        const double weight = zone.coverage * 0x1p-16;
        sum_columns(top + zone.first * rowbytes, rowbytes, zone.count, columns, sums.whole);
        for (std::int32_t i = 0; i < columns; ++i) {
            const auto from = reinterpret_cast<const __m128i*>(sums.whole[i]);
            auto& to = reinterpret_cast<Reals&>(sums.weighed[i]);
            to = to + to_reals(_mm_load_si128(from)) * weight;
        }
    }
}

QX_INLINE Reals sum_whole(const std::uint32_t (*sums)[4], std::int32_t columns) {
    __m256i pairs = _mm256_setzero_si256();
    for (; columns >= 2; columns -= 2, sums += 2) {
        pairs = _mm256_add_epi32(pairs, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(sums)));
    }
    __m128i total = _mm_add_epi32(_mm256_castsi256_si128(pairs), _mm256_extracti128_si256(pairs, 1));
    if (columns != 0) total = _mm_add_epi32(total, _mm_load_si128(reinterpret_cast<const __m128i*>(sums)));
    return to_reals(total);
}

/// A box from a position beside the sums' first column, in 16.16; it is wider than a pixel.
QX_INLINE Reals sum_weighed(const double (*sums)[4], std::int32_t low, std::int32_t high) {
    const auto column = [sums](std::int32_t i) __attribute__((always_inline)) {
        return *reinterpret_cast<const Reals*>(sums[i]);
    };
    const std::int32_t last = high >> 16, tail = high & 0xFFFF;
    Reals total = column(low >> 16) * ((kOne - (low & 0xFFFF)) * 0x1p-16);
    for (std::int32_t i = (low >> 16) + 1; i < last; ++i) total = total + column(i);
    if (tail != 0) total = total + column(last) * (tail * 0x1p-16);
    return total;
}

QX_INLINE Pixels rounded(Reals v) { return (Pixels)_mm256_cvttpd_epi32((__m256d)(v + 0.5)); }

/// The pixels of four boxes. Colours don't pass full scale, since no colour of a box does.
QX_INLINE Pixels finish(const Reals (&box)[4], double scale) {
    const auto unpack = [&](int i, int shift) __attribute__((always_inline)) {
        const auto a = (__m256d)box[i], b = (__m256d)box[i + 1];
        return shift == 0 ? _mm256_unpacklo_pd(a, b) : _mm256_unpackhi_pd(a, b);
    };
    const __m256d ag = unpack(0, 0), rb = unpack(0, 1), ag2 = unpack(2, 0), rb2 = unpack(2, 1);
    const auto total = (Reals)_mm256_permute2f128_pd(ag, ag2, 0x20);
    const auto clear = total == 0;
    const Reals share = 1.0 / (Reals)_mm256_blendv_pd((__m256d)total, _mm256_set1_pd(1), (__m256d)clear);
    const auto alpha = (Reals)_mm256_min_pd((__m256d)(total * scale), _mm256_set1_pd(255));
    Pixels out = rounded(alpha);
    out |= rounded((Reals)_mm256_permute2f128_pd(rb, rb2, 0x20) * share) << 8;
    out |= rounded((Reals)_mm256_permute2f128_pd(ag, ag2, 0x31) * share) << 16;
    out |= rounded((Reals)_mm256_permute2f128_pd(rb, rb2, 0x31) * share) << 24;
    return out & ~__builtin_convertvector(clear, Pixels);
}

/// @param box  sums of box i @return the sum of the alphas
template <class Box>
QX_INLINE std::uint32_t finish_all(std::int32_t count, double scale, const Box& box, QX_Pixel8* out) {
    Pixels alphas{};
    std::int32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const Pixels pixels = finish({box(i), box(i + 1), box(i + 2), box(i + 3)}, scale);
        __builtin_memcpy(out + i, &pixels, sizeof pixels);
        alphas += pixels & 255;
    }
    if (i < count) {
        const auto in = [&](std::int32_t k) __attribute__((always_inline)) { return k < count ? box(k) : Reals{}; };
        const Pixels pixels = finish({box(i), in(i + 1), in(i + 2), Reals{}}, scale);
        __builtin_memcpy(out + i, &pixels, sizeof *out * static_cast<std::size_t>(count - i));
        alphas += pixels & 255;
    }
    return static_cast<std::uint32_t>(alphas[0] + alphas[1] + alphas[2] + alphas[3]);
}

/// A row's boxes: the first one's sides, and the way to the next.
struct Boxes {
    const QX_EffectWorld& world;
    Extent across, down;
    std::int32_t step;
    double scale;
    bool whole;

    QX_INLINE Boxes(FixedPoint at, std::int32_t by, const QX_SampPB& block)
        : world(*block.src),
          across(at.x, block.x_radius),
          down(Extent(at.y, block.y_radius).clipped(block.src->height)),
          step(by),
          scale(0.25 / (block.x_radius * 0x1p-16 * (block.y_radius * 0x1p-16))),
          whole((step & 0xFFFF) == 0 && sampling::is_small_and_whole(across, down)) {}

    /// Boxes whose columns there is room for, wherever the first one lies.
    QX_INLINE std::int32_t room() const {
        const std::int64_t way = std::int64_t{kColumns - 2} * kOne - across.length();
        return static_cast<std::int32_t>(step == 0 ? INT32_MAX : way / (step < 0 ? -std::int64_t{step} : step) + 1);
    }
    QX_INLINE std::int32_t low(std::int32_t i) const {
        return static_cast<std::int32_t>(across.low + std::int64_t{step} * i);
    }
};

std::uint32_t sample_boxes(const Boxes& boxes, std::int32_t from, std::int32_t count, ColumnSums& sums,
                           QX_Pixel8* out) {
    const std::int32_t first = boxes.low(from), last = boxes.low(from + count - 1), length = boxes.across.length();
    const std::int32_t left = lesser(first, last) >> 16;
    const auto end = static_cast<std::int32_t>((std::int64_t{greater(first, last)} + length + (kOne - 1)) >> 16);
    const std::ptrdiff_t rowbytes = boxes.world.rowbytes;
    const std::byte* top = static_cast<const std::byte*>(boxes.world.data) + std::ptrdiff_t{left} * 4;
    const auto low = [&](std::int32_t i) __attribute__((always_inline)) { return boxes.low(from + i) - left * kOne; };
    if (boxes.whole) {
        sum_columns(top + boxes.down.first() * rowbytes, rowbytes, boxes.down.last() - boxes.down.first(), end - left,
                    sums.whole);
        return finish_all(
            count, boxes.scale,
            [&](std::int32_t i)
                __attribute__((always_inline)) { return sum_whole(sums.whole + (low(i) >> 16), length >> 16); },
            out);
    }
    weigh_columns(top, rowbytes, sampling::Zones(boxes.down), end - left, sums);
    return finish_all(
        count, boxes.scale,
        [&](std::int32_t i)
            __attribute__((always_inline)) { return sum_weighed(sums.weighed, low(i), low(i) + length); },
        out);
}

}  // namespace

void area_run8(std::int32_t count, FixedPoint at, std::int32_t step, const QX_SampPB& block, std::uint32_t* sum,
               QX_Pixel8* out) {
    const Boxes boxes(at, step, block);
    const std::int32_t room = boxes.room(), most = room > 4 ? room & ~3 : room;
    ColumnSums sums;
    for (std::int32_t i = 0; i < count; i += most) {
        *sum += sample_boxes(boxes, i, lesser(count - i, most), sums, out + i);
    }
}

}  // namespace qx::avx2
