// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_TrackMatte.h"

#include <algorithm>

#include "QX/compositing/QX_MaskRow.h"
#include "QX/indep/QX_Depth.h"

namespace {

template <class Pixel>
void prepare(std::int32_t count, const void* mask_row, std::int32_t offset, std::int32_t mask_width, std::uint32_t kind,
             void* out_row) {
    const std::int64_t end = std::int64_t{offset} + std::max(mask_width, 0);
    const std::int32_t from = std::clamp(offset, 0, count);
    const auto to = static_cast<std::int32_t>(std::clamp<std::int64_t>(end, from, count));
    const auto* const mask = static_cast<const Pixel*>(mask_row);
    qx::cover_row(count, from, to, from < to ? mask + (from - std::int64_t{offset}) : mask, kind,
                  static_cast<Pixel*>(out_row));
}

}  // namespace

void QX_PrepTrackMatteUniv(std::int32_t count, const void* mask_row, std::int32_t offset, std::int32_t mask_width,
                           std::uint32_t kind, int deep, void* out_row) {
    if (count <= 0) return;
    const auto row = deep != 0 ? &prepare<QX_Pixel16> : &prepare<QX_Pixel8>;
    row(count, mask_row, offset, mask_width, kind, out_row);
}

template <class Pixel, class Channel>
void QX_BlendSingleChannel(std::int32_t count, Channel opacity, Channel value, const Channel* mask, Pixel* dst) {
    using D = qx::DepthOf<Pixel>;
    using N = typename D::Lane;
    for (std::int32_t i = 0; i < count; ++i) {
        const N m = D::mul(N{mask[i]}, N{opacity}), x = N{value} - N{dst[i].alpha};
        if constexpr (D::number == 32) {
            dst[i].alpha += x * m;
        } else {  // one less below zero: the rounding is the same up and down
            dst[i].alpha = static_cast<Channel>(dst[i].alpha + D::reduced(m * x - (x < 0 ? 1 : 0)));
        }
    }
}

template void QX_BlendSingleChannel(std::int32_t, std::uint8_t, std::uint8_t, const std::uint8_t*, QX_Pixel8*);
template void QX_BlendSingleChannel(std::int32_t, std::uint16_t, std::uint16_t, const std::uint16_t*, QX_Pixel16*);
template void QX_BlendSingleChannel(std::int32_t, float, float, const float*, QX_PixelFloat*);
