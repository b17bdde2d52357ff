// SPDX-License-Identifier: Apache-2.0
// Body of the rows of convolutions, for one level. Channels are worked on as they lie in memory: a register holds whole
// pixels, and a weight of each channel repeats along it.
#include "QX/filters/QX_ConvolveKernels.h"
#include "QX/indep/QX_Depth.h"
#include "lanes/Doubles.h"
#include "lanes/Level.h"
#include "lanes/PixelAccess.h"
#include "lanes/Streams.h"

namespace qx::QX_ISA {

/// Sums of a depth. Integers wrap.
template <class D> using SumOf = std::conditional_t<D::number == 32, float, std::uint32_t>;
template <class V> using SignedLanes = Vector<std::int32_t, sizeof(V)>;

template <class V, class T> QX_INLINE V repeated_four(const T (&four)[4]) {
    V v{};
    for (int i = 0; i < lanes_in<V>; ++i) v[i] = four[i % 4];
    return v;
}

/// The weights of a tap, read from the four kernels.
template <class V> struct Weights {
    const KernelWindow& window;

    QX_INLINE V at(std::int32_t y, std::int32_t x) const {
        const std::ptrdiff_t i = y * window.row_length + x;
        const auto& first = window.first;
        const __m128i four = _mm_setr_epi32(first[0][i], first[1][i], first[2][i], first[3][i]);
        if constexpr (std::is_same_v<NumberOf<V>, float>) {
            return repeated<V>(_mm_castps_si128(_mm_cvtepi32_ps(four)));
        } else {
            return repeated<V>(four);
        }
    }
};

/// What is read for many pixels once: so many taps at most.
inline constexpr std::int32_t kMostTaps = 512;

/// The same, read once for all pixels of a row.
template <class V> struct WeightsAtHand {
    __m128i four[kMostTaps];
    std::int32_t columns;

    QX_INLINE explicit WeightsAtHand(const KernelWindow& window) : columns(window.columns) {
        using One = Vector<NumberOf<V>, 16>;
        __m128i* to = four;
        for (std::int32_t y = 0; y < window.rows; ++y) {
            for (std::int32_t x = 0; x < columns; ++x) *to++ = (__m128i)Weights<One>{window}.at(y, x);
        }
    }
    QX_INLINE V at(std::int32_t y, std::int32_t x) const { return repeated<V>(four[y * columns + x]); }
};

/// Weights of 16 bits of two rows by turns, the second of which may be missing; before and behind those of two rows are
/// some of zero. `bias` is what sums begin with, for channels that are 32768 less than they are.
template <class D> struct PairedWeights {
    __m128i pairs[kMostTaps];
    std::uint32_t bias[4]{};

    QX_INLINE static bool fit(const KernelWindow& window) {
        return window.in_16_bits && window.columns % 2 == 1 &&
               (std::int64_t{window.rows} + 1) / 2 * (std::int64_t{window.columns} + 2) <= kMostTaps;
    }
    QX_INLINE explicit PairedWeights(const KernelWindow& window) {
        using Four = Vector<std::int32_t, 16>;
        __m128i* to = pairs;
        for (std::int32_t y = 0; y < window.rows; y += 2) {
            *to++ = __m128i{};
            for (std::int32_t x = 0; x < window.columns; ++x) {
                const Weights<Four> weights{window};
                const Four first = weights.at(y, x), second = y + 1 < window.rows ? weights.at(y + 1, x) : Four{};
                *to++ = (__m128i)((first & 0xFFFF) | second << 16);
                for (int i = 0; i < 4; ++i) bias[i] += static_cast<std::uint32_t>(first[i] + second[i]) << 15;
            }
            *to++ = __m128i{};
        }
        for (auto& b : bias) b = D::number == 8 ? 0 : b;
    }
};

/// A quotient towards zero. By -1 the least integer wraps, as its negative does.
QX_INLINE std::int32_t quotient(std::int32_t n, std::int32_t d) {
    return d == -1 ? static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(n)) : n / d;
}

