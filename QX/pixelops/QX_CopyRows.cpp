// SPDX-License-Identifier: Apache-2.0
// The nine row conversions. Rows between integer depths, and to float, treat all channels alike and run over plain
// channels; rows from float have a rule of their own for alpha and keep a pixel in a register.
#include "QX/pixelops/QX_CopyRows.h"

#include <emmintrin.h>

#include <cstring>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/pixelops/QX_Noise.h"
#include "platform/TK_CPU.h"

namespace qx {
namespace {

template <class Pixel> void same_row(const std::byte* src, std::byte* dst, std::size_t columns, bool) {
    std::memmove(dst, src, columns * sizeof(Pixel));
}

template <class T> const Loose<T>* loose(const std::byte* p) { return reinterpret_cast<const Loose<T>*>(p); }
template <class T> Loose<T>* loose(std::byte* p) { return reinterpret_cast<Loose<T>*>(p); }

template <class From, class To> void channel_row(const std::byte* src, std::byte* dst, std::size_t columns, bool) {
    const auto* s = loose<QX_ChannelOf<From>>(src);
    auto* d = loose<QX_ChannelOf<To>>(dst);
    for (std::size_t i = 0; i < 4 * columns; ++i) d[i].value = convert_channel<To, float, From>(s[i].value);
}

/// The rounding term becomes a uniform value on 0..32767.
void narrow_row(const std::byte* src, std::byte* dst, std::size_t columns, bool dither) {
    if (!dither) return channel_row<QX_Pixel16, QX_Pixel8>(src, dst, columns, dither);
    const auto* s = loose<std::uint16_t>(src);
    auto* d = loose<std::uint8_t>(dst);
    NoiseRow noise;
    for (std::size_t i = 0; i < 4 * columns; ++i) {
        d[i].value = static_cast<std::uint8_t>((std::uint32_t{s[i].value} * 255u + (noise.next() & 0x7FFFu)) >> 15);
    }
}

__m128 load_pixel(const std::byte* p) { return _mm_loadu_ps(reinterpret_cast<const float*>(p)); }

/// True in the lane of alpha, the first.
__m128 alpha_lane() { return _mm_castsi128_ps(_mm_setr_epi32(-1, 0, 0, 0)); }

/// Channels of full scale 1 as 32-bit integers of full scale `full`: the product is clamped, but not in the lanes of
/// `unclamped`, and truncated after adding a half. NaN gives 0 in a clamped lane.
__m128i to_integers(__m128 pixel, float full, __m128 unclamped) {
    const __m128 v = _mm_mul_ps(pixel, _mm_set1_ps(full));
    // max before min: a NaN in the first operand gives the second.
    const __m128 inside = _mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(full));
    const __m128 kept = _mm_or_ps(_mm_and_ps(unclamped, v), _mm_andnot_ps(unclamped, inside));
    return _mm_cvttps_epi32(_mm_add_ps(kept, _mm_set1_ps(0.5f)));
}

/// The low 16 bits of each channel.
void store_16(std::byte* dst, __m128i channels) {
    const __m128i low = _mm_shufflelo_epi16(channels, _MM_SHUFFLE(2, 0, 2, 0));
    const __m128i both = _mm_shufflehi_epi16(low, _MM_SHUFFLE(2, 0, 2, 0));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm_shuffle_epi32(both, _MM_SHUFFLE(2, 0, 2, 0)));
}

/// The low 8 bits of each channel.
void store_8(std::byte* dst, __m128i channels) {
    const __m128i words = _mm_packs_epi32(_mm_and_si128(channels, _mm_set1_epi32(255)), _mm_setzero_si128());
    const std::int32_t pixel = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(dst, &pixel, sizeof pixel);
}

void float_to_16_row(const std::byte* src, std::byte* dst, std::size_t columns, bool) {
    for (std::size_t i = 0; i < columns; ++i) {
        store_16(dst + 8 * i, to_integers(load_pixel(src + 16 * i), Depth16::full, alpha_lane()));
    }
}

/// One pixel as four 32-bit integers, rounded to nearest even and clamped to 0..255, alpha too. The clamp comes
/// first, which changes no result: it takes 2^31 and above to 255 and NaN to 0.
__m128i nearest_8(const std::byte* pixel) {
    const __m128 v = _mm_mul_ps(_mm_load_ps(reinterpret_cast<const float*>(pixel)), _mm_set1_ps(Depth8::full));
    return _mm_cvtps_epi32(_mm_min_ps(_mm_max_ps(v, _mm_setzero_ps()), _mm_set1_ps(Depth8::full)));
}

void float_to_8_nearest(const std::byte* src, std::byte* dst, std::size_t columns) {
    std::size_t i = 0;
    for (; i + 4 <= columns; i += 4) {
        const std::byte* s = src + 16 * i;
        const __m128i low = _mm_packs_epi32(nearest_8(s), nearest_8(s + 16));
        const __m128i high = _mm_packs_epi32(nearest_8(s + 32), nearest_8(s + 48));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * i), _mm_packus_epi16(low, high));
    }
    for (; i < columns; ++i) store_8(dst + 4 * i, nearest_8(src + 16 * i));
}

/// Half a step of 8 bits to either side; then alpha is clamped as well.
void float_to_8_dithered(const std::byte* src, std::byte* dst, std::size_t columns) {
    const __m128 scale = _mm_set1_ps(0x1p-40f), offset = _mm_set1_ps(0x1p-9f);
    NoiseRow noise;
    for (std::size_t i = 0; i < columns; ++i) {
        const auto alpha = static_cast<float>(noise.next());  // Kept: drawn alpha, red, blue, green
        const auto red = static_cast<float>(noise.next());
        const auto blue = static_cast<float>(noise.next());
        const auto green = static_cast<float>(noise.next());
        const __m128 drawn = _mm_mul_ps(_mm_setr_ps(alpha, red, green, blue), scale);
        const __m128 noisy = _mm_sub_ps(_mm_add_ps(load_pixel(src + 16 * i), drawn), offset);
        store_8(dst + 4 * i, to_integers(noisy, Depth8::full, _mm_setzero_ps()));
    }
}

/// Kept: a row that begins on a vector's boundary rounds to nearest even, others truncate after adding a half and
/// leave alpha unclamped.
void float_to_8_row(const std::byte* src, std::byte* dst, std::size_t columns, bool dither) {
    const bool on_boundary = (reinterpret_cast<std::uintptr_t>(src) & 15) == 0;
    if (dither) return float_to_8_dithered(src, dst, columns);
    if (on_boundary && TK_G_CPU_DataP->flags[kTK_CPU_Vector] != 0) return float_to_8_nearest(src, dst, columns);
    for (std::size_t i = 0; i < columns; ++i) {
        store_8(dst + 4 * i, to_integers(load_pixel(src + 16 * i), Depth8::full, alpha_lane()));
    }
}

int index_of(int depth) { return depth == 8 ? 0 : depth == 16 ? 1 : depth == 32 ? 2 : -1; }

constexpr CopyRow rows[3][3] = {
    {same_row<QX_Pixel8>, channel_row<QX_Pixel8, QX_Pixel16>, channel_row<QX_Pixel8, QX_PixelFloat>},
    {narrow_row, same_row<QX_Pixel16>, channel_row<QX_Pixel16, QX_PixelFloat>},
    {float_to_8_row, float_to_16_row, same_row<QX_PixelFloat>},
};

}  // namespace

CopyRow copy_row(int from_depth, int to_depth) {
    const int from = index_of(from_depth), to = index_of(to_depth);
    return from < 0 || to < 0 ? nullptr : rows[from][to];
}

}  // namespace qx
