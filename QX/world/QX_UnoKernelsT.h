// SPDX-License-Identifier: Apache-2.0
// Body of the rows of mask buffers, for one level.
#include "QX/indep/QX_Depth.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/world/QX_UnoKernels.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"

namespace qx::QX_ISA {

/// What one step of a row works on.
template <class D> struct Samples { using Lane = Wide<typename D::Channel>; };

/// What a formula works in: lanes as wide as samples, without a sign, or the even samples and then the odd ones of a
/// register in lanes twice as wide, with one.
enum class UnoLanes { own, wider };

/// A register that is loaded, once, even where the compiler would read memory again for each of its uses: that costs
/// twice where registers lie across lines of the cache.
template <class U> QX_INLINE U held(U v) {
    __asm__("" : "+x"(v));
    return v;
}

/// The samples side by side at `to` become what `formula` makes of those at `from`.
template <class D, UnoLanes lanes, class Formula, class... From>
QX_INLINE void uno_step(const Formula& formula, typename D::Channel* to, const From*... from) {
    if constexpr (kRegister == 0) {
        *to = static_cast<typename D::Channel>(formula(typename D::Lane{*from}...));
    } else if constexpr (lanes == UnoLanes::own || D::number == 32) {
        store_lanes(to, formula(load_lanes<Wide<typename D::Channel>>(from)...));
    } else {
        using U = Wide<std::conditional_t<D::number == 8, std::uint16_t, std::uint32_t>>;
        using V = Wide<std::conditional_t<D::number == 8, std::int16_t, std::int32_t>>;
        const auto both = [&](auto... v) QX_LAMBDA {
            const U low = splat<U>((1 << D::number) - 1);
            const U even = (U)formula((V)(v & low)...), odd = (U)formula((V)(v >> D::number)...);
            return (D::number == 8 ? even : even & low) | odd << D::number;  // of 8 bits none is above full
        };
        store_lanes(to, both(held(load_lanes<U>(from))...));
    }
}

/// Rows through a formula of (source, destination), or of (source, second source, destination).
template <class D, UnoLanes lanes = UnoLanes::wider, class Formula, class Sample = typename D::Channel>
QX_INLINE void uno_row(std::int32_t count, const Sample* src, Sample* dst, const Formula& formula) {
    for_bundles<Samples<D>>(count, src, dst,
                            [&](const Sample* s, Sample* d) QX_LAMBDA { uno_step<D, lanes>(formula, d, s, d); });
}
template <class D, UnoLanes lanes = UnoLanes::wider, class Formula, class Sample = typename D::Channel>
QX_INLINE void uno_row(std::int32_t count, const Sample* src, const Sample* second, Sample* dst,
                       const Formula& formula) {
    for_bundles<Samples<D>>(count, src, second, dst, [&](const Sample* s, const Sample* t, Sample* d) QX_LAMBDA {
        uno_step<D, lanes>(formula, d, s, t, d);
    });
}

/// What operators work in. Sums of deep samples above full, which are not well-formed, need the room.
template <class D> constexpr UnoLanes lanes_of(int op) {
    return op >= 4 && op <= (D::number == 8 ? 7 : 6) ? UnoLanes::own : UnoLanes::wider;
}

/// Two samples by an operator, 1 to 7.
template <class D, int op, class V> QX_INLINE V combined(V s, V d) {
    if constexpr (op == 1) return D::combine(s, d);
    if constexpr (op == 2) return D::mul(D::comp(s), d);
    if constexpr (op == 3) return D::mul(s, d);
    if constexpr (op == 4) return greater(s, d);
    if constexpr (op == 5) return lesser(s, d);
    if constexpr (op == 6) return greater(s, d) - lesser(s, d);
    if constexpr (op == 7) return d + lesser(s, D::comp(d));
}

/// A product to which this was added before it is reduced, in place of one half. The noise of a sample never takes it
/// beyond the larger factor.
template <class D, class V> QX_INLINE V product_with(V x, V y, V addend) {
    if constexpr (is_short<V>) {
        using U = UnsignedLanes<V>;
        return (V)D::reduced((U)x * (U)y + ((U)addend - splat<U>(D::half)));
    } else {
        return D::reduced(x * y + (addend - splat<V>(D::half)));
    }
}

template <class D> struct UnoRowsOf {
    using Sample = typename D::Channel;

    template <int op> static void combine(std::int32_t count, const Sample* src, Sample* dst) {
        uno_row<D, lanes_of<D>(op)>(count, src, dst, [](auto s, auto d) QX_LAMBDA { return combined<D, op>(s, d); });
    }
    static void add(std::int32_t count, std::int32_t opacity, const Sample* src, Sample* dst) {
        uno_row<D>(count, src, dst,
                   [=]<class V>(V s, V d) QX_LAMBDA { return combined<D, 7>(D::mul(s, splat<V>(opacity)), d); });
    }
    static void grow(std::int32_t count, const UnoStrength& strength, const Sample* src, Sample* dst) {
        uno_row<D>(count, src, dst, [strength]<class V>(V s, V d) QX_LAMBDA {
            const V l = splat<V>(strength.limit), t = D::mul(s, splat<V>(strength.opacity));
            return d < l ? d + D::template mul<V>(t, l - d) : d;
        });
    }
    static void grow_noisily(std::int32_t count, const UnoStrength& strength, const Sample* src, const Sample* noise,
                             Sample* dst) {
        uno_row<D>(count, src, noise, dst, [strength]<class V>(V s, V n, V d) QX_LAMBDA {
            const V l = splat<V>(strength.limit), t = D::mul(s, splat<V>(strength.opacity));
            return d < l ? d + product_with<D, V>(t, l - d, n) : d;
        });
    }
    /// Negative products round like their positive ones at 8 bits, where mix_evenly has what that comes to.
    static void transfer(std::int32_t count, const Sample* coverage, const Sample* src, Sample* dst) {
        uno_row<D>(count, src, coverage, dst, []<class V>(V b, V a, V d) QX_LAMBDA {
            if constexpr (D::number == 8) {
                return D::mix_evenly(d, b, a);
            } else if constexpr (D::number == 16) {
                const V difference = b - d;
                return d + ((a * difference + 16383 + (difference >> 31)) >> 15);
            } else {
                return D::mix(d, b, a);
            }
        });
    }
    static void fade(std::int32_t count, std::int32_t opacity, Sample* dst) {
        uno_row<D>(count, dst, dst, [=]<class V>(V s, V) QX_LAMBDA { return D::mul(s, splat<V>(opacity)); });
    }
    static void invert(std::int32_t count, std::int32_t opacity, Sample* dst) {
        if (opacity == D::full) {
            uno_row<D, UnoLanes::own>(count, dst, dst, [](auto s, auto) QX_LAMBDA { return D::comp(s); });
        } else {
            uno_row<D>(count, dst, dst,
                       [=]<class V>(V s, V) QX_LAMBDA { return D::mul(D::comp(s), splat<V>(opacity)); });
        }
    }
    static void shift(std::int32_t count, std::int32_t shift, const std::uint16_t* src, Sample* dst) {
        for (std::int32_t i = 0; i < count; ++i) dst[i] = static_cast<Sample>((src[i] + (1 << shift >> 1)) >> shift);
    }
};

void add_widened(std::int32_t count, std::int32_t opacity, const std::uint8_t* src, std::uint16_t* dst) {
    for (std::int32_t i = 0; i < count; ++i) {
        const auto s = static_cast<std::uint32_t>(Depth8::mul<std::int32_t>(src[i], opacity));
        dst[i] = static_cast<std::uint16_t>(lesser<std::int32_t>(dst[i] + widen_8_to_16(s), Depth16::full));
    }
}

void scale_to_float(std::int32_t count, float factor, const std::uint16_t* src, float* dst) {
    for (std::int32_t i = 0; i < count; ++i) dst[i] = static_cast<float>(src[i]) * factor;
}

template <class D> constexpr UnoRows<typename D::Channel> uno_rows() {
    using R = UnoRowsOf<D>;
    return {{&R::template combine<1>, &R::template combine<2>, &R::template combine<3>, &R::template combine<4>,
             &R::template combine<5>, &R::template combine<6>, &R::template combine<7>},
            &R::add,
            &R::grow,
            &R::grow_noisily,
            &R::transfer,
            &R::fade,
            &R::invert,
            &R::shift};
}

const UnoKernels uno_kernels{uno_rows<Depth8>(), uno_rows<Depth16>(), &UnoRowsOf<DepthFloat>::transfer, &add_widened,
                             &scale_to_float};

}  // namespace qx::QX_ISA
