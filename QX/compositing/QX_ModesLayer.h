// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_ModeFrame.h"
#include "QX/indep/QX_DepthSteps.h"

/// The modes that place a layer: copies, over and behind and their kin, alpha alone, and the two markers.
namespace qx::modes {

/// Colours are copied, alpha takes mask and opacity; with rgb_only destination alpha stays.
template <int Number> struct Copying : Mode<Number, Skips::none> {
    static constexpr bool copies = true;
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool rgb_only) {
        return with_alpha(rgb_only ? dst.a : s, src);
    }
};
struct Replace : Copying<-3> {};
struct Copy : Copying<0> {};

/// Weighs both pixels by the mask (QX_OwnRowsT.h has its row: it takes neither opacity nor s).
struct MaskCrossfade : Mode<-2, Skips::none> {};

/// Draws or leaves whole pixels by a random number (QX_OwnRowsT.h has its row). The other forms change nothing.
struct Dissolve : Mode<3, Skips::none> {
    template <Form, class D, class P> QX_LANE P apply(const P&, typename P::Lane, const P& dst, bool) { return dst; }
};

struct Behind : Mode<1> {
    template <Form F, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool rgb_only) {
        using V = typename P::Lane;
        const V d = dst.a;
        const auto mixed = [&]() QX_LAMBDA {
            const V r = D::combine(s, d);
            const P sum = with_quotients<D>(r, rgb_only ? d : r, src, dst, [&](V cs, V cd) QX_LAMBDA {
                const V u = D::mul(cs, s);
                if constexpr (F == Form::pixel || D::number == 32) {
                    return D::lerp(u, cd, d);
                } else {  // Kept: rows take the difference without its sign, which rounds the other way at 16 bits
                    return D::mix_evenly(u, cd, d);
                }
            });
            if constexpr (D::number == 32) {
                return sum;
            } else {
                return select(d == 0, with_alpha(rgb_only ? splat<V>(0) : s, src), sum);
            }
        };
        return unless_equal(d, D::full, dst, mixed);
    }
};

struct Over : Mode<2> {
    static constexpr Switches switches{.keeps_alpha = true};
    static constexpr bool full_source_copies = true;
    /// The general form's value, without its division.
    template <class D, class P> QX_LANE P onto_opaque(const P& src, typename P::Lane s, const P& dst) {
        using V = typename P::Lane;
        return with_colours(dst.a, src, dst, [&](V cs, V cd) QX_LAMBDA { return D::lerp(cd, cs, s); });
    }
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        using V = typename P::Lane;
        const V d = dst.a;
        const auto mixed = [&]() QX_LAMBDA {
            const V r = D::combine(s, d);
            // At 8 bits both are the nearest integers of d + (full - d) s and of what is not above it.
            return with_shares<D>(r, src, dst, [&](V cs, V cd) QX_LAMBDA { return D::lerp(D::mul(cd, d), cs, s); });
        };
        const auto partly = [&]() QX_LAMBDA {
            // Single pixels over opaque ones are blended before the library starts too, when there is no table.
            if (!is_wide<V> && D::number != 32 && all_equal(d, D::full)) return onto_opaque<D>(src, s, dst);
            return unless_equal(d, 0, with_alpha(s, src), mixed);
        };
        if constexpr (D::number != 32) {  // for a full s the general form gives the source too
            return all_equal(s, D::full) ? src : partly();
        }
        return unless_equal(s, D::full, src, partly);
    }
};

/// Source colours are multiplied already; they take mask and opacity as alpha does.
struct PremulOver : Mode<21, Skips::nothing_to_add> {
    static constexpr Switches switches{.keeps_alpha = true};
    static constexpr bool scales_colour = true;
    static constexpr bool mixes_colours = true;  // whether all of them are 0
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        using V = typename P::Lane;
        const V w = D::mul(D::comp(s), dst.a), r = D::combine(s, dst.a);
        return with_quotients<D>(r, r, src, dst, [&](V u, V cd) QX_LAMBDA {
            const V sum = D::mul(w, cd) + u;
            if constexpr (D::number == 32) {
                return sum;
            } else {
                return lesser(sum, splat<V>(D::full));
            }
        });
    }
};

