// SPDX-License-Identifier: Apache-2.0
// A row of area samples of 16 bits or float whose boxes lie whole pixels apart, for one level: several boxes side by
// side, each summed pixel by pixel in double, in the order of single samples.
#pragma once

#include "QX/indep/QX_Depth.h"
#include "QX/sampling/QX_AreaFootprint.h"
#include "QX/sampling/QX_AreaRuns.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/Scattered.h"

namespace qx::QX_ISA {

using BoxSums = Wide<double>;  // alpha, and the colours times alpha, of each box in turn
inline constexpr int kBoxesInRegister = kRegister / 32, kBoxRegisters = 4, kBoxes = kBoxesInRegister * kBoxRegisters;

inline constexpr std::ptrdiff_t kBytesAhead = 2048;

/// Alphas, and pixels with an alpha of 1, of the boxes of a register.
struct BoxPixels {
    BoxSums alphas, ones;
};

template <class V> QX_INLINE BoxPixels alphas_and_ones(V pixels) {
    const V ones = reordered(pixels, splat<V>(1), [](int i) { return i % 4 == 0 ? i + lanes_in<V> : i; });
    return {to_double(shuffle<0, 0, 0, 0>(pixels, pixels)), to_double(ones)};
}
template <class Pixel> QX_INLINE BoxPixels load_box_pixels(const std::byte* const* box, std::ptrdiff_t way) {
    const auto place = [=](int k) QX_LAMBDA { return box[k] + way; };
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        return alphas_and_ones(load_sixteens<Vector<float, kRegister / 2>>(place));
    } else {
        return alphas_and_ones(load_words<Vector<std::int32_t, kRegister / 2>>(place));
    }
}

/// Adds a pixel of each box.
template <class Pixel>
QX_INLINE void add_column(const std::byte* const (&box)[kBoxes], std::ptrdiff_t way, double weight,
                          BoxSums (&sums)[kBoxRegisters]) {
    for (int k = 0; k < kBoxRegisters; ++k) {
        const BoxPixels p = load_box_pixels<Pixel>(box + k * kBoxesInRegister, way);
        sums[k] = sums[k] + weight * p.alphas * p.ones;
    }
}

/// The pixel of a box as the template of area samples finishes it. @param scale  one by the area
template <class Pixel> QX_INLINE void finish_box(__m256d sums, double scale, Pixel* out) {
    const __m256d full = _mm256_set1_pd(DepthOf<Pixel>::full), zero = _mm256_setzero_pd();
    const __m256d total = _mm256_permute4x64_pd(sums, 0);
    const __m256d alpha = _mm256_min_pd(_mm256_mul_pd(total, _mm256_set1_pd(scale)), full);
    const __m256d colours = _mm256_mul_pd(sums, _mm256_div_pd(_mm256_set1_pd(1), total));
    const __m256d visible =
        _mm256_and_pd(_mm256_cmp_pd(total, zero, _CMP_NEQ_UQ), _mm256_cmp_pd(alpha, zero, _CMP_NEQ_UQ));
    const __m256d mean = _mm256_and_pd(_mm256_blend_pd(colours, alpha, 1), visible);
    if constexpr (std::is_same_v<Pixel, QX_PixelFloat>) {
        _mm_storeu_ps(reinterpret_cast<float*>(out), _mm256_cvtpd_ps(mean));
    } else {
        const __m128i v = _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_add_pd(mean, _mm256_set1_pd(0.5)), full));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi32(v, v));
    }
}

template <class Pixel>
void area_run(std::int32_t count, FixedPoint at, std::int32_t step, const QX_SampPB& block, QX_AlphaSumOf<Pixel>* sum,
              Pixel* out) {
    constexpr std::ptrdiff_t size = sizeof(Pixel);
    const QX_EffectWorld& world = *block.src;
    const sampling::Extent across(at.x, block.x_radius);
    const sampling::Extent down = sampling::Extent(at.y, block.y_radius).clipped(world.height);
    const double lead = across.lead() * 0x1p-16, tail = across.tail() * 0x1p-16;
    const std::ptrdiff_t from = across.lead() != 0 ? 1 : 0, to = across.last() - across.first();
    const std::ptrdiff_t group = kBoxes * (step >> 16) * size;
    const double scale = 0.25 / (block.x_radius * 0x1p-16 * (block.y_radius * 0x1p-16));
    const std::byte* const first = static_cast<const std::byte*>(world.data) + across.first() * size;
    for (std::int32_t i = 0; i < count; i += kBoxes) {
        const std::byte* box[kBoxes];
        for (int k = 0; k < kBoxes; ++k)
            box[k] = first + std::ptrdiff_t{lesser(i + k, count - 1)} * (step >> 16) * size;
        BoxSums sums[kBoxRegisters] = {};
        down.each([&](std::int32_t row, std::int32_t coverage) QX_LAMBDA {
            const double weight = coverage * 0x1p-16;
            const std::ptrdiff_t line = row * std::ptrdiff_t{world.rowbytes};
            for (std::ptrdiff_t ahead = 0; ahead < group; ahead += 64) {  // rows are a few bytes of many pages
                __builtin_prefetch(box[0] + line + kBytesAhead + ahead);
            }
            BoxSums in_work[kBoxRegisters];
            __builtin_memcpy(in_work, sums, sizeof sums);
            if (lead != 0) add_column<Pixel>(box, line, weight * lead, in_work);
            for (std::ptrdiff_t column = from; column < to; ++column) {
                add_column<Pixel>(box, line + column * size, weight, in_work);
            }
            if (tail != 0) add_column<Pixel>(box, line + to * size, weight * tail, in_work);
            __builtin_memcpy(sums, in_work, sizeof sums);
        });
        for (int k = 0; k < lesser(std::int32_t{kBoxes}, count - i); ++k) {
            __m256d box_sums;
            __builtin_memcpy(&box_sums, reinterpret_cast<const std::byte*>(sums) + 32 * k, sizeof box_sums);
            finish_box(box_sums, scale, out + i + k);
            *sum += out[i + k].alpha;
        }
    }
}

}  // namespace qx::QX_ISA
