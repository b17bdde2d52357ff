// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lanes/PixelAccess.h"

/// Stores past the caches: a line that is stored whole is not read before. Others see them after a fence of stores.
namespace qx {

inline constexpr std::size_t kLine = 64;

/// Bytes from an address to the next that begins a line.
inline std::size_t bytes_to_line(const void* p) { return -reinterpret_cast<std::uintptr_t>(p) % kLine; }

/// One register, to an address that is a multiple of its size.
template <class V> QX_INLINE void stream_lanes(void* to, V v) {
    if constexpr (sizeof(V) == 16) {
        _mm_stream_si128(static_cast<__m128i*>(to), (__m128i)v);
#ifdef __AVX2__
    } else if constexpr (sizeof(V) == 32) {
        _mm256_stream_si256(static_cast<__m256i*>(to), (__m256i)v);
#endif
#ifdef __AVX512F__
    } else if constexpr (sizeof(V) == 64) {
        _mm512_stream_si512(static_cast<__m512i*>(to), (__m512i)v);
#endif
    }
}

/// One line from any address to one that begins a line.
template <std::size_t Register> QX_INLINE void stream_line(std::byte* to, const std::byte* from) {
    using V = Vector<std::int32_t, Register == 0 ? 16 : Register>;
    constexpr std::size_t count = kLine / sizeof(V);
    V v[count];
    for (std::size_t i = 0; i < count; ++i) v[i] = load_lanes<V>(from + i * sizeof(V));
    for (std::size_t i = 0; i < count; ++i) stream_lanes(to + i * sizeof(V), v[i]);
}

}  // namespace qx
