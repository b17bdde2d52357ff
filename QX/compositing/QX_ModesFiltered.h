// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_ModeFrame.h"

/// The modes on multiplied destination colour: `cd` here is what the pre-filter made of the destination, and the
/// post-filter divides the result by the merged alpha. At integer depths an s of 0 gives cd; at 8 bits, where no
/// product lies between two integers, a full s needs no formula of its own.
namespace qx::modes {

struct Add : Filtered<Add, 4, Pivot::black> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        const V sum = D::mul(cs, s) + cd;
        if constexpr (D::number == 32) {
            return sum;
        } else {
            return lesser(sum, splat<V>(D::full));
        }
    }
};

struct Multiply : Filtered<Multiply, 5, Pivot::white> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        if constexpr (D::number == 32) {
            return cd - (1.0f - cs) * cd * s;
        } else {
            const V partly = cd - D::mul(D::mul(D::comp(cs), cd), s);
            return D::number != 8 && s == D::full ? D::mul(cs, cd) : partly;
        }
    }
};

struct Screen : Filtered<Screen, 6, Pivot::black> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        if constexpr (D::number == 32) {
            return 1.0f - (1.0f - cs * s) * (1.0f - cd);
        } else {
            const V partly = cd + D::mul(D::mul(D::comp(cd), cs), s);
            return D::number != 8 && s == D::full ? D::comp(D::mul(D::comp(cd), D::comp(cs))) : partly;
        }
    }
};

struct Overlay : Filtered<Overlay, 7, Pivot::grey> {
    template <Form F, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        if constexpr (D::number == 32) {
            const V h = cd >= 0.5f ? 1.0f - 2.0f * (1.0f - cd) * (1.0f - cs) : 2.0f * cd * cs;
            return (h - cd) * s + cd;
        } else {
            const V h = cd < D::half ? D::mul(2 * cd, cs) : D::comp(D::mul(D::comp(cs), 2 * D::comp(cd)));
            // Kept: rows round away from the destination on either side. A full s gives h.
            return F == Form::row ? D::mix_evenly(cd, h, s) : D::lerp(cd, h, s);
        }
    }
};

struct HardLight : Filtered<HardLight, 9, Pivot::grey> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        if constexpr (D::number == 32) {
            return cs >= 0.5f ? cd + (2.0f * cs - 1.0f) * (1.0f - cd) * s : cd - (1.0f - 2.0f * cs) * cd * s;
        } else {
            const auto lower = cs < D::half;
            const V weight = lower ? D::comp(2 * cs) : 2 * (cs - D::half);
            const V v = D::mul(D::mul(weight, lower ? cd : D::comp(cd)), s);  // a full s changes nothing
            return lower ? cd - v : cd + v;
        }
    }
};

struct DifferencePremul : Filtered<DifferencePremul, 12, Pivot::black> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) { return distance(D::mul(cs, s), cd); }
};

struct DodgePremul : Filtered<DodgePremul, 23, Pivot::black> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        const V x = D::comp(D::mul(cs, s));
        if constexpr (D::number == 32) {
            return ((x == 0.0f) | (cd >= x)) ? splat<V>(1.0f) : cd / x;
        } else {
            return D::div(cd, x);
        }
    }
};

struct BurnPremul : Filtered<BurnPremul, 24, Pivot::white> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        return D::comp(D::div(D::comp(cd), D::comp(D::mul(D::comp(cs), s))));
    }
};

struct Exclusion : Filtered<Exclusion, 25, Pivot::black> {
    template <Form, class D, class V> QX_LANE V mix(V cs, V cd, V s) {
        if constexpr (D::number == 32) {
            return (cs - 2.0f * cd * cs) * s + cd;
        } else {
            const V m = D::mul(cd, cs), x = cs - m;
            return x < m ? cd - D::mul(m - x, s) : cd + D::mul(x - m, s);
        }
    }
};

}  // namespace qx::modes
