// SPDX-License-Identifier: Apache-2.0
// Two rows of taps at a time. What stands here beside the kernel is inlined always, so that no other level shares it.
#include <immintrin.h>

#include "QX/sampling/QX_BicubicT.h"

namespace qx::avx2 {
namespace {

using sampling::Float4;

typedef float Float8 [[gnu::vector_size(32)]];

/// The same number four times, and another four times.
QX_INLINE Float8 pair(Float4 weights, int first) {
    const auto both = _mm256_castps128_ps256((__m128)weights);
    return (Float8)_mm256_permutevar8x32_ps(
        both, _mm256_setr_epi32(first, first, first, first, first + 1, first + 1, first + 1, first + 1));
}
QX_INLINE Float8 widen_two(const std::byte* at) {
    return (Float8)_mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(at))));
}
/// [a0 | a1] and [b0 | b1] become [a1 + a0 | b1 + b0].
QX_INLINE Float8 add_halves(Float8 a, Float8 b) {
    return (Float8)_mm256_permute2f128_ps((__m256)a, (__m256)b, 0x31) +
           (Float8)_mm256_permute2f128_ps((__m256)a, (__m256)b, 0x20);
}

struct Across {
    Float8 before, behind;  // weights of the first two taps and of the last two
    QX_INLINE explicit Across(Float4 w) : before(pair(w, 0)), behind(pair(w, 2)) {}
    /// Plain mixes of two rows.
    QX_INLINE Float8 mix(const std::byte* row, const std::byte* next) const {
        const Float8 late = add_halves(behind * widen_two(row + 8), behind * widen_two(next + 8));
        return late + add_halves(before * widen_two(row), before * widen_two(next));
    }
};

QX_INLINE Float4 plain_sum(const sampling::TapRows<4>& rows, Float4 x, Float4 y) {
    const Across across(x);
    const Float8 upper = pair(y, 0) * across.mix(rows[0], rows[1]);
    const Float8 lower = pair(y, 2) * across.mix(rows[2], rows[3]);
    const Float8 both = add_halves(upper, lower);
    return (Float4)_mm256_extractf128_ps((__m256)both, 1) + (Float4)_mm256_castps256_ps128((__m256)both);
}

QX_INLINE Float8 alphas_of(Float8 p) { return (Float8)_mm256_permute_ps((__m256)p, 0); }
QX_INLINE Float8 with_alphas(Float8 p, Float8 alphas) {
    return (Float8)_mm256_blend_ps((__m256)p, (__m256)alphas, 0x11);
}
QX_INLINE __m256 equal(Float8 a, Float8 b) { return _mm256_cmp_ps((__m256)a, (__m256)b, _CMP_EQ_OQ); }
QX_INLINE Float8 choose(__m256 mask, Float8 yes, Float8 no) {
    return (Float8)_mm256_blendv_ps((__m256)no, (__m256)yes, mask);
}

/// cubic_mix of two rows at once: both sides of its questions are computed, and each row takes its own.
QX_INLINE Float8 mix_by_alpha(const std::byte* row, const std::byte* next, const float (&w)[4]) {
    Float8 p[4], a[4], plain[4], shares[4];
    const auto half = [](Float8 x, Float8 y, auto which) {
        return (Float8)_mm256_permute2f128_ps((__m256)x, (__m256)y, decltype(which)::value);
    };
    for (int i = 0; i < 4; i += 2) {
        const Float8 upper = widen_two(row + 4 * i), lower = widen_two(next + 4 * i);
        p[i] = half(upper, lower, std::integral_constant<int, 0x20>{});
        p[i + 1] = half(upper, lower, std::integral_constant<int, 0x31>{});
    }
    const auto one = (Float8)_mm256_set1_ps(1);
    for (int i = 0; i < 4; ++i) {
        const auto weight = (Float8)_mm256_set1_ps(w[i]);
        a[i] = alphas_of(p[i]);
        plain[i] = weight * p[i];
        shares[i] = (weight * a[i]) * with_alphas(p[i], one);
    }
    const Float8 mixed = sampling::sum4(plain[0], plain[1], plain[2], plain[3]);
    const Float8 sums = sampling::sum4(shares[0], shares[1], shares[2], shares[3]);
    const Float8 alpha = alphas_of(sums);
    const Float8 by_alpha =
        choose(equal(alpha, Float8{}), with_alphas(mixed, Float8{}), with_alphas(sums * (one / alpha), alpha));
    const __m256 alike = _mm256_and_ps(equal(a[0], a[1]), _mm256_and_ps(equal(a[0], a[2]), equal(a[0], a[3])));
    return choose(alike, with_alphas(mixed, a[0]), by_alpha);
}

QX_INLINE Float4 sum_by_alpha(const sampling::TapRows<4>& rows, const sampling::CubicWeights& weights) {
    const Float8 upper = mix_by_alpha(rows[0], rows[1], weights.x), lower = mix_by_alpha(rows[2], rows[3], weights.x);
    const auto low = [](Float8 x) { return (Float4)_mm256_castps256_ps128((__m256)x); };
    const auto high = [](Float8 x) { return (Float4)_mm256_extractf128_ps((__m256)x, 1); };
    const Float4 across[4] = {low(upper), high(upper), low(lower), high(lower)};
    return sampling::cubic_mix(across, weights.y, sampling::equal_alphas(across));
}

QX_INLINE bool uniform_alpha(const sampling::TapRows<4>& rows) {
    const auto row = [&rows](int i) { return sampling::load_at<__m128i>(rows[i]); };
    const __m128i like = _mm_broadcastd_epi32(row(0));
    const __m128i upper = _mm_or_si128(_mm_xor_si128(row(0), like), _mm_xor_si128(row(1), like));
    const __m128i lower = _mm_or_si128(_mm_xor_si128(row(2), like), _mm_xor_si128(row(3), like));
    return _mm_testz_si128(_mm_or_si128(upper, lower), _mm_set1_epi32(255)) != 0;
}

}  // namespace

std::uint32_t cubic8(const sampling::TapRows<4>& rows, const sampling::CubicWeights& weights) {
    if (uniform_alpha(rows)) {
        const Float4 sum = plain_sum(rows, sampling::load_at<Float4>(weights.x), sampling::load_at<Float4>(weights.y));
        const auto alpha = static_cast<float>(std::to_integer<int>(*rows[0]));
        return sampling::finish<QX_Pixel8>(sampling::with_alpha(sum, alpha));
    }
    return sampling::finish<QX_Pixel8>(sum_by_alpha(rows, weights));
}

}  // namespace qx::avx2
