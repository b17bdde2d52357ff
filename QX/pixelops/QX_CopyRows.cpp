// SPDX-License-Identifier: Apache-2.0
// The nine row conversions: which kernel a pair of depths takes, and which noise.
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

/// Noise goes on from row to row; pixels side by side take values side by side.
void dithered_row(DitheredRow* row, std::size_t from_pixel, const std::byte* src, std::byte* dst, std::size_t columns) {
    NoiseRow noise;
    while (columns > 0) {
        const auto [values, pixels] = noise.next_pixels(columns);
        row(src, dst, pixels, values);
        src += pixels * from_pixel;
        dst += pixels * sizeof(QX_Pixel8);
        columns -= pixels;
    }
}

void narrow_row(const std::byte* src, std::byte* dst, std::size_t columns, bool dither) {
    if (dither) return dithered_row(kernels->from16_to8_dithered, sizeof(QX_Pixel16), src, dst, columns);
    kernels->from16_to8(src, dst, columns);
}

/// Kept: a row that begins on a vector's boundary rounds to nearest even, others truncate after adding a half and
/// leave alpha unlimited.
void float_to_8_row(const std::byte* src, std::byte* dst, std::size_t columns, bool dither) {
    if (dither) return dithered_row(kernels->float_to8_dithered, sizeof(QX_PixelFloat), src, dst, columns);
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
