// SPDX-License-Identifier: Apache-2.0
// Body of the row routines, for one level: the including file names it by QX_ISA and gives its bundles,
// `Bundles<Pixel>::Middle` for the middle of a row and `Tail` for its end, and `kStretch`, the pixels whose alphas are
// looked at together (0: each step looks for itself).

#include <cstring>

#include "QX/compositing/QX_Levels.h"
#include "QX/compositing/QX_PixelAccess.h"
#include "QX/indep/QX_Errors.h"

namespace qx::QX_ISA {

/// Source alpha times mask and opacity; a full factor changes nothing.
template <class D, bool Masked, class V> QX_INLINE V effective(V a, V mask, V opacity) {
    if constexpr (Masked) a = D::mul(a, mask);
    return D::mul(a, opacity);
}

template <class M, class D, bool Masked, class P, class Pixel>
QX_INLINE void blend_step(const QX_BlendingMode<Pixel>& mode, const Pixel* src, const Pixel* mask, Pixel* dst) {
    using V = typename P::Lane;
    const V opacity = splat<V>(mode.opacity);
    P source = load_pixels<P>(src);
    V coverage{};
    if constexpr (Masked) coverage = load_alpha<P>(mask);
    const V s = effective<D, Masked>(source.a, coverage, opacity);
    if constexpr (M::skips == Skips::transparent_source) {
        if (all(s == 0)) return;
    }
    if constexpr (M::scales_colour) {
        source = with_colours(source.a, source, source,
                              [&](V c, V) QX_LAMBDA { return effective<D, Masked>(c, coverage, opacity); });
    }
    const P target = load_pixels<P>(dst);
    const P result = M::template apply<Form::row, D>(source, s, target, mode.rgb_only != 0);
    if constexpr (M::skips == Skips::none) {
        store_pixels(dst, result);
    } else if constexpr (M::skips == Skips::nothing_to_add) {
        store_pixels(dst, select((s == 0) & (source.r == 0) & (source.g == 0) & (source.b == 0), target, result));
    } else {
        store_pixels(dst, select(s == 0, target, result));
    }
}

/// What the alphas of a stretch of source pixels have in common.
enum class Stretch { mixed, clear, opaque };

template <class Pixel> QX_INLINE Stretch look_ahead(const Pixel* src) {
    using P = typename Bundles<Pixel>::Middle;
    constexpr int steps = kStretch / pixels_in<P>;
    auto clear = load_alpha<P>(src) == 0, opaque = load_alpha<P>(src) == DepthOf<Pixel>::full;
    for (int k = 1; k < steps; ++k) {
        const auto alpha = load_alpha<P>(src + k * pixels_in<P>);
        clear &= alpha == 0;
        opaque &= alpha == DepthOf<Pixel>::full;
    }
    return all(clear) ? Stretch::clear : all(opaque) ? Stretch::opaque : Stretch::mixed;
}

/// Layers are mostly long runs of clear and of opaque pixels: whole stretches of these are passed over or copied, where
/// the mode allows it.
template <class M, class D, bool Masked, class P, class Pixel>
QX_INLINE void blend_stretch(const QX_BlendingMode<Pixel>& mode, const Pixel* src, const Pixel* mask, Pixel* dst) {
    if constexpr (M::skips == Skips::transparent_source) {
        const Stretch stretch = look_ahead(src);
        if (stretch == Stretch::clear) return;
        if constexpr (M::full_source_copies && !Masked) {
            if (stretch == Stretch::opaque && mode.opacity == D::full) {
                __builtin_memcpy(dst, src, kStretch * sizeof(Pixel));
                return;
            }
        }
    }
    for (int i = 0; i < kStretch; i += pixels_in<P>) {
        blend_step<M, D, Masked, P>(mode, src + i, Masked ? mask + i : nullptr, dst + i);
    }
}

template <class M, class D, bool Masked, class Pixel = typename D::Pixel>
int blend_row(std::int32_t count, const QX_BlendingMode<Pixel>* mode, const QX_LinearBlendingTables*, const Pixel* src,
              const Pixel* mask, Pixel* dst) {
    using P = typename Bundles<Pixel>::Middle;
    if constexpr (M::copies && !Masked) {
        if (mode->opacity == D::full && mode->rgb_only == 0) {
            std::memmove(dst, src, static_cast<std::size_t>(count) * sizeof(Pixel));
            return kQX_NoError;
        }
    }
    std::int32_t i = 0;
    if constexpr (kStretch > 0) {
        for (; i + kStretch <= count; i += kStretch) {
            blend_stretch<M, D, Masked, P>(*mode, src + i, Masked ? mask + i : nullptr, dst + i);
        }
    }
    for (; i + pixels_in<P> <= count; i += pixels_in<P>) {
        blend_step<M, D, Masked, P>(*mode, src + i, Masked ? mask + i : nullptr, dst + i);
    }
    for (; i < count; ++i) {
        blend_step<M, D, Masked, typename Bundles<Pixel>::Tail>(*mode, src + i, Masked ? mask + i : nullptr, dst + i);
    }
    return kQX_NoError;
}

}  // namespace qx::QX_ISA
