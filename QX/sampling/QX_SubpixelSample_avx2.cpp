// SPDX-License-Identifier: Apache-2.0
// What stands here beside the kernel is inlined always, so that no other level shares it.
#include <immintrin.h>

#include "QX/sampling/QX_SampForms.h"
#include "QX/sampling/QX_SubpixelSampleT.h"

namespace qx::avx2 {
namespace {

using sampling::Bits;
using sampling::Float4;
using sampling::load_at;

typedef float Float8 [[gnu::vector_size(32)]];

constexpr std::uint64_t kAlphas = 0x000000FF000000FF;

/// Two neighbours in a row as numbers.
QX_INLINE Float8 widen_two(std::uint64_t pixels) {
    return (Float8)_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<std::int64_t>(pixels))));
}
QX_INLINE Float4 left_of(Float8 row) { return (Float4)_mm256_castps256_ps128((__m256)row); }
QX_INLINE Float4 right_of(Float8 row) { return (Float4)_mm256_extractf128_ps((__m256)row, 1); }

/// Fractions of both axes, in lanes 0 and 1.
QX_INLINE __m128 fractions(std::int32_t x, std::int32_t y) {
    const __m128i both = _mm_insert_epi32(_mm_cvtsi32_si128(x), y, 1);
    return _mm_mul_ps(_mm_cvtepi32_ps(_mm_blend_epi16(both, _mm_setzero_si128(), 0xAA)), _mm_set1_ps(0x1p-16f));
}

QX_INLINE std::uint32_t mix_in_two_stages(Float8 top, Float8 bottom, __m128 fraction, std::uint32_t like) {
    const auto fy = (Float8)_mm256_broadcastss_ps(_mm_movehdup_ps(fraction));
    const auto fx = (Float4)_mm_broadcastss_ps(fraction);
    const Float8 column = top + (bottom - top) * fy;
    const Float4 left = left_of(column);
    return sampling::under_alpha<QX_Pixel8>((right_of(column) - left) * fx + left, like);
}

QX_INLINE std::uint32_t sample(std::uint64_t top, std::uint64_t bottom, std::int32_t x, std::int32_t y) {
    const std::uint64_t down = top ^ bottom, across = (top ^ top >> 32) & 0xFFFFFFFF;
    if ((down | across) == 0) return static_cast<std::uint32_t>(top);
    const Float8 upper = widen_two(top), lower = widen_two(bottom);
    const __m128 fraction = fractions(x, y);
    if (((down | across) & kAlphas) == 0) {
        return mix_in_two_stages(upper, lower, fraction, static_cast<std::uint32_t>(top));
    }
    const Float4 taps[4] = {left_of(upper), right_of(upper), left_of(lower), right_of(lower)};
    const auto fx = ((Float4)fraction)[0], fy = ((Float4)fraction)[1];
    return sampling::by_alpha<QX_Pixel8, float>(taps, sampling::Weights<float>::of(fx, fy).w);
}

}  // namespace

int noclip_two_stage(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    const QX_EffectWorld& world = *params->src;
    const std::byte* at = static_cast<const std::byte*>(world.data) + std::ptrdiff_t{y >> 16} * world.rowbytes +
                          std::ptrdiff_t{x >> 16} * std::ptrdiff_t{sizeof(QX_Pixel8)};
    if (((x | y) & 0xFFFF) == 0) {  // no neighbour is touched
        sampling::put(out, load_at<Bits<QX_Pixel8>>(at));
    } else {
        sampling::put(out, sample(load_at<std::uint64_t>(at), load_at<std::uint64_t>(at + world.rowbytes), x, y));
    }
    return 0;
}

}  // namespace qx::avx2
