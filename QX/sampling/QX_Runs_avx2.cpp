// SPDX-License-Identifier: Apache-2.0
// Eight nearest pixels of a row at a time.
#include <immintrin.h>

#include "QX/sampling/QX_Runs.h"
#include "QX/sampling/QX_SampForms.h"

#pragma GCC diagnostic ignored "-Wpsabi"  // vectors stay inside this file

namespace qx::avx2 {
namespace {

typedef std::int32_t Int [[gnu::vector_size(32)]];
typedef std::uint32_t Word [[gnu::vector_size(32)]];

constexpr int kLanes = kRunLanes;

}  // namespace

std::int32_t nearest_run(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                         std::int32_t width, std::uint32_t* sum, QX_Pixel8* out) {
    const Word distance = Word{0, 1, 2, 3, 4, 5, 6, 7} * static_cast<std::uint32_t>(step);
    Int alphas{};
    std::int32_t i = 0;
    for (; i + kLanes <= count && (x >> 16) + kLanes <= width; i += kLanes, x += std::int64_t{step} * kLanes) {
        const Word place = (distance + static_cast<std::uint32_t>(x & 0xFFFF)) >> 16;  // at most the seventh neighbour
        Int pixels;
        __builtin_memcpy(&pixels, row + (x >> 16), sizeof pixels);
        pixels = (Int)_mm256_permutevar8x32_epi32((__m256i)pixels, (__m256i)place);
        __builtin_memcpy(out + i, &pixels, sizeof pixels);
        alphas += pixels & 255;
    }
    for (int k = 0; k < kLanes; ++k) *sum += static_cast<std::uint32_t>(alphas[k]);
    return i;
}

}  // namespace qx::avx2
