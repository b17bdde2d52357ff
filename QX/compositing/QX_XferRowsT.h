// SPDX-License-Identifier: Apache-2.0
// Body of the row routines, for one level.
#pragma once

#include <cstring>

#include "QX/compositing/QX_Levels.h"
#include "QX/indep/QX_Errors.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"

namespace qx::QX_ISA {

/// What one step of a row of a depth works on.
template <class D> using Bundle = Planes<Wide<typename D::Lane>>;

/// Source alpha times mask and opacity; a full factor changes nothing.
template <class D, bool Masked, class V> QX_INLINE V effective(V a, V mask, V opacity) {
    if constexpr (Masked) a = D::mul(a, mask);
    return D::mul(a, opacity);
}

/// The pixels that a mode leaves as they are.
template <class M, class P>
QX_INLINE P unless_skipped(const P& source, typename P::Lane s, const P& target, const P& result) {
    if constexpr (M::skips == Skips::none) {
        return result;
    } else if constexpr (M::skips == Skips::nothing_to_add) {
        return select((s == 0) & (source.r == 0) & (source.g == 0) & (source.b == 0), target, result);
    } else {
        return select(s == 0, target, result);
    }
}

/// Stores a source as it was loaded.
template <class P, class Pixel> QX_INLINE void copy_pixels(const Pixel* src, const P& loaded, Pixel* dst) {
    if constexpr (sizeof(Pixel) == sizeof(QX_Pixel16)) {
        store_pixels(dst, loaded);
    } else {
        __builtin_memcpy(dst, src, pixels_in<P> * sizeof(Pixel));
    }
}

/// Layers are mostly long runs of clear and of opaque pixels, which are passed over or copied.
template <class M, class D, bool Masked, class Pixel>
QX_INLINE void blend_step(const QX_BlendingMode<Pixel>& mode, const Pixel* src, const Pixel* mask, Pixel* dst) {
    using P = Bundle<D>;
    using V = typename P::Lane;
    const V opacity = splat<V>(mode.opacity);
    P source = load_pixels<P>(src);
    V coverage{};
    if constexpr (Masked) coverage = load_alpha<P>(mask);
    const V s = effective<D, Masked>(source.a, coverage, opacity);
    if constexpr (M::skips == Skips::transparent_source) {
        if (all(s == 0)) return;
    }
    if constexpr (M::full_source_copies) {
        if (all(s == D::full)) return copy_pixels(src, source, dst);
    }
    if constexpr (M::scales_colour) {
        source = with_colours(source.a, source, source,
                              [&](V c, V) QX_LAMBDA { return effective<D, Masked>(c, coverage, opacity); });
    }
    const P target = load_pixels<P>(dst);
    store_pixels(dst, unless_skipped<M>(source, s, target,
                                        M::template apply<Form::row, D>(source, s, target, mode.rgb_only != 0)));
}

template <class M, class D, bool Masked, class Pixel = typename D::Pixel>
int blend_row(std::int32_t count, const QX_BlendingMode<Pixel>* mode, const QX_LinearBlendingTables*, const Pixel* src,
              const Pixel* mask, Pixel* dst) {
    if constexpr (M::copies && !Masked) {
        if (mode->opacity == D::full && mode->rgb_only == 0) {
            std::memmove(dst, src, static_cast<std::size_t>(count) * sizeof(Pixel));
            return kQX_NoError;
        }
    }
    for_bundles<Bundle<D>, Pixel>(count, src, Masked ? mask : nullptr, dst,
                                  [&](const Pixel* from, const Pixel* coverage, Pixel* to)
                                      QX_LAMBDA { blend_step<M, D, Masked>(*mode, from, coverage, to); });
    return kQX_NoError;
}

}  // namespace qx::QX_ISA