/// Alphas add up, until they are full.
struct AlphaAdd : Mode<22> {
    static constexpr Switches switches{.keeps_alpha = true};
    static constexpr bool full_source_copies = true;
    template <Form, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        using V = typename P::Lane;
        const V d = dst.a, t = s + d;
        const auto partly = [&]() QX_LAMBDA {
            return with_colours(t < D::full ? t : splat<V>(D::full), src, dst, [&](V cs, V cd) QX_LAMBDA {
                const V below = D::mul(cd, d) + D::mul(cs, s), above = D::mul(D::comp(s), cd) + D::mul(cs, s);
                return t < D::full ? D::div(below, t) : above;
            });
        };
        return unless_equal(s, D::full, src, partly);
    }
};

struct AlphaMultiply : AlphaOnly<AlphaMultiply, 17, Skips::none> {
    template <class D, class V> QX_LANE V alpha(V s, V d, V) { return D::mul(d, s); }
};
struct AlphaMultiplyLuma : AlphaOnly<AlphaMultiplyLuma, 18, Skips::none> {
    template <class D, class V> QX_LANE V alpha(V s, V d, V luma) {
        if constexpr (D::number == 32) {
            return limited_alpha(luma * s * d);
        } else {
            return D::mul(d, D::mul(luma, s));
        }
    }
};
struct AlphaMultiplyInverse : AlphaOnly<AlphaMultiplyInverse, 19, Skips::transparent_source> {
    template <class D, class V> QX_LANE V alpha(V s, V d, V) { return D::mul(d, D::comp(s)); }
};
struct AlphaMultiplyInverseLuma : AlphaOnly<AlphaMultiplyInverseLuma, 20, Skips::transparent_source> {
    template <class D, class V> QX_LANE V alpha(V s, V d, V luma) {
        if constexpr (D::number == 32) {
            return limited_alpha((1.0f - luma * s) * d);
        } else {
            return D::mul(d, D::comp(D::mul(luma, s)));
        }
    }
};

/// Blue and a full alpha where the source covers half. Kept: a function of one pixel squares the source's own alpha.
struct ThresholdBlue : Mode<39, Skips::none> {
    static constexpr bool mixes_colours = true;
    template <Form F, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        using V = typename P::Lane;
        P marked = dst;
        marked.a = splat<V>(D::full);
        marked.b = src.b;
        if constexpr (F == Form::pixel) {
            return select(D::mul(src.a, src.a) >= D::half, marked, dst);
        } else {
            return select(s >= D::half, marked, dst);
        }
    }
};

/// The whole source pixel, unless the destination is one of four marker colours.
struct MarkerGuard : Mode<40, Skips::none> {
    static constexpr bool mixes_colours = true;
    template <Form F, class D, class P> QX_LANE P apply(const P& src, typename P::Lane s, const P& dst, bool) {
        const auto kept = is_marker<D>(dst);
        if constexpr (F == Form::pixel && D::number == 32) {
            return select((src.a * src.a != 0.0f) & (kept == 0), src, dst);
        } else {
            return select((s > 0) & (kept == 0), src, dst);
        }
    }

private:
    template <class D, class P> QX_LANE auto is_marker(const P& p) {
        if constexpr (D::number == 16) {
            return is_marker<Depth8>(
                Planes<typename P::Lane>{p.a, narrowed_16_to_8(p.r), narrowed_16_to_8(p.g), narrowed_16_to_8(p.b)});
        } else {
            constexpr auto high = D::number == 8 ? typename D::Lane(191) : typename D::Lane(0.75f);
            constexpr auto low = D::number == 8 ? typename D::Lane(64) : typename D::Lane(0.25f);
            const auto green = (p.r == 0) & (p.b == 0) & (p.g >= D::full);
            const auto red = (p.r == D::full) & (p.g == 0) & (p.b == 0);
            const auto blue = (p.r == 0) & (p.g == 0) & ((p.b == high) | (p.b == low));
            return green | red | blue;
        }
    }
};

}  // namespace qx::modes
