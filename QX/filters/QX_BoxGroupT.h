// SPDX-License-Identifier: Apache-2.0
// Boxes over groups of lines, for one level: each lane has its running sum.
#pragma once

#include "QX/filters/QX_BlurShortMean.h"
#include "QX/filters/QX_BoxShareT.h"
#include "QX/filters/QX_GaussianGroupT.h"

namespace qx::QX_ISA {

/// Sums of a depth; 32 bits hold those of windows that groups are made for.
template <class D> using BoxSum = Wide<std::conditional_t<D::number == 32, float, std::int32_t>>;

template <class D> QX_INLINE BoxSum<D> box_lanes(const std::byte* from) {
    return load_channels<BoxSum<D>, typename D::Channel>(from);
}

template <class D>
void add_box_sums(const BlurEntries& entries, std::size_t entry_bytes, std::int64_t count, void* sums) {
    using V = BoxSum<D>;
    constexpr std::size_t bytes = lanes_in<V> * sizeof(typename D::Channel);
    auto* to = static_cast<std::byte*>(sums);
    for (std::size_t at = 0; at < entry_bytes; at += bytes, to += sizeof(V)) {
        V sum = load_lanes<V>(to);
        for (std::int64_t i = 0; i < count; ++i) sum += box_lanes<D>(entries.at(i) + at);
        store_lanes(to, sum);
    }
}

inline constexpr std::ptrdiff_t kRowsAhead = 8;

/// Line after line of each row in turn.
QX_INLINE void ask_for_rows(const RowsAhead& ahead, std::int64_t position) {
    for (int i = 0; i < ahead.each; ++i) {
        const std::int64_t line = position * ahead.each + i, row = line & ((1 << ahead.rows_shift) - 1);
        __builtin_prefetch(ahead.first + row * ahead.row_step + (line >> ahead.rows_shift) * 64, 0, 3);
    }
}

/// Walks `Bytes` of the entries of a stretch: step(position, what enters, what leaves, left end, out). Lines of columns
/// are asked for ahead, since no processor foresees them.
template <int Bytes, class Step> QX_INLINE void walk(const BoxStretch& s, std::size_t at, const Step& step) {
    const std::ptrdiff_t ahead =
        s.enter.step > static_cast<std::ptrdiff_t>(s.entry_bytes) ? kRowsAhead * s.enter.step : 0;
    const std::byte *enter = s.enter.first + at, *leave = s.leave.first + at, *left = s.left.first + at;
    std::byte* out = s.out.first + at;
    for (std::int64_t i = 0; i < s.count; ++i) {
        if (s.ahead.first != nullptr) ask_for_rows(s.ahead, i);
        if (ahead != 0) {
            for (int line = 0; line < Bytes; line += 64) __builtin_prefetch(enter + ahead + line, 0, 2);
        }
        step(i, enter, leave, left, out);
        enter += s.enter.step, leave += s.leave.step, left += s.left.step, out += s.out.step;
    }
}

/// The rule as it is told, each step in float. Whole ends of integers lack nothing; floats may be infinite, and nothing
/// times that is no number.
template <class D, int Registers, bool Short>
QX_INLINE void box_part(const BoxStretch& s, std::size_t at, std::byte* sums) {
    using V = BoxSum<D>;
    using F = FloatLanes<V>;
    constexpr std::ptrdiff_t bytes = lanes_in<V> * sizeof(typename D::Channel);
    V sum[Registers];
    for (int r = 0; r < Registers; ++r) sum[r] = load_lanes<V>(sums + r * static_cast<int>(sizeof(V)));
    const F shortage = splat<F>(static_cast<float>(s.end_short)), full = splat<F>(static_cast<float>(D::full));
    F divisor;
    bool is_none;
    const auto divide_by = [&](std::int64_t by)
                               QX_LAMBDA { divisor = splat<F>(static_cast<float>(by)), is_none = by == 0; };
    divide_by(s.divisor);
    walk<static_cast<int>(bytes) * Registers>(
        s, at,
        [&](std::int64_t i, const std::byte* enter, const std::byte* leave, const std::byte* left, std::byte* out)
            QX_LAMBDA {
                if (s.divisor_step != 0) divide_by(s.divisor + i * s.divisor_step);
                for (int r = 0; r < Registers; ++r) {
                    const V right = box_lanes<D>(enter + r * bytes);
                    sum[r] = (sum[r] - box_lanes<D>(leave + r * bytes)) + right;
                    F whole = to_float(sum[r]) * 1024.0f;
                    if constexpr (Short) whole -= shortage * to_float(box_lanes<D>(left + r * bytes) + right);
                    const F limited = is_none ? F{} : not_above(full, not_below(F{}, whole / divisor));
                    if constexpr (D::number == 32) {
                        store_entry(s.streams, out + r * bytes, limited);
                    } else {
                        using Packed = Vector<typename D::Channel, bytes>;
                        store_entry(s.streams, out + r * bytes, __builtin_convertvector(round_to_int(limited), Packed));
                    }
                }
            });
    for (int r = 0; r < Registers; ++r) store_lanes(sums + r * static_cast<int>(sizeof(V)), sum[r]);
}

/// @return whether the quick form of floats holds; else nothing counts, and the sums are as they were
template <int Registers, bool Short>
QX_INLINE bool box_part_real(const BoxStretch& s, std::size_t at, std::byte* sums) {
    using F = Wide<float>;
    constexpr std::ptrdiff_t bytes = sizeof(F);
    QuickBox<Short> box(s);
    F sum[Registers];
    for (int r = 0; r < Registers; ++r) sum[r] = load_lanes<F>(sums + r * bytes);
    walk<static_cast<int>(bytes) * Registers>(
        s, at,
        [&](std::int64_t, const std::byte* enter, const std::byte* leave, const std::byte* left, std::byte* out)
            QX_LAMBDA {
                for (int r = 0; r < Registers; ++r) {
                    const auto left_end = [=] QX_LAMBDA { return load_lanes<F>(left + r * bytes); };
                    const F made =
                        box.step(sum[r], load_lanes<F>(enter + r * bytes), load_lanes<F>(leave + r * bytes), left_end);
                    store_entry(s.streams, out + r * bytes, made);
                }
            });
    if (!box.holds(sum)) [[unlikely]]
        return false;
    for (int r = 0; r < Registers; ++r) store_lanes(sums + r * bytes, sum[r]);
    return true;
}

/// Integers over an odd number of whole pixels up to 255, of which no mean lies halfway: the float quotient is nearer
/// to the mean than that is to a half, so that its rounding is the nearest integer to the mean.
inline bool is_plain_mean(const BoxStretch& s) {
    const std::int64_t pixels = s.divisor / 1024;
    return s.end_short == 0 && s.divisor_step == 0 && pixels % 2 == 1 && pixels <= 255;
}

/// 8 bits, in lanes of 16: a running sum begins with the bias of the mean.
template <int Registers> QX_INLINE void box_part_short(const BoxStretch& s, std::size_t at, std::byte* sums) {
    using U = Wide<std::uint16_t>;
    using Words = Vector<std::uint16_t, kRegister / 2>;
    using I = Wide<std::int32_t>;
    constexpr std::ptrdiff_t bytes = kRegister / 2;
    const ShortMean mean(static_cast<std::uint32_t>(s.divisor / 1024));
    U sum[Registers];
    for (int r = 0; r < Registers; ++r) {
        Words half[2];
        for (int i = 0; i < 2; ++i) {
            half[i] = __builtin_convertvector(load_lanes<I>(sums + (2 * r + i) * static_cast<int>(kRegister)), Words);
        }
        sum[r] = load_lanes<U>(half) + mean.bias;
    }
    const U factor = splat<U>(mean.factor);
    walk<static_cast<int>(bytes) * Registers>(
        s, at,
        [&](std::int64_t, const std::byte* enter, const std::byte* leave, const std::byte*, std::byte* out) QX_LAMBDA {
            for (int r = 0; r < Registers; ++r) {
                sum[r] = sum[r] - load_words<U>(leave + r * bytes) + load_words<U>(enter + r * bytes);
                store_entry(s.streams, out + r * bytes, as_bytes(U(upper_product(sum[r], factor) >> mean.shift)));
            }
        });
    for (int r = 0; r < Registers; ++r) {
        Words half[2];
        store_lanes(half, (U)(sum[r] - mean.bias));
        for (int i = 0; i < 2; ++i) {
            store_lanes(sums + (2 * r + i) * static_cast<int>(kRegister), __builtin_convertvector(half[i], I));
        }
    }
}

/// 16 bits, by a float reciprocal, or by one that is the sum of two. Sums below 2^24 are floats. A quotient up to 2^15
/// is off by 2^-8 at most for the one, which is below half of a part of fewer than 128 pixels; for the other by two
/// roundings, 2^-9, which is below half of one of 255.
template <int Registers, bool Twice>
QX_INLINE void box_part_deep(const BoxStretch& s, std::size_t at, std::byte* sums) {
    using V = Wide<std::int32_t>;
    using F = Wide<float>;
    using Packed = Vector<std::uint16_t, kRegister / 2>;
    constexpr std::ptrdiff_t bytes = kRegister / 2;
    const double exact = 1.0 / static_cast<double>(s.divisor / 1024);
    const auto first = static_cast<float>(exact);
    const F reciprocal = splat<F>(first), rest = splat<F>(static_cast<float>(exact - first));
    V sum[Registers];
    for (int r = 0; r < Registers; ++r) sum[r] = load_lanes<V>(sums + r * static_cast<int>(sizeof(V)));
    walk<static_cast<int>(bytes) * Registers>(
        s, at,
        [&](std::int64_t, const std::byte* enter, const std::byte* leave, const std::byte*, std::byte* out) QX_LAMBDA {
            for (int r = 0; r < Registers; ++r) {
                sum[r] = sum[r] - box_lanes<Depth16>(leave + r * bytes) + box_lanes<Depth16>(enter + r * bytes);
                const F f = to_float(sum[r]);
                const V mean =
                    lesser(round_to_int(Twice ? f * reciprocal + f * rest : f * reciprocal), splat<V>(Depth16::full));
                store_entry(s.streams, out + r * bytes, __builtin_convertvector(mean, Packed));
            }
        });
    for (int r = 0; r < Registers; ++r) store_lanes(sums + r * static_cast<int>(sizeof(V)), sum[r]);
}

/// Calls body.operator()<Registers>(part of the entry, its sums), with as many registers of sums as a walk can keep.
template <std::size_t Bytes, class Body>
QX_INLINE void for_box_parts(const BoxStretch& s, std::size_t channel, void* sums, const Body& body) {
    const auto parts = [&]<int Registers>() QX_LAMBDA {
        for (std::size_t at = 0; at < s.entry_bytes; at += Registers * Bytes) {
            body.template operator()<Registers>(at, static_cast<std::byte*>(sums) + at / channel * 4);
        }
    };
    if constexpr (kRegister == 64) {
        if (s.entry_bytes >= 8 * Bytes) return parts.template operator()<8>();
    }
    if (s.entry_bytes >= 4 * Bytes) return parts.template operator()<4>();
    parts.template operator() < kEntryUnit / Bytes<4 ? kEntryUnit / Bytes : 4>();
}

/// Floats that the quick form takes.
inline bool is_quick(const BoxStretch& s) { return s.divisor_step == 0 && ShareOfBox::fits(s.divisor); }

/// Of entries that lie side by side.
template <class D> void box_entries(const BoxStretch& s, void* sums) {
    constexpr std::size_t channel = sizeof(typename D::Channel);
    if constexpr (D::number != 32) {
        if (is_plain_mean(s)) {
            return for_box_parts<kRegister / 2>(
                s, channel, sums, [&]<int Registers>(std::size_t at, std::byte* of_part) QX_LAMBDA {
                    if constexpr (D::number == 8) {
                        box_part_short<Registers>(s, at, of_part);
                    } else {
                        s.divisor < 128 * 1024 ? box_part_deep<Registers, false>(s, at, of_part)
                                               : box_part_deep<Registers, true>(s, at, of_part);
                    }
                });
        }
    }
    if constexpr (D::number == 32) {
        if (is_quick(s)) {
            return for_box_parts<kRegister>(s, channel, sums,
                                            [&]<int Registers>(std::size_t at, std::byte* of_part) QX_LAMBDA {
                                                if (s.end_short == 0 ? box_part_real<Registers, false>(s, at, of_part)
                                                                     : box_part_real<Registers, true>(s, at, of_part))
                                                    return;
                                                box_part<D, Registers, true>(s, at, of_part);
                                            });
        }
    }
    const bool lacks = D::number == 32 || s.end_short != 0;
    for_box_parts<kRegister / 4 * channel>(
        s, channel, sums, [&]<int Registers>(std::size_t at, std::byte* of_part) QX_LAMBDA {
            lacks ? box_part<D, Registers, true>(s, at, of_part) : box_part<D, Registers, false>(s, at, of_part);
        });
}

}  // namespace qx::QX_ISA
