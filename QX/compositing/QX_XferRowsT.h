// SPDX-License-Identifier: Apache-2.0
// Body of the row routines, for one level.
#pragma once

#include <algorithm>
#include <cstring>

#include "QX/compositing/QX_Levels.h"
#include "QX/indep/QX_Errors.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"

namespace qx::QX_ISA {

/// What one step of a row of a depth works on: planes, or at 8 bits pairs where each colour is worked on by itself.
template <class D> using Bundle = Planes<Wide<typename D::Lane>>;
template <class M, class D>
using BundleOf =
    std::conditional_t<M::mixes_colours || (M::reads_curve && kRegister < 64), Bundle<D>, Colours<D, kRegister>>;

/// What a row takes from its mode, apart from memory that its stores could change.
template <class V> struct Setting {
    template <class Pixel>
    explicit Setting(const QX_BlendingMode<Pixel>& mode)
        : opacity(splat<V>(mode.opacity)),
          shows_all(mode.opacity == DepthOf<Pixel>::full),
          rgb_only(mode.rgb_only != 0) {}
    V opacity;
    bool shows_all;  ///< opacity is full, which changes nothing
    bool rgb_only;
};

/// Source alpha times mask and opacity.
template <class D, bool Masked, class V> QX_INLINE V effective(V a, V mask, const Setting<V>& mode) {
    if constexpr (Masked) a = D::mul(a, mask);
    return mode.shows_all ? a : D::mul(a, mode.opacity);
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

/// A mode that says what it makes of an opaque destination: integers without a division, and nothing where s is 0.
template <class M, class D, class P>
concept TellsOpaque = D::number != 32 && is_wide<typename P::Lane>&& requires(const P& p) {
    M::template onto_opaque<D>(p, p.a, p);
};

template <class M, class D, bool Masked, class P, class Pixel>
QX_INLINE void blend_step(const Setting<typename P::Lane>& mode, const Pixel* src, const Pixel* mask, Pixel* dst) {
    using V = typename P::Lane;
    P source = load_pixels<P>(src);
    V coverage{};
    if constexpr (Masked) coverage = load_alpha<P>(mask);
    const V s = effective<D, Masked>(source.a, coverage, mode);
    if constexpr (M::skips == Skips::transparent_source) {
        if (all_equal(s, 0)) return;
    }
    if constexpr (M::scales_colour) {
        source = with_colours(source.a, source, source,
                              [&](V c, V) QX_LAMBDA { return effective<D, Masked>(c, coverage, mode); });
    }
    const P target = load_pixels<P>(dst);
    if constexpr (TellsOpaque<M, D, P>) {
        if (all_equal(target.a, D::full)) return store_pixels(dst, M::template onto_opaque<D>(source, s, target));
    }
    store_pixels(
        dst, unless_skipped<M>(source, s, target, M::template apply<Form::row, D>(source, s, target, mode.rgb_only)));
}

template <class M, class D, bool Masked, class Pixel>
QX_INLINE void blend_run(std::int32_t count, const QX_BlendingMode<Pixel>& mode, const Pixel* src, const Pixel* mask,
                         Pixel* dst) {
    using P = BundleOf<M, D>;
    for_bundles<P, Pixel>(
        count, src, Masked ? mask : nullptr, dst,
        [setting = Setting<typename P::Lane>(mode)](const Pixel* from, const Pixel* coverage, Pixel* to)
            QX_LAMBDA { blend_step<M, D, Masked, P>(setting, from, coverage, to); });
}

/// Stores pixels as rows store them: 16-bit channels limited.
template <class P, int Count, class Pixel> QX_INLINE void copy_stretch(const Pixel* src, Pixel* dst) {
    if constexpr (sizeof(Pixel) == sizeof(QX_Pixel16)) {
        for (int k = 0; k < Count; k += pixels_in<P>) store_pixels(dst + k, load_pixels<P>(src + k));
    } else {
        __builtin_memcpy(dst, src, Count * sizeof(Pixel));
    }
}

/// Layers are mostly long runs of clear and of opaque pixels: whole stretches of these are passed over or copied.
template <class M, class D, bool Masked, class Pixel>
QX_INLINE void blend_stretches(std::int32_t count, const QX_BlendingMode<Pixel>& mode, const Pixel* src,
                               const Pixel* mask, Pixel* dst) {
    constexpr std::int32_t step = kStretch<kRegister, Pixel>;
    ReadAhead<Pixel> ahead;
    for (std::int32_t i = 0; i < count; i += step) {
        Stretch kind = i + step <= count ? look_ahead<kRegister>(src + i) : Stretch::mixed;
        const Pixel* const coverage = Masked ? mask + i : nullptr;
        if (Masked && i + step <= count)
            kind = covered<sizeof(Pixel) == sizeof(QX_PixelFloat)>(kind, look_ahead<kRegister>(coverage));
        ahead.next(i, step, kind == Stretch::mixed, src, Masked ? mask : nullptr, dst);
        if (kind == Stretch::clear) continue;
        if (kind == Stretch::opaque && mode.opacity == D::full) {
            copy_stretch<Bundle<D>, step>(src + i, dst + i);
        } else {
            blend_run<M, D, Masked>(std::min(step, count - i), mode, src + i, coverage, dst + i);
        }
    }
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
    if constexpr (kRegister > 0 && D::number == 16) {
        // Records hold opacities up to 2. Beyond full, lanes would leave the numbers that they are made for.
        if (mode->opacity > D::full) {
            const auto plain_row = plain::compositing_kernels.rows.of<Pixel>().at[Masked][modes::place_of(M::number)];
            return plain_row(count, mode, nullptr, src, mask, dst);
        }
    }
    if constexpr (kRegister > 0 && M::full_source_copies) {
        blend_stretches<M, D, Masked>(count, *mode, src, mask, dst);
    } else {
        blend_run<M, D, Masked>(count, *mode, src, mask, dst);
    }
    return kQX_NoError;
}

}  // namespace qx::QX_ISA
