// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_ModeFrame.h"
#include "QX/compositing/QX_SoftLight.h"

/// The modes of the general composite: a blend function B(cs, cd) each, on straight colours.
namespace qx::modes {

/// Twice a channel of the lower half, and the upper half of a channel spread over the scale. At 8 bits both
/// round, over the scale of 127 that the upper half has.
template <class D, class V> QX_INLINE constexpr V doubled(V c) {
    if constexpr (D::number == 8) {
        return (c * 255 + 64) >> 7;
    } else {
        return c * 2;
    }
}
template <class D, class V> QX_INLINE constexpr V doubled_upper(V c) {
    if constexpr (D::number == 8) {
        return D::div(greater(c - D::half, splat<V>(0)), splat<V>(127));
    } else {
        return (c - D::half) * 2;
    }
}

struct SoftLight : General<SoftLight, 8, true> {
    static constexpr bool reads_curve = true;
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        if constexpr (D::number == 8) {
            const V curve = soft_curve8(cs, cd);  // Kept: the upper weight is 2 cs less 256, not less 255
            return cs < D::half ? cd - D::mul(curve, D::full - 2 * cs) : cd + D::mul(curve, 2 * cs & 255);
        } else if constexpr (D::number == 16) {
            const auto lower = cs < D::half;
            const V curve = soft_curve16(lower, cd);
            return lower ? cd - D::mul(curve, D::full - 2 * cs) : cd + D::mul(2 * cs - D::full, curve);
        } else {
            const auto lower = cs < D::half;
            const V curve = soft_curve_float(lower, cd);
            return lower ? cd - curve * (1.0f - 2.0f * cs) : cd + (2.0f * cs - 1.0f) * curve;
        }
    }
};

struct Darken : General<Darken, 10, true> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) { return lesser(cs, cd); }
};

struct Lighten : General<Lighten, 11, true> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) { return greater(cs, cd); }
};

struct Difference : General<Difference, 26> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) { return distance(cs, cd); }
};

struct Dodge : General<Dodge, 27> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        const V x = D::comp(cs);
        if constexpr (D::number == 32) {
            return cd == 0.0f ? cd : ((x == 0.0f) | (cd >= x)) ? splat<V>(1.0f) : cd / x;
        } else {
            return cd == 0 ? cd : D::div(cd, x);
        }
    }
};

struct Burn : General<Burn, 28> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        const V x = D::comp(cd);
        if constexpr (D::number == 32) {
            const V burnt = ((cs == 0.0f) | (x >= cs)) ? splat<V>(0.0f) : 1.0f - x / cs;
            return ((cs == 0.0f) & (cd == 1.0f)) ? cd : burnt;
        } else {
            return ((cs == 0) & (cd == D::full)) ? cd : D::comp(D::div(x, cs));
        }
    }
};

struct LinearDodge : General<LinearDodge, 29> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        if constexpr (D::number == 32) {
            return cs + cd;
        } else {
            return lesser(cs + cd, splat<V>(D::full));
        }
    }
};

struct LinearBurn : General<LinearBurn, 30> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) { return greater(cs + cd - D::full, splat<V>(0)); }
};

struct LinearLight : General<LinearLight, 31> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        if constexpr (D::number == 32) {
            return 2.0f * cs - 1.0f + cd;
        } else {
            return lesser(greater(2 * (cs - D::half) + cd, splat<V>(0)), splat<V>(D::full));
        }
    }
};

struct VividLight : General<VividLight, 32> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        V lower, upper;
        if constexpr (D::number == 32) {
            lower = D::comp(D::div(D::comp(cd), 2.0f * cs));
            upper = D::div(cd, 1.0f - 2.0f * (cs - 0.5f));
        } else {
            lower = D::comp(D::div(D::comp(cd), doubled<D>(lesser(cs, splat<V>(D::half - 1)))));
            upper = D::div(cd, D::comp(doubled_upper<D>(cs)));
        }
        const V inner = cs < D::half ? lower : cs == D::half ? cd : upper;
        return cs == 0 ? splat<V>(0) : cs == D::full ? splat<V>(D::full) : inner;
    }
};

struct PinLight : General<PinLight, 33> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        const V lower = lesser(doubled<D>(cs), cd), upper = greater(doubled_upper<D>(cs), cd);
        return cs < D::half ? lower : cs > D::half ? upper : cd;
    }
};

struct HardMix : General<HardMix, 34> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        if constexpr (D::number == 32) {
            const V x = cd - (1.0f - cs) * 0.99999f;
            return cd <= (1.0f - cs) * 0.99999f ? splat<V>(0.0f)
                   : x >= 1.001358e-5f          ? splat<V>(1.0f)
                                                : x / 1.001358e-5f;
        } else {
            const V t = D::mul(D::comp(cs), splat<V>(D::full - 1));
            return cd > t ? splat<V>(D::full) : splat<V>(0);
        }
    }
};

struct Subtract : General<Subtract, 37> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        if constexpr (D::number == 32) {
            return cd - cs;
        } else {
            return greater(cd - cs, splat<V>(0));
        }
    }
};

struct Divide : General<Divide, 38> {
    template <class D, class V> QX_LANE V blend(V cs, V cd) {
        if constexpr (D::number == 32) {
            constexpr float least = 1.8189894e-6f;  // smaller divisors count as this one
            const V size = cs < 0.0f ? -cs : cs;
            return size > least ? cd / cs : cd / least;
        } else {
            return cd == 0 ? cd : D::div(cd, cs);
        }
    }
};

}  // namespace qx::modes
