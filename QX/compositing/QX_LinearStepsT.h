// SPDX-License-Identifier: Apache-2.0
// Body of what brings rows into linear light and back, for one level. Only colours are looked up, alphas take their own
// way.
#pragma once

#include "QX/compositing/QX_LinearSteps.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"
#include "lanes/Scattered.h"
#include "lanes/Tables.h"

namespace qx::QX_ISA {

/// The table into linear light lies in registers.
inline constexpr bool kHoldsTable = kRegister == 64;

using Colours16 = Planes<Wide<std::int32_t>>;
using Words = Wide<std::uint16_t>;
using LinearTable = WordTable<Words>;

/// Calls bundle(src, dst) while there are so many pixels, and pixel(p) for what is left.
template <int Size, class From, class To, class Bundle, class One>
QX_INLINE void each_bundle_of(std::int32_t count, const From* src, To* dst, const Bundle& bundle, const One& pixel) {
    if constexpr (Size > 1) {
        for (; count >= Size; count -= Size, src += Size, dst += Size) bundle(src, dst);
    }
    for (; count > 0; --count) *dst++ = pixel(*src++);
}

/// A register of words from pixels as they lie in memory.
template <class V> QX_INLINE V linear_words(const WordTable<V>& table, const QX_Pixel8* p) {
    using I = Vector<std::int32_t, sizeof(V)>;
    const V channels = __builtin_convertvector(load_lanes<Vector<std::uint8_t, sizeof(V) / 2>>(p), V);
    V is_alpha{};
    for (int i = 0; i < lanes_in<V>; i += 4) is_alpha[i] = 1;
    return is_alpha != 0 ? (V)widened_8_to_16((I)channels & 0xFFFF) : table.at(channels);
}

/// Two colours share a register of words.
template <class P>
QX_INLINE P linear_colours(const QX_LinearBlendingTables& tables, const LinearTable& table, const P& p) {
    if constexpr (kHoldsTable) {
        using V = typename P::Lane;
        const auto r = place_in_linear(p.r), g = place_in_linear(p.g), b = place_in_linear(p.b);
        const V rg = r.entry | g.entry << 16;
        const auto find = [&](V place) QX_LAMBDA { return (V)table.at((Words)place); };
        const V first = find(rg), next = find(rg + 0x10001), of_b = find(b.entry | (b.entry + 1) << 16);
        const auto low = [](V v) QX_LAMBDA { return v & 0xFFFF; };
        const auto high = [](V v) QX_LAMBDA { return v >> 16 & 0xFFFF; };
        return {p.a, on_line<15>({low(first), low(next)}, r.way), on_line<15>({high(first), high(next)}, g.way),
                on_line<15>({low(of_b), high(of_b)}, b.way)};
    } else {
        return with_colours(p.a, p, p, [&](auto c, auto) QX_LAMBDA { return linear_lanes16(tables, c); });
    }
}
template <class P> QX_INLINE P encoded_colours(const QX_LinearBlendingTables& tables, const P& p) {
    return with_colours(p.a, p, p, [&](auto c, auto) QX_LAMBDA { return encoded_lanes16(tables, c); });
}

template <class D>
void to_linear_row(std::int32_t count, const QX_LinearBlendingTables& tables, const typename D::Pixel* src,
                   typename LinearDepth<D>::Pixel* dst) {
    const LinearTable table(tables.to_linear);
    if constexpr (D::number == 16) {
        using P = Colours16;
        for_bundles<P>(count, src, dst, [&](const QX_Pixel16* from, QX_Pixel16* to) QX_LAMBDA {
            store_pixels(to, linear_colours(tables, table, load_pixels<P, Channels::as_stored>(from)));
        });
    } else {
        each_bundle_of<D::number == 8 && kHoldsTable ? 8 : 1>(
            count, src, dst, [&](const auto* from, auto* to) QX_LAMBDA { store_lanes(to, linear_words(table, from)); },
            [&](const auto& p) QX_LAMBDA { return to_linear<D>(tables, p); });
    }
}

template <class D>
void from_linear_row(std::int32_t count, const QX_LinearBlendingTables& tables,
                     const typename LinearDepth<D>::Pixel* src, typename D::Pixel* dst) {
    using P = Colours16;
    if constexpr (D::number == 16) {
        for_bundles<P>(count, src, dst, [&](const QX_Pixel16* from, QX_Pixel16* to) QX_LAMBDA {
            store_pixels(to, encoded_colours(tables, load_pixels<P, Channels::as_stored>(from)));
        });
    } else {
        each_bundle_of<D::number == 8 ? pixels_in<P> : 1>(
            count, src, dst,
            [&](const auto* from, auto* to) QX_LAMBDA {
                const P made = encoded_colours(tables, load_pixels<P, Channels::as_stored>(from));
                const auto narrowed = [](auto c)
                                          QX_LAMBDA { return in_pixel_order<P, QX_Pixel16>(narrowed_16_to_8(c)); };
                store_pixels(to, P{narrowed(made.a), narrowed(made.r), narrowed(made.g), narrowed(made.b)});
            },
            [&](const auto& p) QX_LAMBDA { return from_linear<D>(tables, p); });
    }
}

inline void make_code_map(const QX_LinearBlendingTables& tables, CodeMap& map) {
    using V = Wide<std::int32_t>;
    constexpr int size = lanes_in<V>;
    for (int code = 0; code < 256; code += size) {
        const V linear = neighbours_at(&tables, 2 * (lane_numbers<V>() + code)).first;
        std::int32_t codes[size];
        store_lanes(codes, narrowed_16_to_8(encoded_lanes16(tables, linear)));
        for (int i = 0; i < size; ++i) map[code + i] = static_cast<std::uint16_t>(codes[i]);
    }
}

template <class D, class Pixel = typename D::Pixel>
void row_through_linear(std::int32_t count, const QX_LinearBlendingTables& tables, const CodeMap& map, Stretch kind,
                        const Pixel* src, Pixel* dst) {
    if constexpr (D::number == 8 && kHoldsTable) {
        const LinearTable table(map);
        using P = Colours<D, kRegister>;
        for_bundles<P>(count, src, dst, [&](const Pixel* from, Pixel* to) QX_LAMBDA {
            const P p = load_pixels<P>(from);
            const auto mapped = [&](auto c, auto) QX_LAMBDA { return (decltype(c))table.at((Words)c); };
            store_pixels(to, with_colours(p.a, p, p, mapped));
        });
    } else if constexpr (D::number == 16) {
        const LinearTable table(tables.to_linear);
        using P = Colours16;
        for_bundles<P>(count, src, dst, [&](const Pixel* from, Pixel* to) QX_LAMBDA {
            P p = load_pixels<P, Channels::as_stored>(from);
            if (kind == Stretch::opaque) p.a = limited16(p.a);
            store_pixels(to, encoded_colours(tables, linear_colours(tables, table, p)));
        });
    } else if constexpr (D::number == 32) {  // powers of powers would wait for each other
        to_linear_row<D>(count, tables, src, dst);
        from_linear_row<D>(count, tables, dst, dst);
    } else {
        const auto code = [&](std::uint8_t c) QX_LAMBDA { return static_cast<std::uint8_t>(map[c]); };
        for (std::int32_t i = 0; i < count; ++i) {
            dst[i] = {src[i].alpha, code(src[i].red), code(src[i].green), code(src[i].blue)};
        }
    }
}

/// One number at a time, all is mixed.
template <class Pixel>
std::int32_t stretch_of_row(std::int32_t count, std::int32_t most_mixed, bool tells_opaque, const Pixel* src,
                            const Pixel* mask, Stretch* kind) {
    constexpr std::int32_t step = kStretch<kRegister, Pixel>;
    const auto kind_at = [=](std::int32_t i) QX_LAMBDA {
        if constexpr (kRegister > 0) {
            if (i + step > count) return Stretch::mixed;
            Stretch here = look_ahead<kRegister>(src + i);
            if (mask != nullptr) here = covered<sizeof(Pixel) == 16>(here, look_ahead<kRegister>(mask + i));
            return here == Stretch::opaque && !tells_opaque ? Stretch::mixed : here;
        } else {
            return Stretch::mixed;
        }
    };
    *kind = kind_at(0);
    if (*kind == Stretch::mixed) count = lesser(count, most_mixed);
    if (kRegister == 0) return count;
    std::int32_t length = step;
    while (length < count && kind_at(length) == *kind) length += step;
    return lesser(length, count);
}

template <class D>
inline constexpr LinearSteps<typename D::Pixel> steps_of{&to_linear_row<D>, &from_linear_row<D>, &row_through_linear<D>,
                                                         &make_code_map, &stretch_of_row<typename D::Pixel>};

const PerDepth<LinearSteps> linear_steps{steps_of<Depth8>, steps_of<Depth16>, steps_of<DepthFloat>};

}  // namespace qx::QX_ISA
