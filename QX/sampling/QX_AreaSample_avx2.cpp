// SPDX-License-Identifier: Apache-2.0
// Boxes of whole pixels, two rows at a time. What stands here beside the kernel is inlined always, so that no other
// level shares it.
#include <immintrin.h>

#include "QX/sampling/QX_AreaSampleT.h"
#include "QX/sampling/QX_SampForms.h"
#include "lanes/Scattered.h"

namespace qx::avx2 {
namespace {

using sampling::Double4;
using sampling::Extent;

using Sums = Vector<std::uint32_t, 32>;

/// Adds up to two rows of four pixels: colours times alpha, and alpha itself, in 32 bits.
QX_INLINE Sums add_four(Sums sums, const std::byte* row, const std::byte* next) {
    return sums + sampling::shares_of_four(load_sixteens<Sums>([&](int i) QX_LAMBDA { return i == 0 ? row : next; }));
}

QX_INLINE Double4 sum_whole(const QX_EffectWorld& world, Extent across, Extent down) {
    const std::int32_t columns = across.last() - across.first(), fours = columns / 4;
    const std::byte* line = static_cast<const std::byte*>(world.data) + std::ptrdiff_t{down.first()} * world.rowbytes +
                            std::ptrdiff_t{across.first()} * 4;
    Sums pairs{};
    __m128i sums = _mm_setzero_si128();
    std::int32_t rows = down.last() - down.first();
    for (; rows >= 2; rows -= 2, line += 2 * std::ptrdiff_t{world.rowbytes}) {
        const std::byte *at = line, *next = line + world.rowbytes;
        _mm_prefetch(reinterpret_cast<const char*>(at) + 1024, _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(next) + 1024, _MM_HINT_T0);
        for (std::int32_t i = 0; i < fours; ++i, at += 16, next += 16) pairs = add_four(pairs, at, next);
        if (columns % 4 != 0) {
            sums = sampling::add_run(sampling::add_run(sums, at, columns % 4), next, columns % 4);
        }
    }
    if (rows != 0) sums = sampling::add_run(sums, line, columns);
    sums = _mm_add_epi32(sums, _mm256_castsi256_si128((__m256i)pairs));
    return sampling::to_double(_mm_add_epi32(sums, _mm256_extracti128_si256((__m256i)pairs, 1)));
}

}  // namespace

int area_template8(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    const QX_EffectWorld& world = *params->src;
    const Extent across = Extent(x, params->x_radius).clipped(world.width);
    const Extent down = Extent(y, params->y_radius).clipped(world.height);
    if (sampling::branch_of(*params) != sampling::Branch::box || !sampling::is_small_and_whole(across, down)) {
        return sampling::area_template8(in_data, x, y, params, out);
    }
    Double4 mean;
    const bool visible = sampling::mean_of<QX_Pixel8>(sum_whole(world, across, down), *params, mean);
    sampling::put(out, visible ? sampling::RoundUp::pixel<QX_Pixel8>(mean) : 0u);
    return 0;
}

}  // namespace qx::avx2
