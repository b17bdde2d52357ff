// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_PixelRun.h"

#include <emmintrin.h>

#include <cstdint>

namespace qx {
namespace {

__m128i load(const std::byte* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
void store_any(std::byte* to, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }

/// Whole vectors; four a turn.
void store_vectors(std::byte* to, std::size_t count, __m128i v) {
    for (; count >= 4; count -= 4, to += 64) {
        store_any(to, v);
        store_any(to + 16, v);
        store_any(to + 32, v);
        store_any(to + 48, v);
    }
    for (; count > 0; --count, to += 16) store_any(to, v);
}

/// The string store, from whose length the processor sees that no line need be read. It must be long to be worth its
/// start.
constexpr std::size_t kLongRun = 2048;
void store_string(std::byte* to, std::size_t count, const std::byte* pattern) {
    std::uint64_t value;
    std::memcpy(&value, pattern, sizeof value);
    count *= 2;
    asm volatile("rep stosq" : "+D"(to), "+c"(count) : "a"(value) : "memory");
}

}  // namespace

void PixelRun::store(std::byte* to, std::size_t bytes) const {
    if (zero_) {
        std::memset(to, 0, bytes);
        return;
    }
    if (bytes < kPeriod) {
        std::memcpy(to, pattern_, bytes);
        return;
    }
    const bool by_string = short_period_ && bytes >= kLongRun;
    if (past_caches_ && !by_string) return PastCaches::fill(to, pattern_, bytes);
    store_any(to, load(pattern_));
    const std::size_t head = (kPeriod - (reinterpret_cast<std::uintptr_t>(to) & (kPeriod - 1))) & (kPeriod - 1);
    const std::size_t count = (bytes - head) / kPeriod;
    const __m128i v = load(pattern_ + head);
    if (by_string) {
        store_string(to + head, count, pattern_ + head);
    } else {
        store_vectors(to + head, count, v);
    }
    store_any(to + bytes - kPeriod, load(pattern_));  // the end of a pixel ends the run: it repeats from its start
}

}  // namespace qx
