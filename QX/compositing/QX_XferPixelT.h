// SPDX-License-Identifier: Apache-2.0
// The modes as functions of one pixel: what the row driver does in passes, in one go.
#pragma once

#include "QX/compositing/QX_LinearLookup.h"
#include "QX/compositing/QX_Modes.h"
#include "QX/compositing/QX_Pivots.h"
#include "QX/compositing/QX_XferTables.h"
#include "lanes/PixelAccess.h"

namespace qx {

/// The behind pass, then the mode on what it left; the luma of a choice is that before the pass.
template <class M, class D, class P, class L> P after_behind(const P& src, L s, const P& dst) {
    const P merged = modes::Behind::apply<Form::pixel, D>(src, s, dst, false);
    if constexpr (requires { M::template chosen<D>(src, dst); }) {
        return M::template chosen<D>(src, dst) ? modes::mix_by_alpha<D>(src, s, merged) : merged;
    } else {
        return M::template apply<Form::pixel, D>(src, s, merged, false);
    }
}

/// One mode on stored or linear values. `src` has its own alpha; `s` is that alpha times the opacities.
template <class M, class D, class P, class L> P blend_pixel(const P& src, L s, const P& dst) {
    constexpr Pivot pivot = M::switches.pivot;
    if constexpr (pivot != Pivot::none) {
        const L r = D::combine(s, dst.a);
        const P mixed_in = with_colours(dst.a, dst, dst, [&](L c, L) { return premix<pivot, D>(c, dst.a); });
        const P mixed = M::template apply<Form::pixel, D>(src, s, mixed_in, false);
        return with_colours(r, mixed, mixed,
                            [&](L c, L) { return unmix<pivot, D>(D::wrap(c), [&](L v) { return D::div(v, r); }); });
    } else if constexpr (M::switches.behind_first) {
        return after_behind<M, D>(src, s, dst);
    } else {
        return M::template apply<Form::pixel, D>(src, s, dst, false);
    }
}

/// Alpha or a premultiplied colour times the opacities, in their order.
template <class D, class L, class... Opacity> L times_opacities(L v, Opacity... opacity) {
    ((v = D::mul(v, static_cast<L>(opacity))), ...);
    return v;
}

/// A pixel whose alpha, times the opacities, is `s`. Premultiplied colours take the opacities too.
template <class M, class D, class L, class... Opacity>
void blend_onto(const typename D::Pixel& src, L s, typename D::Pixel* dst, Opacity... opacity) {
    using P = Planes<typename D::Lane>;
    P source = load_pixels<P>(&src);
    if constexpr (M::scales_colour) {
        source =
            with_colours(source.a, source, source, [&](auto c, auto) { return times_opacities<D>(c, opacity...); });
        if (s == 0 && source.r == 0 && source.g == 0 && source.b == 0) return;
    }
    store_pixels(dst, blend_pixel<M, D>(source, s, load_pixels<P>(dst)));
}

/// The function of one pixel with any number of opacities. Tables are those of linear light or null.
template <class M, class D, class... Opacity>
void xfer_pixel(const typename D::Pixel* src, const QX_LinearBlendingTables* tables, Opacity... opacity,
                typename D::Pixel* dst) {
    using Lane = typename D::Lane;
    const Lane s = times_opacities<D>(load_alpha<Planes<Lane>>(src), opacity...);
    if constexpr (M::skips == Skips::transparent_source || M::copies) {
        if (s == 0) return;
    }
    if (tables == nullptr || M::copies) {
        blend_onto<M, D>(*src, s, dst, opacity...);
    } else {
        using L = LinearDepth<D>;
        auto target = to_linear<D>(*tables, *dst);
        const Lane linear_s = widen_alpha<D>(static_cast<QX_ChannelOf<typename D::Pixel>>(s));
        blend_onto<M, L>(to_linear<D>(*tables, *src), linear_s, &target, widen_alpha<D>(opacity)...);
        *dst = from_linear<D>(*tables, target);
    }
}

}  // namespace qx
