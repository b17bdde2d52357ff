// SPDX-License-Identifier: Apache-2.0
// Gaussians of groups of lines, for one level.
#pragma once

#include "QX/filters/QX_BlurEntriesT.h"

namespace qx::QX_ISA {

/// Channels of 8 bits in lanes of 16.
template <class V> QX_INLINE V load_words(const std::byte* from) {
    if constexpr (sizeof(V) == 16) {
        return (V)_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
    } else {
        const auto packed = load_lanes<Vector<long long, sizeof(V) / 2>>(from);
        QX_RETURN_BY_WIDTH(V, sizeof(V), cvtepu8_epi16, packed)
    }
}
/// And back, of numbers up to 255.
template <class V> QX_INLINE auto as_bytes(V words) {
    return __builtin_convertvector(words, Vector<std::uint8_t, sizeof(V) / 2>);
}
/// Stores a part of an entry; past the caches only whole registers go.
template <class V> QX_INLINE void store_entry(bool streams, std::byte* to, V v) {
    if constexpr (sizeof(V) >= 16) {
        if (streams) return stream_lanes(to, v);
    }
    store_lanes(to, v);
}

/// The lower or the upper halves of each sixteen bytes of two registers of words, by turns.
template <bool Upper, class U> QX_INLINE U interleave_words(U a, U b) {
    if constexpr (Upper) {
        QX_RETURN_BY_WIDTH(U, sizeof(U), unpackhi_epi16, (Register<U>)a, (Register<U>)b)
    } else {
        QX_RETURN_BY_WIDTH(U, sizeof(U), unpacklo_epi16, (Register<U>)a, (Register<U>)b)
    }
}
/// Lanes of 32 bits of which the lower half counts, in the order that interleaving undoes.
template <class I> QX_INLINE UnsignedLanes<I> packed_words(I a, I b) {
    QX_RETURN_BY_WIDTH(UnsignedLanes<I>, sizeof(I), packus_epi32, (Register<I>)a, (Register<I>)b)
}

/// Registers of channels from kEntryUnit bytes of an entry.
template <class Pixel> QX_INLINE void widen_unit(const std::byte* from, std::byte* wide) {
    using Channel = QX_ChannelOf<Pixel>;
    constexpr std::size_t step = kEntryUnit * kRegister / kWideUnit<Pixel>;
    for (std::size_t at = 0; at < kEntryUnit; at += step, wide += kRegister) {
        if constexpr (sizeof(Channel) == 1) {
            store_lanes(wide, load_words<Wide<std::uint16_t>>(from + at));
        } else if constexpr (sizeof(Channel) == 2) {
            store_lanes(wide, to_float(load_channels<Wide<std::int32_t>, Channel>(from + at)));
        } else {
            store_lanes(wide, load_lanes<Wide<float>>(from + at));
        }
    }
}

/// Entries of columns, which no processor foresees, are asked for as far ahead as there are some now.
template <class Pixel>
void widen_entries(const BlurEntries& entries, std::size_t entry_bytes, std::int64_t count, std::byte* wide,
                   std::ptrdiff_t plane_bytes) {
    const bool asks = entries.step > static_cast<std::ptrdiff_t>(entry_bytes);
    for (std::int64_t i = 0; i < count; ++i, wide += kWideUnit<Pixel>) {
        std::byte* plane = wide;
        for (std::size_t at = 0; at < entry_bytes; at += kEntryUnit, plane += plane_bytes) {
            if (asks) __builtin_prefetch(entries.at(i + count) + at, 0, 2);
            widen_unit<Pixel>(entries.at(i) + at, plane);
        }
    }
}

/// Sums of a register of channels at 8 bits: the lower and the upper halves of each sixteen bytes.
struct Sums8 {
    using I = Wide<std::int32_t>;
    using U = Wide<std::uint16_t>;
    I low{}, high{};