/// From sums to channels, which may lie off the scale unless they are clamped. What divides is made ready once a row.
template <class D, class V> class Scale {
    static constexpr bool is_float = D::number == 32, by_reciprocal = !is_float && sizeof(V) > 16;
    using Half = Vector<std::int32_t, sizeof(V) / 2>;
    using Divisor = std::conditional_t<is_float, V, Vector<double, sizeof(V)>>;

public:
    QX_INLINE explicit Scale(const KernelScale& scale) : scale_(scale), clamps_(scale.clamps) {
        if constexpr (is_float) divisor_ = __builtin_convertvector(repeated_four<SignedLanes<V>>(scale.divisor), V);
        if constexpr (by_reciprocal) divisor_ = 1.0 / to_double(repeated_four<Half>(scale.divisor));
    }

    QX_INLINE auto of(V sums) const {
        if constexpr (is_float) {
            V v = sums / divisor_;
            if (clamps_) v = v < 0.0f ? V{} : v > 1.0f ? splat<V>(1.0f) : v;
            return AlphaLanesFloat<V>::with_alpha(v, limited_alpha(v));
        } else {
            const auto v = quotients((SignedLanes<V>)sums);
            return clamps_ ? lesser(greater(v, SignedLanes<V>{}), splat<SignedLanes<V>>(D::full)) : v;
        }
    }

private:
    /// Towards zero, in whole registers by the reciprocal in double. A quotient that is no integer lies 1 / d or more
    /// off the next ones. Moved half of that away from zero, all lie 1 / (2 d) or more from where truncation would go
    /// wrong; the two roundings are off by less than 2^-51 of a number below 2^32 / d.
    template <class I> QX_INLINE I quotients(I n) const {
        if constexpr (by_reciprocal) {
            const auto of_half = [this](Half half) QX_LAMBDA {
                const Divisor v = to_double(half);
                using Bits = Register<Divisor>;
                const Bits away = ((Bits)v & INT64_MIN) | (Bits)splat<Divisor>(0.5);
                return narrowed_to_int((v + (Divisor)away) * divisor_);
            };
            return of_both(of_half(part_of<sizeof(Half), 0>(n)), of_half(part_of<sizeof(Half), 1>(n)));
        } else {
            for (int i = 0; i < lanes_in<I>; ++i) n[i] = quotient(n[i], scale_.divisor[i % 4]);
            return n;
        }
    }

    const KernelScale& scale_;
    const bool clamps_;
    Divisor divisor_{};
};

/// A window over pixels that begin at `src`.
template <class Pixel> struct WindowAt {
    const KernelWindow& window;
    const std::byte* src;
    std::ptrdiff_t rowbytes;

    QX_INLINE const std::byte* at(std::int32_t y, std::int32_t x) const {
        return src + y * rowbytes + x * std::ptrdiff_t{sizeof(Pixel)};
    }
};

/// Adds as many columns of a window as a register has float pixels, and reads one column more. Registers that begin at
/// other pixels are made of two that lie side by side: half of those in memory would lie across two lines.
template <class V, int Registers, int... Column>
QX_INLINE void add_columns(V (&sums)[Registers], const std::byte* at, const V* weights,
                           std::integer_sequence<int, Column...>) {
    V here = load_lanes<V>(at);
    for (int k = 0; k < Registers; ++k) {
        const V next = load_lanes<V>(at + (k + 1) * static_cast<std::ptrdiff_t>(sizeof(V)));
        ((sums[k] += reordered(here, next, [](int lane) { return lane + 4 * Column; }) * weights[Column]), ...);
        here = next;
    }
}

