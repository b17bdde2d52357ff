// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Slots.h"
#include "QX/suites/QX_CallbackRoutines.h"

/// How a routine is chosen by quality and alpha form, as data.
namespace qx {

/// Where one routine's address stands.
struct Source {
    Slot slot = Slot::None0;
    Private routine = Private::none;

    constexpr Source(Slot which) : slot(which) {}        // NOLINT(google-explicit-constructor): a table's shorthand
    constexpr Source(Private which) : routine(which) {}  // NOLINT(google-explicit-constructor)
    constexpr Source next(int n) const {                 ///< the n-th of a run of private routines
        return static_cast<Private>(static_cast<int>(routine) + n);
    }
    void* address() const { return routine == Private::none ? slot_address(slot) : private_routine(routine); }
};

/// The four answers to (quality, alpha form).
struct Pick {
    Source straight_best, premul_best, straight_draft, premul_draft;

    constexpr Pick(Source any) : Pick(any, any, any) {}  // NOLINT(google-explicit-constructor)
    constexpr Pick(Slot any) : Pick(Source(any)) {}      // NOLINT(google-explicit-constructor)
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
/// Straight, premultiplied, draft.
inline constexpr Pick subpixel_sample{Slot::SubpixelSample, Slot::SubpixelSamplePremul, Slot::NNSample};
inline constexpr Pick area_sample{Slot::AreaSample, Slot::AreaSamplePremul, Slot::NNSample};
inline constexpr Pick subpixel_sample16{Slot::SubpixelSample16, Slot::SubpixelSample16, Slot::NNSample16};
inline constexpr Pick area_sample16{Slot::AreaSample16, Slot::AreaSample16, Slot::NNSample16};
inline constexpr Pick copy{Slot::CopyBitsHQ, Slot::CopyBitsHQPremul, Slot::CopyBitsDraft};
inline constexpr Pick composite_rect{Slot::CompositeRectBest, Slot::CompositeRectBestPremul, Slot::CompositeRectDraft,
                                     Slot::CompositeRectDraftPremul};

constexpr Pick by_alpha(Source straight, Source premul) { return {straight, premul, straight, premul}; }
inline constexpr Pick blend = by_alpha(Private::blend_straight, Private::blend_premul);
/// RGBtoHLS, HLStoRGB, RGBtoYIQ, YIQtoRGB, Luminance, Hue, Lightness, Saturation.
constexpr Pick colour(int i) {
    return by_alpha(Source(Private::rgb_to_hls_straight).next(i), Source(Private::rgb_to_hls_premul).next(i));
}
}  // namespace picks

}  // namespace qx
