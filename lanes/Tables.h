// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/PixelAccess.h"

/// Tables that lie in registers: a lookup takes no memory. Only where registers have 64 bytes.
namespace qx {

/// 256 words in registers of type V, of which a lane of 16 bits finds one.
template <class V> class WordTable {
public:
    QX_INLINE explicit WordTable(const void* words) {
        for (std::size_t k = 0; k < kParts; ++k) {
            parts_[k] = load_lanes<V>(static_cast<const std::byte*>(words) + k * sizeof(V));
        }
    }
    /// In each lane the word at the place that its low byte tells: a pair of registers answers for 64 words.
    QX_INLINE V at([[maybe_unused]] V place) const {
        static_assert(sizeof(V) == 64);
#ifdef __AVX512BW__
        const auto among = [&](int k) QX_LAMBDA {
            return _mm512_permutex2var_epi16((__m512i)parts_[k], (__m512i)place, (__m512i)parts_[k + 1]);
        };
        const __mmask32 odd_pair = _mm512_test_epi16_mask((__m512i)place, _mm512_set1_epi16(64));
        const __mmask32 upper_half = _mm512_test_epi16_mask((__m512i)place, _mm512_set1_epi16(128));
        const __m512i lower = _mm512_mask_blend_epi16(odd_pair, among(0), among(2));
        const __m512i upper = _mm512_mask_blend_epi16(odd_pair, among(4), among(6));
        return (V)_mm512_mask_blend_epi16(upper_half, lower, upper);
#endif
    }

private:
    static constexpr std::size_t kParts = 512 / sizeof(V);
    V parts_[kParts];
};

/// Bytes of a table at places from 0 to 511, in lanes of 16 bits.
template <class V> QX_INLINE V table_bytes(const std::uint8_t (&table)[512], V place) {
    const V found = WordTable<V>(table).at(place >> 1);
    return (place & 1) != 0 ? found >> 8 & 255 : found & 255;
}

}  // namespace qx