/// `Registers` of pixels side by side, weight by weight in the kernel's order.
template <class D, class V, int Registers, class Weighted>
QX_INLINE void convolve_step(const WindowAt<typename D::Pixel>& from, const Weighted& weighted,
                             const Scale<D, V>& scale, typename D::Pixel* dst) {
    using Channel = typename D::Channel;
    constexpr int pixels = lanes_in<V> / 4;
    V sums[Registers]{};
    for (std::int32_t y = 0; y < from.window.rows; ++y) {
        std::int32_t x = 0;
        if constexpr (D::number == 32) {
            for (int k = 0; k < Registers; ++k) {  // of the next step
                __builtin_prefetch(from.at(y, 0) + (Registers + k) * static_cast<std::ptrdiff_t>(sizeof(V)));
            }
        }
        if constexpr (D::number == 32 && pixels == 2) {  // with wider registers that was measured to be slower
            for (; x + pixels < from.window.columns; x += pixels) {
                V weights[pixels];
                for (int i = 0; i < pixels; ++i) weights[i] = weighted.at(y, x + i);
                add_columns(sums, from.at(y, x), weights, std::make_integer_sequence<int, pixels>{});
            }
        }
        for (; x < from.window.columns; ++x) {
            const V weights = weighted.at(y, x);
            const std::byte* const at = from.at(y, x);
            for (int k = 0; k < Registers; ++k) {
                sums[k] += load_channels<V, Channel>(at + k * lanes_in<V> * std::ptrdiff_t{sizeof(Channel)}) * weights;
            }
        }
    }
    for (int k = 0; k < Registers; ++k) store_channels(&dst[k * pixels].alpha, scale.of(sums[k]));
}

/// Channels in lanes of 16 bits: those of 16 bits less 32768, which makes them numbers with a sign.
template <class V, class T> QX_INLINE V load_signed(const std::byte* from) {
    if constexpr (sizeof(T) == 2) {
        return load_lanes<V>(from) ^ splat<V>(INT16_MIN);
    } else {
        const auto bytes = [from]() QX_LAMBDA {
            if constexpr (sizeof(V) == 16) {
                return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
            } else {
                return load_lanes<Vector<long long, sizeof(V) / 2>>(from);
            }
        }();
        QX_RETURN_BY_WIDTH(V, sizeof(V), cvtepu8_epi16, bytes)
    }
}

/// Words of each 16 bytes of two registers by turns: the lower or the upper four.
template <bool Upper, class V> QX_INLINE V words_by_turns(V x, V y) {
    return reordered(x, y, [](int lane) {
        return lane / 8 * 8 + lane % 8 / 2 + (Upper ? 4 : 0) + (lane % 2 != 0 ? lanes_in<V> : 0);
    });
}
/// 16 bytes of two registers by turns, of the first or the second half of both.
template <bool Second, class V> QX_INLINE V sixteens_by_turns(V x, V y) {
    return reordered(x, y, [](int lane) {
        const int sixteen = (Second ? lanes_in<V> / 4 : 0) + lane / 4;
        return sixteen / 2 * 4 + lane % 4 + (sixteen % 2 != 0 ? lanes_in<V> : 0);
    });
}

