// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/indep/QX_Depth.h"
#include "lanes/Planes.h"

/// What every transfer mode states, and the frames that modes of a kind share.
///
/// A mode is a struct with `number`, `switches` and `apply`, in the notation: cs, cd a source and a destination
/// colour, d destination alpha, s the source alpha times mask and opacity. Its formulas are written over lanes of any
/// depth; a depth that truly differs branches inside. Rows, masked rows, rows in linear light, the functions of one
/// pixel and the tables are all made from these (QX_XferRowsT.h, QX_LinearRowsT.h, QX_XferPixelT.h).
namespace qx {

/// Multiplied form that a mode works on: the row driver brings the destination into it and back.
enum class Pivot : std::uint8_t { none, black, white, grey };

struct Switches {
    Pivot pivot = Pivot::none;
    bool behind_first = false;  ///< the row of xfer_behind runs before the mode's own
    bool keeps_alpha = false;   ///< with rgb_only, the driver saves and restores destination alpha
    bool merges_alpha = false;  ///< the alpha merge runs after the row
};

/// Some roundings differ between the rows and the functions of one pixel; both are kept.
enum class Form { row, pixel };

/// Which pixels stay as they are before anything is computed.
enum class Skips : std::uint8_t {
    transparent_source,  ///< s = 0
    nothing_to_add,      ///< s = 0 and no colour either
    none                 ///< the mode has a test of its own, or always writes
};

/// True where all alphas are full and that changes integers in no way: products by them, quotients, sums of alphas.
template <class D, class V> QX_INLINE constexpr bool is_opaque(V alpha) {
    if constexpr (D::number == 32 || !is_wide<V>) {
        return false;
    } else {
        return all_equal(alpha, D::full);
    }
}

/// A value that would be divided by a full alpha.
template <class D, class V> QX_INLINE constexpr V undivided(V v) {
    if constexpr (D::number == 32) return v;
    return lesser(v, splat<V>(D::full));
}

/// A pixel of alpha r with f(colour of s, colour of t) / r as its colours. Most destinations are opaque, and by a full
/// alpha nothing is divided.
template <class D, class P, class F>
QX_INLINE P with_quotients(typename P::Lane r, typename P::Lane alpha, const P& s, const P& t, const F& f) {
    using V = typename P::Lane;
    if constexpr (is_wide<V>) {
        if (all_equal(r, D::full)) {
            return with_colours(alpha, s, t, [&](V cs, V cd) QX_LAMBDA { return undivided<D>(f(cs, cd)); });
        }
    }
    return with_colours(alpha, s, t, [&](V cs, V cd) QX_LAMBDA { return D::div_by_alpha(f(cs, cd), r); });
}

/// The same where no value of f is above r at 8 bits, and where pixels of an r of 0 are not used. Alphas that differ
/// are hardly ever full together.
template <class D, class P, class F> QX_INLINE P with_shares(typename P::Lane r, const P& s, const P& t, const F& f) {
    using V = typename P::Lane;
    if constexpr (D::number == 8 && is_wide<V>) {
        return with_colours(r, s, t, [&](V cs, V cd) QX_LAMBDA { return D::share(f(cs, cd), r); });
    } else {
        return with_quotients<D>(r, r, s, t, f);
    }
}

namespace modes {

template <int Number, Skips S = Skips::transparent_source> struct Mode {
    static constexpr int number = Number;
    static constexpr Switches switches{};
    static constexpr Skips skips = S;
    static constexpr bool scales_colour = false;       ///< source colours too take mask and opacity
    static constexpr bool copies = false;              ///< a copy stays a copy in any light
    static constexpr bool full_source_copies = false;  ///< at full s the result is the source pixel
    static constexpr bool mixes_colours = false;       ///< looks at more than one colour of a pixel together
    static constexpr bool reads_curve = false;         ///< at 8 bits it needs floats or a table in wide registers
};

/// The general composite of a blend function B(cs, cd) of straight colours:
///   n = cd d + cs s - cs p - cd p + B p with p = d s, wrapped to the channel; c = n / r, r = combine(s, d).
/// At float, and at integer depths where the mode says so, full s takes (B - cs) d + cs instead.
template <class Self, int Number, bool FullShortcut = false> struct General : Mode<Number> {
    static constexpr Switches switches{.keeps_alpha = true};

    /// The terms that do not cancel, and nothing to divide by.
    template <class D, class P> QX_LANE P onto_opaque(const P& src, typename P::Lane s, const P& dst) {
        using V = typename P::Lane;
        return with_colours(dst.a, src, dst, [&](V cs, V cd) QX_LAMBDA {
            const V n = cd - D::mul(cd, s) + D::mul(Self::template blend<D>(cs, cd), s);
            return lesser(D::wrap(n), splat<V>(D::full));
        });
    }
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        using V = typename P::Lane;
        const V d = dst.a;
        const auto partly = [&]() QX_LAMBDA {
            const V p = D::mul(d, s), r = D::combine(s, d);
            return with_quotients<D>(r, r, src, dst, [&](V cs, V cd) QX_LAMBDA {
                const V b = Self::template blend<D>(cs, cd);
                if constexpr (D::number == 32) {
                    return (((d * cd - p * cd) + s * cs) - p * cs) + b * p;
                } else {
                    return D::wrap(D::mul(cd, d) + D::mul(cs, s) - D::mul(cs, p) - D::mul(cd, p) + D::mul(b, p));
                }
            });
        };
        if constexpr (FullShortcut || D::number == 32) {
            const P fully = with_colours(splat<V>(D::full), src, dst, [&](V cs, V cd) QX_LAMBDA {
                return D::mix(cs, Self::template blend<D>(cs, cd), d);
            });
            return unless_equal(s, D::full, fully, partly);
        } else {
            return partly();
        }
    }
};

/// Modes on multiplied destination colour: `mix(cs, cd, s)` between the filters; alpha comes with the merge.
template <class Self, int Number, Pivot P> struct Filtered : Mode<Number> {
    static constexpr Switches switches{.pivot = P, .keeps_alpha = true, .merges_alpha = true};

    template <Form F, class D, class Px> QX_LANE Px apply(const Px& src, typename Px::Lane s, const Px& dst, bool) {
        using V = typename Px::Lane;
        return with_colours(dst.a, src, dst, [&](V cs, V cd) QX_LAMBDA { return Self::template mix<F, D>(cs, cd, s); });
    }
};

/// Modes that change alpha alone: `alpha(s, d, luma of the source)`.
template <class Self, int Number, Skips S> struct AlphaOnly : Mode<Number, S> {
    static constexpr bool mixes_colours = true;
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        return with_alpha(Self::template alpha<D>(s, dst.a, D::luma(src.r, src.g, src.b)), dst);
    }
};

}  // namespace modes
}  // namespace qx
