// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_CallbackRoutines.h"

/// How a routine is chosen by quality and alpha form, as data.
namespace qx {

/// Where one routine's address stands.
struct Source {
    int slot = 0;  ///< 0 for none: that slot is empty for good
    Private routine = Private::none;

    constexpr Source(int number) : slot(number) {}       // NOLINT(google-explicit-constructor): a table's shorthand
    constexpr Source(Private which) : routine(which) {}  // NOLINT(google-explicit-constructor)
    constexpr Source next(int n) const {                 ///< the n-th of a run of private routines
        return static_cast<Private>(static_cast<int>(routine) + n);
    }
    void* address() const { return routine == Private::none ? QXp_G_OverFuncs[slot] : private_routine(routine); }
};

/// The four answers to (quality, alpha form).
struct Pick {
    Source straight_best, premul_best, straight_draft, premul_draft;

    constexpr Pick(Source any) : Pick(any, any, any) {}  // NOLINT(google-explicit-constructor)
    constexpr Pick(int any) : Pick(Source(any)) {}       // NOLINT(google-explicit-constructor)
    constexpr Pick(Private any) : Pick(Source(any)) {}   // NOLINT(google-explicit-constructor)
    constexpr Pick(Source straight, Source premul, Source draft) : Pick(straight, premul, draft, draft) {}
    constexpr Pick(Source sb, Source pb, Source sd, Source pd)
        : straight_best(sb), premul_best(pb), straight_draft(sd), premul_draft(pd) {}

    constexpr const Source& at(int quality, unsigned char flags) const {
        const bool straight = (flags & 1) != 0;
        if (quality == 0) return straight ? straight_draft : premul_draft;
        return straight ? straight_best : premul_best;
    }
};

namespace picks {
inline constexpr Pick subpixel_sample{3, 4, 2}, area_sample{5, 6, 2};
inline constexpr Pick subpixel_sample16{64, 64, 63}, area_sample16{65, 65, 63};
inline constexpr Pick copy{24, 25, 23}, composite_rect{9, 10, 7, 8};

constexpr Pick by_alpha(Source straight, Source premul) { return {straight, premul, straight, premul}; }
inline constexpr Pick blend = by_alpha(Private::blend_straight, Private::blend_premul);
/// RGBtoHLS, HLStoRGB, RGBtoYIQ, YIQtoRGB, Luminance, Hue, Lightness, Saturation.
constexpr Pick colour(int i) {
    return by_alpha(Source(Private::colour_straight).next(i), Source(Private::colour_premul).next(i));
}
}  // namespace picks

}  // namespace qx
