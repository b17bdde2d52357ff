// SPDX-License-Identifier: Apache-2.0
// Body of rows that do in one pass what the row driver does in several, for one level: multiplied colour, row, alpha
// merge and straight colour, or the row of xfer_behind and the mode's own. Values and their roundings are those of the
// passes.
#pragma once

#include "QX/compositing/QX_FiltersT.h"
#include "QX/compositing/QX_XferRowsT.h"

namespace qx::QX_ISA {

/// Channels as a row that follows reads what one before it stored.
template <class D, class V> QX_INLINE V stored(V c) {
    if constexpr (D::number == 16) return limited16(D::wrap(c));
    return D::wrap(c);
}
template <class D, class P> QX_INLINE P stored_pixels(const P& p) {
    using V = typename P::Lane;
    return with_colours(stored<D>(p.a), p, p, [](V c, V) QX_LAMBDA { return stored<D>(c); });
}

/// A row of mode M on pixels in work. What filtered modes make of integers with an s of 0 is what was there.
template <class M, class D, class P>
QX_INLINE P blended(const P& source, typename P::Lane s, const P& target, bool rgb_only) {
    const P result = M::template apply<Form::row, D>(source, s, target, rgb_only);
    if constexpr (M::switches.pivot != Pivot::none && D::number != 32) return result;
    return unless_skipped<M>(source, s, target, result);
}

/// Into multiplied colour, the row, and back to straight colour by the merged alpha. Over opaque integer pixels the
/// filters and the merge change nothing.
template <class M, class D, bool Masked, class P>
QX_INLINE P filtered(const P& source, typename P::Lane s, const Setting<typename P::Lane>& mode,
                     typename P::Lane coverage, const P& target) {
    using V = typename P::Lane;
    constexpr Pivot pivot = M::switches.pivot;
    if (is_opaque<D>(target.a)) return stored_pixels<D>(blended<M, D>(source, s, target, mode.rgb_only));
    const P mixed =
        with_colours(target.a, target, target, [&](V c, V) QX_LAMBDA { return premix<pivot, D>(c, target.a); });
    const P row = stored_pixels<D>(blended<M, D>(source, s, mixed, mode.rgb_only));
    const V alpha = stored<D>(merged<D, Masked>(source.a, mode.opacity, coverage, target.a));
    return straightened<pivot, D>(with_alpha(alpha, row));
}

template <class M, class D, bool Masked, class P, class Pixel>
QX_INLINE void one_pass_step(const Setting<typename P::Lane>& mode, const Pixel* src, const Pixel* mask, Pixel* dst) {
    using V = typename P::Lane;
    const P source = load_pixels<P>(src);
    V coverage{};
    if constexpr (Masked) coverage = load_alpha<P>(mask);
    const V s = effective<D, Masked>(source.a, coverage, mode);
    if constexpr (M::switches.behind_first) {
        if (all_equal(s, 0)) return;
        const P target = stored_pixels<D>(blended<modes::Behind, D>(source, s, load_pixels<P>(dst), mode.rgb_only));
        store_pixels(dst, blended<M, D>(source, s, target, mode.rgb_only));
    } else {
        const P target = load_pixels<P>(dst);
        store_pixels(dst, filtered<M, D, Masked>(source, s, mode, coverage, target));
    }
}

/// @param mode  its opacity is not 0, with which no alpha would be merged, and not above full
template <class M, class D, bool Masked, class Pixel = typename D::Pixel>
int one_pass_row(std::int32_t count, const QX_BlendingMode<Pixel>* mode, const QX_LinearBlendingTables*,
                 const Pixel* src, const Pixel* mask, Pixel* dst) {
    using P = BundleOf<M, D>;
    for_bundles<P, Pixel>(
        count, src, Masked ? mask : nullptr, dst,
        [setting = Setting<typename P::Lane>(*mode)](const Pixel* from, const Pixel* coverage, Pixel* to)
            QX_LAMBDA { one_pass_step<M, D, Masked, P>(setting, from, coverage, to); });
    return kQX_NoError;
}

}  // namespace qx::QX_ISA
