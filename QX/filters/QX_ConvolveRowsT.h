// SPDX-License-Identifier: Apache-2.0
// Body of the rows of convolutions, for one level. Channels are worked on as they lie in memory: a register holds whole
// pixels, and a weight of each channel repeats along it.
#include "QX/filters/QX_ConvolveKernels.h"
#include "QX/indep/QX_Depth.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"

namespace qx::QX_ISA {

/// Sums of a depth. Integers wrap.
template <class D> using SumOf = std::conditional_t<D::number == 32, float, std::uint32_t>;
template <class V> using SignedLanes = Vector<std::int32_t, sizeof(V)>;

template <class V, class T> QX_INLINE V repeated_four(const T (&four)[4]) {
    V v{};
    for (int i = 0; i < lanes_in<V>; ++i) v[i] = four[i % 4];
    return v;
}

template <class V> QX_INLINE V weights_at(const KernelWindow& w, std::ptrdiff_t at) {
    const __m128i four = _mm_setr_epi32(w.first[0][at], w.first[1][at], w.first[2][at], w.first[3][at]);
    if constexpr (std::is_same_v<NumberOf<V>, float>) {
        return repeated<V>(_mm_castps_si128(_mm_cvtepi32_ps(four)));
    } else {
        return repeated<V>(four);
    }
}

/// A quotient towards zero. By -1 the least integer wraps, as its negative does.
QX_INLINE std::int32_t quotient(std::int32_t n, std::int32_t d) {
    return d == -1 ? static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(n)) : n / d;
}

/// The same of whole registers, by the reciprocal in double. A quotient that is no integer lies 1 / d or more off the
/// next ones. Moved half of that away from zero, all lie 1 / (2 d) or more from where truncation would go wrong; the
/// two roundings are off by less than 2^-51 of a number below 2^32 / d.
template <class I> QX_INLINE I quotients(I n, const std::int32_t (&divisor)[4]) {
    if constexpr (sizeof(I) == 16) {
        for (int i = 0; i < lanes_in<I>; ++i) n[i] = quotient(n[i], divisor[i % 4]);
        return n;
    } else {
        using Half = Vector<std::int32_t, sizeof(I) / 2>;
        using F = DoublesOf<Half>;
        Half half[2];
        __builtin_memcpy(half, &n, sizeof n);
        const F reciprocal = 1.0 / to_double(repeated_four<Half>(divisor));
        for (Half& h : half) {
            const F v = to_double(h);
            h = narrowed_to_int((v + (v < 0 ? splat<F>(-0.5) : splat<F>(0.5))) * reciprocal);
        }
        __builtin_memcpy(&n, half, sizeof n);
        return n;
    }
}

/// From sums to channels, which may lie off the scale.
template <class D, class V> QX_INLINE auto scaled(V sums, const KernelScale& scale) {
    if constexpr (D::number == 32) {
        V v = sums / __builtin_convertvector(repeated_four<SignedLanes<V>>(scale.divisor), V);
        if (scale.clamps) v = v < 0.0f ? V{} : v > 1.0f ? splat<V>(1.0f) : v;
        return AlphaLanesFloat<V>::with_alpha(v, limited_alpha(v));
    } else {
        const auto v = quotients((SignedLanes<V>)sums, scale.divisor);
        return scale.clamps ? lesser(greater(v, SignedLanes<V>{}), splat<SignedLanes<V>>(D::full)) : v;
    }
}

/// `Registers` of pixels side by side.
template <class D, class V, int Registers>
QX_INLINE void convolve_step(const KernelWindow& window, const KernelScale& scale, const std::byte* src,
                             std::ptrdiff_t rowbytes, typename D::Pixel* dst) {
    using Pixel = typename D::Pixel;
    constexpr int pixels = lanes_in<V> / 4;
    V sums[Registers]{};
    for (std::int32_t y = 0; y < window.rows; ++y) {
        const std::byte* const line = src + y * rowbytes;
        for (std::int32_t x = 0; x < window.columns; ++x) {
            const V weights = weights_at<V>(window, y * window.row_length + x);
            const std::byte* const at = line + x * std::ptrdiff_t{sizeof(Pixel)};
            for (int k = 0; k < Registers; ++k) {
                const std::byte* const run = at + k * pixels * std::ptrdiff_t{sizeof(Pixel)};
                sums[k] += load_channels<V, QX_ChannelOf<Pixel>>(run) * weights;
            }
        }
    }
    for (int k = 0; k < Registers; ++k) {
        using Packed = Vector<QX_ChannelOf<Pixel>, lanes_in<V> * sizeof(QX_ChannelOf<Pixel>)>;
        store_lanes(dst + k * pixels, __builtin_convertvector(scaled<D>(sums[k], scale), Packed));
    }
}

template <class D, class Pixel = typename D::Pixel>
void convolve_row(std::int32_t count, const KernelWindow& window, const KernelScale& scale, const std::byte* src,
                  std::ptrdiff_t rowbytes, Pixel* dst) {
    const auto walk = [&]<class V, int Registers>() QX_LAMBDA {
        constexpr int step = Registers * lanes_in<V> / 4;
        for (; count >= step; count -= step, src += step * sizeof(Pixel), dst += step) {
            convolve_step<D, V, Registers>(window, scale, src, rowbytes, dst);
        }
    };
    using One = Vector<SumOf<D>, 16>;
    if constexpr (kRegister > 16) {
        walk.template operator()<Wide<SumOf<D>>, 8>();
        walk.template operator()<Wide<SumOf<D>>, 1>();
    } else {
        walk.template operator()<One, 8>();
    }
    walk.template operator()<One, 1>();
}

const ConvolveKernels convolve_kernels{{&convolve_row<Depth8>}, {&convolve_row<Depth16>}, {&convolve_row<DepthFloat>}};

}  // namespace qx::QX_ISA
