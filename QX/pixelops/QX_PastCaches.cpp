// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_PastCaches.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/TK_CPU.h"

namespace qx {

PastCaches::PastCaches(std::size_t bytes) : on_(bytes >= TK_GetCacheBytes()) {}
PastCaches::~PastCaches() {
    if (on_) _mm_sfence();
}

void PastCaches::copy(void* to, const void* from, std::size_t bytes) {
    constexpr std::size_t kLine = 64;
    auto* out = static_cast<std::byte*>(to);
    auto* in = static_cast<const std::byte*>(from);
    const auto past = reinterpret_cast<std::uintptr_t>(out) % kLine;
    const std::size_t head = std::min(bytes, past == 0 ? 0 : kLine - past);
    std::memcpy(out, in, head);
    std::size_t at = head;
    for (; at + kLine <= bytes; at += kLine) {
        __m128i line[4];
        std::memcpy(line, in + at, kLine);
        auto* const there = reinterpret_cast<__m128i*>(out + at);
        for (int i = 0; i < 4; ++i) _mm_stream_si128(there + i, line[i]);
    }
    std::memcpy(out + at, in + at, bytes - at);
}

}  // namespace qx
