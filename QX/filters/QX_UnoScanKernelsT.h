// SPDX-License-Identifier: Apache-2.0
// Body of running means, for one level. Where there are registers sums are made side by side, else one after the other.
#include "QX/filters/QX_UnoScanKernels.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"

namespace qx::QX_ISA {

/// Lanes moved up by `step`, with zeros in front.
template <int step, class V> QX_INLINE V moved_up(V v) {
    return reordered(v, V{}, [](int lane) { return lane < step ? lanes_in<V> + lane : lane - step; });
}
/// In every lane the sum of those up to it.
template <class V> QX_INLINE V running_sums(V v) {
    v += moved_up<1>(v);
    v += moved_up<2>(v);
    if constexpr (lanes_in < V >> 4) v += moved_up<4>(v);
    return v;
}

/// Stores the low bits of lanes.
template <class V, class Sample> QX_INLINE void store_narrowed(Sample* to, V v) {
    if constexpr (sizeof(V) > 16) {
        store_lanes(to, __builtin_convertvector(v, Vector<Sample, lanes_in<V> * sizeof(Sample)>));
    } else if constexpr (sizeof(Sample) == 1) {
        v = shuffle_bytes<0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1>(v);
        __builtin_memcpy(to, &v, 4);
    } else {
        v = shuffle_bytes<0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1>(v);
        __builtin_memcpy(to, &v, 8);
    }
}

/// Means of windows with these sums and these two samples at the reach.
///
/// Weighted sums n are exact in double, whatever the order. (n + 1/2) / divisor lies 1 / (2 * divisor), which is more
/// than 2^-32, or more from the next integer, and the roundings of the reciprocal and of the product move a quotient
/// below 2^16 by at most 2^-36: truncated it is the quotient of integers.
template <class D, class F> QX_INLINE F doubles_of_means(const BoxWindow& window, double reciprocal, F sums, F ends) {
    return (window.weighted<D, F>(sums, ends) + (D::half + 0.5)) * reciprocal;
}
template <class D, class V> QX_INLINE V means_of(const BoxWindow& window, double reciprocal, V sums, V ends) {
    if constexpr (kRegister >= 2 * sizeof(V)) {
        return narrowed_to_int(doubles_of_means<D>(window, reciprocal, to_double(sums), to_double(ends)));
    } else {  // two by two
        using F = Vector<double, 16>;
        const auto two = [&](V s, V e) QX_LAMBDA {
            const auto doubles = [](V v) QX_LAMBDA { return (F)_mm_cvtepi32_pd((__m128i)v); };
            return (V)_mm_cvttpd_epi32(doubles_of_means<D>(window, reciprocal, doubles(s), doubles(e)));
        };
        const auto upper = [](V v) QX_LAMBDA { return shuffle<2, 3, 2, 3>(v, v); };
        return shuffle<0, 1, 0, 1>(two(sums, ends), two(upper(sums), upper(ends)));
    }
}

/// Whole registers of means; sums must fit 32 bits. @return how many were made
template <class D, class V, class Sample>
QX_INLINE std::int32_t means_side_by_side(std::int32_t count, const BoxWindow& window, const Sample* copy,
                                          std::int64_t* sum, Sample* line) {
    constexpr int lanes = lanes_in<V>;
    const double reciprocal = 1.0 / static_cast<double>(window.divisor<D>(2));
    const BoxWindow w = window;
    V before = splat<V>(*sum);
    std::ptrdiff_t x = 0;
    for (; x + lanes <= count; x += lanes) {
        const auto at = [=](std::ptrdiff_t i) QX_LAMBDA { return load_channels<V, Sample>(copy + x + i); };
        const V right = at(w.reach), change = right - at(1 - w.reach), changed = running_sums(change);
        store_narrowed(line + x, means_of<D>(w, reciprocal, before + changed - change, right + at(-w.reach)));
        before += splat<V>(changed[lanes - 1]);
    }
    *sum = before[0];
    return static_cast<std::int32_t>(x);
}

template <class D, class Sample = typename D::Channel>
void means(std::int32_t count, const BoxWindow& window, const Sample* copy, std::int64_t* sum, Sample* line) {
    std::int32_t x = 0;
    if constexpr (kRegister > 0) {
        const bool fits = std::int64_t{window.reach} * (2 * std::int64_t{static_cast<Sample>(-1)}) < INT32_MAX;
        if (fits)
            x = means_side_by_side<D, Vector<std::int32_t, kRegister == 64 ? 32 : 16>>(count, window, copy, sum, line);
    }
    const BoxQuotient<D> quotient(window.divisor<D>(2));
    const std::ptrdiff_t reach = window.reach;
    const BoxWindow w = window;
    std::int64_t inner = *sum;
    for (; x < count; ++x) {
        const std::int64_t right = copy[x + reach];
        line[x] = static_cast<Sample>(quotient(w.weighted<D, std::int64_t>(inner, right + copy[x - reach]) + D::half));
        inner += right - copy[x - reach + 1];
    }
    *sum = inner;
}

const UnoScanKernels uno_scan_kernels{&means<Depth8>, &means<Depth16>};

}  // namespace qx::QX_ISA