    /// Neighbouring distances, `a` by the lower and `b` by the upper weight of a pair.
    QX_INLINE void add(U a, U b, I weights) {
        low += multiply_add((I)interleave_words<false>(a, b), weights);
        high += multiply_add((I)interleave_words<true>(a, b), weights);
    }
    QX_INLINE U means(std::int32_t divisor) const { return packed_words(mean(low, divisor), mean(high, divisor)); }

private:
    /// (sum + half the divisor) / divisor. By divisors up to 2^13 the float quotient, moved by half of one part of the
    /// divisor, is 2^-14 or more from the next integers, and its three roundings are off by less than 2^-15 + 2^-17. By
    /// divisors up to 2^16 quotients are proven, others have no quick form.
    QX_INLINE static I mean(I sum, std::int32_t divisor) {
        const I n = sum + divisor / 2;
        if (divisor <= 8192) {
            const float reciprocal = 1.0f / static_cast<float>(divisor);
            return truncate_to_int(to_float(n) * reciprocal + 0.5f * reciprocal);
        }
        return divisor <= 65536 ? large_quotient<I>(n, splat<I>(divisor)) : n / divisor;
    }
};

template <int Positions, int Registers>
QX_INLINE void gaussian_step8(const GaussianStretch& s, const std::byte* taps, const std::int32_t* divisors,
                              std::byte* out) {
    constexpr std::ptrdiff_t step = kWideUnit<QX_Pixel8>;
    using U = Sums8::U;
    using I = Sums8::I;
    const auto* const weights = static_cast<const std::int16_t*>(s.weights);
    const auto pair = [=](std::int64_t k) QX_LAMBDA { return splat<I>(load_lanes<std::int32_t>(weights + k)); };
    const std::byte* const centre = taps + s.reach * step;
    Sums8 sums[Positions][Registers];
    const auto each = [&](const auto& body) QX_LAMBDA {
        for (int p = 0; p < Positions; ++p) {
            for (int r = 0; r < Registers; ++r) {
                const std::byte* const at = centre + p * step + r * static_cast<std::ptrdiff_t>(kRegister);
                body(sums[p][r], at, [=](std::int64_t k) QX_LAMBDA {
                    return load_lanes<U>(at - k * step) + load_lanes<U>(at + k * step);
                });
            }
        }
    };
    I w = pair(0);
    each([&](Sums8& sum, const std::byte* at, const auto& both) QX_LAMBDA { sum.add(load_lanes<U>(at), both(1), w); });
    for (std::int64_t k = 2; k <= s.reach; k += 2) {
        w = pair(k);
        each([&](Sums8& sum, const std::byte*, const auto& both) QX_LAMBDA { sum.add(both(k), both(k + 1), w); });
    }
    for (int p = 0; p < Positions; ++p) {
        for (int r = 0; r < Registers; ++r) {
            const U mean = divisors[p] == 0 ? U{} : sums[p][r].means(divisors[p]);
            store_entry(s.streams, out + p * s.out.step + r * static_cast<std::ptrdiff_t>(kRegister / 2),
                        as_bytes(mean));
        }
    }
}

/// 16 bits and float: every product is added on its own, in order. Products of 16 bits are exact.
template <class D, int Positions, int Registers>
QX_INLINE void gaussian_step_float(const GaussianStretch& s, const std::byte* taps, const std::int32_t* divisors,
                                   std::byte* out) {
    constexpr std::ptrdiff_t step = kWideUnit<typename D::Pixel>;
    using F = Wide<float>;
    const auto* const weights = static_cast<const float*>(s.weights);
    const std::byte* const centre = taps + s.reach * step;
    F sums[Positions][Registers];
    const auto each = [&](const auto& body) QX_LAMBDA {
        for (int p = 0; p < Positions; ++p) {
            for (int r = 0; r < Registers; ++r) {
                body(sums[p][r], centre + p * step + r * static_cast<std::ptrdiff_t>(kRegister));
            }
        }
    };
    each([&](F& sum, const std::byte* at) QX_LAMBDA { sum = F{} + splat<F>(weights[0]) * load_lanes<F>(at); });
    for (std::int64_t k = 1; k <= s.reach; ++k) {
        const F w = splat<F>(weights[k]);
        each([&](F& sum, const std::byte* at) QX_LAMBDA {
            sum += w * load_lanes<F>(at - k * step);
            sum += w * load_lanes<F>(at + k * step);
        });
    }
    using Packed = Vector<typename D::Channel, lanes_in<F> * sizeof(typename D::Channel)>;
    for (int p = 0; p < Positions; ++p) {
        const F divisor = splat<F>(static_cast<float>(divisors[p])),
                half = splat<F>(static_cast<float>(divisors[p] / 2));
        for (int r = 0; r < Registers; ++r) {
            Packed mean{};
            if (divisors[p] == 0) {
            } else if constexpr (D::number == 16) {
                mean = __builtin_convertvector(truncate_to_int((sums[p][r] + half) / divisor), Packed);
            } else {
                mean = sums[p][r] / divisor;
            }
            store_entry(s.streams, out + p * s.out.step + r * static_cast<std::ptrdiff_t>(sizeof mean), mean);
        }
    }
}

template <class D> void gaussian_stretch(const GaussianStretch& s) {
    constexpr std::ptrdiff_t step = kWideUnit<typename D::Pixel>;
    constexpr int registers = step == kRegister ? 1 : 2;
    constexpr int sums = (D::number == 8 ? 4 : 8) / (kRegister == 64 ? 1 : 2), positions = sums / registers;
    constexpr std::ptrdiff_t part = registers * static_cast<std::ptrdiff_t>(kRegister);
    const std::byte* plane = s.taps;
    for (std::size_t unit = 0; unit < s.entry_bytes; unit += kEntryUnit, plane += s.plane_bytes) {
        for (std::ptrdiff_t at = 0; at < step; at += part) {
            const auto out = static_cast<std::ptrdiff_t>(unit) + at * static_cast<std::ptrdiff_t>(kEntryUnit) / step;
            const auto run = [&]<int Positions>(std::int64_t& i) QX_LAMBDA {
                for (; i + Positions <= s.count; i += Positions) {
                    const std::byte* const taps = plane + i * step + at;
                    if constexpr (D::number == 8) {
                        gaussian_step8<Positions, registers>(s, taps, s.divisors + i, s.out.at(i) + out);
                    } else {
                        gaussian_step_float<D, Positions, registers>(s, taps, s.divisors + i, s.out.at(i) + out);
                    }
                }
            };
            std::int64_t i = 0;
            run.template operator()<positions>(i);
            run.template operator()<1>(i);
        }
    }
}

}  // namespace qx::QX_ISA
