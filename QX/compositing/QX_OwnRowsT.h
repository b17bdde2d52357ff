// SPDX-License-Identifier: Apache-2.0
// Rows of the two modes that fit no frame. Included by the plain level alone.
#pragma once

#include "QX/compositing/QX_Levels.h"
#include "QX/indep/QX_Errors.h"
#include "QX/pixelops/QX_Rand.h"
#include "lanes/PixelAccess.h"

namespace qx::plain {

/// (cs a m + cd d comp(m)) / w over the alpha w = a m + d comp(m), on integers wide enough. Takes no opacity and
/// no rgb_only; a pixel without weight stays. Needs a mask.
template <class D, class Pixel = typename D::Pixel>
int crossfade_row(std::int32_t count, const QX_BlendingMode<Pixel>*, const QX_LinearBlendingTables*, const Pixel* src,
                  const Pixel* mask, Pixel* dst) {
    using Wide = std::conditional_t<D::number == 32, float, std::int64_t>;
    if (mask == nullptr && count > 0) return kQX_FailedVerification;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto s = load_pixels<Planes<typename D::Lane>>(src + i);
        auto d = load_pixels<Planes<typename D::Lane>>(dst + i);
        const Wide full = D::full, m = load_alpha<Planes<typename D::Lane>>(mask + i), rest = full - m;
        if (m == full) {
            dst[i] = src[i];
            continue;
        }
        const Wide w = s.a * m + rest * d.a;
        if (m == 0 || w == 0) continue;
        const auto weighed = [&](Wide cs, Wide cd) {
            if constexpr (D::number == 32) {
                return (cd * rest * d.a + cs * s.a * m) / w;
            } else {
                return static_cast<std::int32_t>((cd * rest * d.a + cs * s.a * m + (w >> 1)) / w);
            }
        };
        if constexpr (D::number == 32) {
            d = with_colours(w, s, d, weighed);
        } else {
            d = with_colours(static_cast<std::int32_t>((w + D::half) / full), s, d, weighed);
        }
        store_pixels(dst + i, d);
    }
    return kQX_NoError;
}

/// One run of dissolving pixels. The seed steps on by one a pixel, on top of what drawing a number left in it.
/// Kept: at 16 bits too the low 8 bits of the number are compared with s as it stands.
/// @return the seed for the pixel behind the run
template <class D, bool Masked, class Pixel = typename D::Pixel>
std::uint32_t dissolve_run(std::int32_t count, const QX_BlendingMode<Pixel>& mode, std::uint32_t seed, const Pixel* src,
                           const Pixel* mask, Pixel* dst) {
    using P = Planes<typename D::Lane>;
    for (std::int32_t i = 0; i < count; ++i, ++seed) {
        typename D::Lane s = load_alpha<P>(src + i);
        if constexpr (Masked) s = D::mul(s, load_alpha<P>(mask + i));
        s = D::mul(s, static_cast<typename D::Lane>(mode.opacity));
        if (s == 0) continue;
        if (s != D::full && (next_random(seed) & 255) > s) continue;
        const auto alpha = mode.rgb_only != 0 ? dst[i].alpha : static_cast<QX_ChannelOf<Pixel>>(D::full);
        dst[i] = {alpha, src[i].red, src[i].green, src[i].blue};
    }
    return seed;
}

/// Kept: float pixels stay as they are.
template <class D, bool Masked, class Pixel = typename D::Pixel>
int dissolve_row(std::int32_t count, const QX_BlendingMode<Pixel>* mode, const QX_LinearBlendingTables*,
                 const Pixel* src, const Pixel* mask, Pixel* dst) {
    if constexpr (D::number != 32) {
        dissolve_run<D, Masked>(count, *mode, static_cast<std::uint32_t>(mode->rand_seed), src, mask, dst);
    }
    return kQX_NoError;
}

}  // namespace qx::plain