/// Twice `Blocks` registers of pixels, two rows of the window at once: products of 16 bits, of which neighbours are
/// added. Sums that wrap are the same in any order. Even and odd pixels lie in registers of their own; what these hold
/// for a column of the window is also what the others need for the columns beside it.
template <class D, class V, int Blocks>
QX_INLINE void convolve_pairs(const WindowAt<typename D::Pixel>& from, const PairedWeights<D>& weights,
                              const Scale<D, V>& scale, typename D::Pixel* dst) {
    using Channel = typename D::Channel;
    using Words = Vector<std::int16_t, sizeof(V)>;
    constexpr int step = lanes_in<Words>;
    V even[Blocks], odd[Blocks];
    for (int k = 0; k < Blocks; ++k) even[k] = odd[k] = repeated_four<V>(weights.bias);
    const __m128i* pairs = weights.pairs;
    for (std::int32_t y = 0; y < from.window.rows; y += 2, pairs += from.window.columns + 2) {
        const std::int32_t below = lesser(y + 1, from.window.rows - 1);
        for (std::int32_t x = 0; x < from.window.columns; x += 2) {
            const auto before = repeated<Words>(pairs[x]), here = repeated<Words>(pairs[x + 1]),
                       behind = repeated<Words>(pairs[x + 2]);
            for (int k = 0; k < Blocks; ++k) {
                const auto run = [&](std::int32_t row) QX_LAMBDA {
                    return load_signed<Words, Channel>(from.at(row, x) + k * step * std::ptrdiff_t{sizeof(Channel)});
                };
                const Words first = run(y), second = run(below), evens = words_by_turns<false>(first, second),
                            odds = words_by_turns<true>(first, second);
                even[k] += (V)multiply_add(evens, here) + (V)multiply_add(odds, behind);
                odd[k] += (V)multiply_add(odds, here) + (V)multiply_add(evens, before);
            }
        }
    }
    for (int k = 0; k < Blocks; ++k) {
        Channel* const to = &dst[k * step / 4].alpha;
        store_channels(to, scale.of(sixteens_by_turns<false>(even[k], odd[k])));
        store_channels(to + step / 2, scale.of(sixteens_by_turns<true>(even[k], odd[k])));
    }
}

template <class D, class Pixel = typename D::Pixel>
void convolve_row(std::int32_t count, const KernelWindow& window, const KernelScale& scale, const std::byte* src,
                  std::ptrdiff_t rowbytes, Pixel* dst) {
    WindowAt<Pixel> from{window, src, rowbytes};
    const auto walk = [&](int step, const auto& convolve) QX_LAMBDA {
        for (; count >= step; count -= step, from.src += step * std::ptrdiff_t{sizeof(Pixel)}, dst += step) convolve();
    };
    using One = Vector<SumOf<D>, 16>;
    using V = std::conditional_t<(kRegister > 16), Wide<SumOf<D>>, One>;
    constexpr int pixels = lanes_in<V> / 4;
    const Scale<D, V> wide(scale);
    if constexpr (D::number != 32 && kRegister > 0) {
        if (count >= 2 * pixels && PairedWeights<D>::fit(window)) {
            const PairedWeights<D> weights(window);
            walk(8 * pixels, [&]() QX_LAMBDA { convolve_pairs<D, V, 4>(from, weights, wide, dst); });
            walk(2 * pixels, [&]() QX_LAMBDA { convolve_pairs<D, V, 1>(from, weights, wide, dst); });
        }
    }
    const auto rest = [&](const auto& weights, const auto& weights_of_one) QX_LAMBDA {
        const Scale<D, One> narrow(scale);
        if (D::number == 32 && pixels == 2) {  // up to where a line begins
            const std::size_t to_line = bytes_to_line(from.src) / sizeof(Pixel);
            const std::int32_t most = count;
            count = lesser(count, static_cast<std::int32_t>(to_line));
            const std::int32_t left = most - count;
            walk(1, [&]() QX_LAMBDA { convolve_step<D, One, 1>(from, weights_of_one, narrow, dst); });
            count = left;
        }
        walk(8 * pixels, [&]() QX_LAMBDA { convolve_step<D, V, 8>(from, weights, wide, dst); });
        if constexpr (pixels > 1) walk(pixels, [&]() QX_LAMBDA { convolve_step<D, V, 1>(from, weights, wide, dst); });
        walk(1, [&]() QX_LAMBDA { convolve_step<D, One, 1>(from, weights_of_one, narrow, dst); });
    };
    if (count >= 8 * pixels && std::int64_t{window.rows} * window.columns <= kMostTaps) {
        const WeightsAtHand<V> weights(window);
        rest(weights, Weights<One>{window});
    } else if (count > 0) {
        rest(Weights<V>{window}, Weights<One>{window});
    }
}

const ConvolveKernels convolve_kernels{{&convolve_row<Depth8>}, {&convolve_row<Depth16>}, {&convolve_row<DepthFloat>}};

}  // namespace qx::QX_ISA
