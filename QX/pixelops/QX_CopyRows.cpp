// SPDX-License-Identifier: Apache-2.0
// The nine row conversions: which kernel a pair of depths takes, and the rows with noise, which are one at every level.
#include "QX/pixelops/QX_CopyRows.h"

#include <algorithm>
#include <cstring>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/pixelops/QX_CopyKernels.h"
#include "QX/pixelops/QX_Noise.h"
#include "QX/pixelops/QX_PastCaches.h"
#include "lanes/Streams.h"
#include "platform/TK_CPU.h"

namespace qx {
namespace {

const CopyKernels* kernels = &plain::copy_kernels;

template <class Pixel> void same_row(const std::byte* src, std::byte* dst, std::size_t columns, bool) {
    std::memmove(dst, src, columns * sizeof(Pixel));
}

template <ConvertRow* CopyKernels::*Row>
void convert_row(const std::byte* src, std::byte* dst, std::size_t columns, bool) {
    (kernels->*Row)(src, dst, columns);
}

/// The rounding term becomes a uniform value on 0..32767.
void narrow_row(const std::byte* src, std::byte* dst, std::size_t columns, bool dither) {
    if (!dither) return kernels->from16_to8(src, dst, columns);
    const auto* s = reinterpret_cast<const Loose<std::uint16_t>*>(src);
    auto* d = reinterpret_cast<std::uint8_t*>(dst);
    NoiseRow noise;
    for (std::size_t i = 0; i < 4 * columns; ++i) {
        d[i] = static_cast<std::uint8_t>((std::uint32_t{s[i].value} * 255u + (noise.next() & 0x7FFFu)) >> 15);
    }
}

/// Half a step of 8 bits to either side; then alpha is limited as well.
void float_to_8_dithered(const std::byte* src, std::byte* dst, std::size_t columns) {
    const auto* s = reinterpret_cast<const Loose<float>*>(src);
    auto* d = reinterpret_cast<std::uint8_t*>(dst);
    NoiseRow noise;
    for (std::size_t i = 0; i < columns; ++i) {
        for (const std::size_t k : {0u, 1u, 3u, 2u}) {  // Kept: drawn alpha, red, blue, green
            const float drawn = static_cast<float>(noise.next()) * 0x1p-40f;
            d[4 * i + k] =
                static_cast<std::uint8_t>(colour_from_float<QX_Pixel8>(s[4 * i + k].value + drawn - 0x1p-9f));
        }
    }
}

/// Kept: a row that begins on a vector's boundary rounds to nearest even, others truncate after adding a half and
/// leave alpha unlimited.
void float_to_8_row(const std::byte* src, std::byte* dst, std::size_t columns, bool dither) {
    if (dither) return float_to_8_dithered(src, dst, columns);
    const bool on_boundary = (reinterpret_cast<std::uintptr_t>(src) & 15) == 0;
    const bool nearest = on_boundary && TK_G_CPU_DataP->flags[kTK_CPU_Vector] != 0;
    (nearest ? kernels->float_to8_nearest : kernels->float_to8)(src, dst, columns);
}

int index_of(int depth) { return depth == 8 ? 0 : depth == 16 ? 1 : depth == 32 ? 2 : -1; }

constexpr CopyRow rows[3][3] = {
    {same_row<QX_Pixel8>, convert_row<&CopyKernels::from8_to16>, convert_row<&CopyKernels::from8_to_float>},
    {narrow_row, same_row<QX_Pixel16>, convert_row<&CopyKernels::from16_to_float>},
    {float_to_8_row, convert_row<&CopyKernels::float_to16>, same_row<QX_PixelFloat>},
};

}  // namespace

void choose_copy_kernels(Level level) { kernels = &copy_kernels_of(level); }

CopyRow copy_row(int from_depth, int to_depth) {
    const int from = index_of(from_depth), to = index_of(to_depth);
    return from < 0 || to < 0 ? nullptr : rows[from][to];
}

void copy_row_past_caches(CopyRow row, int from_depth, int to_depth, const std::byte* src, std::byte* dst,
                          std::size_t columns, bool dither) {
    constexpr std::size_t kRun = 256;  // whole lines of any depth, so that aligned sources stay aligned
    alignas(64) std::byte made[kRun * sizeof(QX_PixelFloat)];
    const std::size_t from_pixel = bytes_of_pixel(from_depth), to_pixel = bytes_of_pixel(to_depth);
    for (std::size_t done = 0; done < columns; done += kRun) {
        const std::size_t run = std::min(kRun, columns - done);
        row(src + done * from_pixel, made, run, dither);
        // The run after the next comes while this one leaves: reads and stores would take turns at memory.
        const std::byte* const later = src + (done + 2 * kRun) * from_pixel;
        for (std::size_t i = 0; i < kRun * from_pixel; i += kLine) __builtin_prefetch(later + i);
        PastCaches::copy(dst + done * to_pixel, made, run * to_pixel);
    }
}

}  // namespace qx
