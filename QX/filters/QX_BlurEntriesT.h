// SPDX-License-Identifier: Apache-2.0
// Rows to entries and back, for one level: pieces of sixteen bytes of as many rows as a register has of them, turned
// over within their sixteen bytes.
#pragma once

#include "QX/filters/QX_BlurKernels.h"
#include "QX/indep/QX_Depth.h"
#include "lanes/Level.h"
#include "lanes/Rows.h"
#include "lanes/Streams.h"

namespace qx::QX_ISA {

inline constexpr int kPieces = kRegister / 16;

/// Sixteen bytes each from `kPieces` places.
template <class V> QX_INLINE V load_pieces(const std::byte* const* from, std::ptrdiff_t at) {
    const auto piece = [=](int i) QX_LAMBDA { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from[i] + at)); };
    if constexpr (sizeof(V) == 16) {
        return (V)piece(0);
#ifdef __AVX2__
    } else if constexpr (sizeof(V) == 32) {
        return (V)_mm256_inserti128_si256(_mm256_castsi128_si256(piece(0)), piece(1), 1);
#endif
#ifdef __AVX512F__
    } else if constexpr (sizeof(V) == 64) {
        __m512i v = _mm512_inserti32x4(_mm512_castsi128_si512(piece(0)), piece(1), 1);
        v = _mm512_inserti32x4(v, piece(2), 2);
        return (V)_mm512_inserti32x4(v, piece(3), 3);
#endif
    }
}
template <class V> QX_INLINE void store_pieces(V v, std::byte* const* to, std::ptrdiff_t at, std::int64_t count) {
    __m128i piece[kPieces];
    __builtin_memcpy(piece, &v, sizeof v);
    for (int i = 0; i < kPieces; ++i) {
        if (i < count) _mm_storeu_si128(reinterpret_cast<__m128i*>(to[i] + at), piece[i]);
    }
}

/// Pixels of so many registers turned over within each sixteen bytes. It undoes itself.
template <class V, int Pixels> QX_INLINE void turn_over(V (&v)[Pixels]) {
    if constexpr (Pixels == 4) {
        const Planes<V> t = transposed(v[0], v[1], v[2], v[3]);
        v[0] = t.a, v[1] = t.r, v[2] = t.g, v[3] = t.b;
    } else if constexpr (Pixels == 2) {
        const V low = shuffle<0, 1, 0, 1>(v[0], v[1]), high = shuffle<2, 3, 2, 3>(v[0], v[1]);
        v[0] = low, v[1] = high;
    }
}

/// Calls body(part of an entry, rows' pointers) for each register of an entry; rows beyond the last are the last one.
template <class Pixel, class Byte, class Body>
QX_INLINE void for_parts(Byte* rows, std::ptrdiff_t row_step, std::int64_t lines, const Body& body) {
    constexpr int pixels = 16 / sizeof(Pixel);
    for (int part = 0; part * static_cast<int>(kRegister) < static_cast<int>(kEntryUnit); ++part) {
        Byte* from[pixels][kPieces];
        const int first = part * pixels * kPieces;
        if (first >= lines) break;
        for (int i = 0; i < pixels * kPieces; ++i) {
            const std::int64_t line = first + i < lines ? first + i : lines - 1;
            from[i % pixels][i / pixels] = rows + line * row_step;
        }
        body(part, from);
    }
}

/// Asks for the next lines of many rows, of which processors foresee few at a time.
template <int Pixels> QX_INLINE void ask_ahead(const std::byte* const (&rows)[Pixels][kPieces], std::ptrdiff_t at) {
    for (int i = 0; i < Pixels; ++i) {
        for (int k = 0; k < kPieces; ++k) __builtin_prefetch(rows[i][k] + at + 1024);
    }
}

template <class Pixel>
void gather_pieces(const std::byte* rows, std::ptrdiff_t row_step, std::int64_t lines, std::int64_t count,
                   const BlurEntries& entries, bool asks_ahead) {
    using V = Wide<std::int32_t>;
    constexpr int pixels = 16 / sizeof(Pixel);
    const std::int64_t whole = count / pixels * pixels;
    for_parts<Pixel>(rows, row_step, lines, [&](int part, const std::byte* const(&from)[pixels][kPieces]) QX_LAMBDA {
        std::byte* out = entries.first + part * static_cast<std::ptrdiff_t>(kRegister);
        for (std::int64_t at = 0; at < whole; at += pixels, out += pixels * entries.step) {
            V v[pixels];
            if (asks_ahead && at % (4 * pixels) == 0) ask_ahead(from, at * std::ptrdiff_t{sizeof(Pixel)});
            for (int i = 0; i < pixels; ++i) v[i] = load_pieces<V>(from[i], at * std::ptrdiff_t{sizeof(Pixel)});
            turn_over(v);
            for (int i = 0; i < pixels; ++i) store_lanes(out + i * entries.step, v[i]);
        }
    });
    for (std::int64_t at = whole; at < count; ++at) {
        for (std::int64_t line = 0; line < lines; ++line) {
            __builtin_memcpy(entries.at(at) + line * std::ptrdiff_t{sizeof(Pixel)},
                             rows + line * row_step + at * std::ptrdiff_t{sizeof(Pixel)}, sizeof(Pixel));
        }
    }
}

template <class Pixel>
void scatter_pieces(const BlurEntries& entries, std::int64_t lines, std::int64_t count, std::byte* rows,
                    std::ptrdiff_t row_step) {
    using V = Wide<std::int32_t>;
    constexpr int pixels = 16 / sizeof(Pixel);
    const std::int64_t whole = count / pixels * pixels;
    for_parts<Pixel>(rows, row_step, lines, [&](int part, std::byte* const(&to)[pixels][kPieces]) QX_LAMBDA {
        const std::byte* in = entries.first + part * static_cast<std::ptrdiff_t>(kRegister);
        const std::int64_t left = lines - part * pixels * kPieces;
        for (std::int64_t at = 0; at < whole; at += pixels, in += pixels * entries.step) {
            V v[pixels];
            for (int i = 0; i < pixels; ++i) v[i] = load_lanes<V>(in + i * entries.step);
            turn_over(v);
            for (int i = 0; i < pixels; ++i) {  // of the pieces of a register every `pixels`-th row
                store_pieces(v[i], to[i], at * std::ptrdiff_t{sizeof(Pixel)}, (left - i + pixels - 1) / pixels);
            }
        }
    });
    for (std::int64_t at = whole; at < count; ++at) {
        for (std::int64_t line = 0; line < lines; ++line) {
            __builtin_memcpy(rows + line * row_step + at * std::ptrdiff_t{sizeof(Pixel)},
                             entries.at(at) + line * std::ptrdiff_t{sizeof(Pixel)}, sizeof(Pixel));
        }
    }
}

#ifdef __AVX512F__
/// Sixteen bytes of each of four: what is the k-th of the i-th becomes the i-th of the k-th. It undoes itself.
template <class V> QX_INLINE void turn_sixteens(V (&v)[4]) {
    const auto both = []<int Order>(V a, V b, std::integral_constant<int, Order>)
                          QX_LAMBDA { return (V)_mm512_shuffle_i32x4((__m512i)a, (__m512i)b, Order); };
    constexpr std::integral_constant<int, 0x44> low{};
    constexpr std::integral_constant<int, 0xEE> high{};
    constexpr std::integral_constant<int, 0x88> even{};
    constexpr std::integral_constant<int, 0xDD> odd{};
    const V low01 = both(v[0], v[1], low), high01 = both(v[0], v[1], high);
    const V low23 = both(v[2], v[3], low), high23 = both(v[2], v[3], high);
    v[0] = both(low01, low23, even), v[1] = both(low01, low23, odd);
    v[2] = both(high01, high23, even), v[3] = both(high01, high23, odd);
}

/// Whole registers of each of sixty-four bytes' worth of rows as entries. @return positions done
template <class Pixel>
std::int64_t gather_lines(const std::byte* rows, std::ptrdiff_t row_step, std::int64_t count,
                          const BlurEntries& entries, bool asks_ahead) {
    using V = Wide<std::int32_t>;
    constexpr int pixels = 16 / sizeof(Pixel), positions = 4 * pixels;
    std::int64_t at = 0;
    for (; at + positions <= count; at += positions) {
        V v[pixels][4];
        for (int i = 0; i < pixels; ++i) {
            for (int k = 0; k < 4; ++k) {
                const std::byte* const from = rows + (k * pixels + i) * row_step + at * std::ptrdiff_t{sizeof(Pixel)};
                if (asks_ahead) __builtin_prefetch(from + 1024);
                v[i][k] = load_lanes<V>(from);
            }
            turn_sixteens(v[i]);
        }
        for (int piece = 0; piece < 4; ++piece) {
            V turned[pixels];
            for (int i = 0; i < pixels; ++i) turned[i] = v[i][piece];
            turn_over(turned);
            for (int i = 0; i < pixels; ++i) store_lanes(entries.at(at + piece * pixels + i), turned[i]);
        }
    }
    return at;
}

/// Entries of whole lines of the caches for each of sixty-four bytes' worth of rows. @return positions done
template <class Pixel>
std::int64_t scatter_lines(const BlurEntries& entries, std::int64_t count, std::byte* rows, std::ptrdiff_t row_step,
                           bool streams) {
    using V = Wide<std::int32_t>;
    constexpr int pixels = 16 / sizeof(Pixel), positions = 4 * pixels;
    std::int64_t at = 0;
    for (; at + positions <= count; at += positions) {
        V v[4][pixels];
        for (int piece = 0; piece < 4; ++piece) {
            for (int i = 0; i < pixels; ++i) v[piece][i] = load_lanes<V>(entries.at(at + piece * pixels + i));
            turn_over(v[piece]);
        }
        for (int i = 0; i < pixels; ++i) {  // sixteen bytes of four rows a register, to four times that of one row
            V row[4] = {v[0][i], v[1][i], v[2][i], v[3][i]};
            turn_sixteens(row);
            for (int k = 0; k < 4; ++k) {
                std::byte* const to = rows + (k * pixels + i) * row_step + at * std::ptrdiff_t{sizeof(Pixel)};
                streams ? stream_lanes(to, row[k]) : store_lanes(to, row[k]);
            }
        }
    }
    return at;
}
#endif

template <class Pixel>
void gather_rows(const std::byte* rows, std::ptrdiff_t row_step, std::int64_t lines, std::int64_t count,
                 const BlurEntries& entries, bool asks_ahead) {
    std::int64_t done = 0;
#ifdef __AVX512F__
    constexpr std::int64_t bytes = sizeof(Pixel);
    if (lines * bytes == static_cast<std::int64_t>(kEntryUnit)) {
        done = gather_lines<Pixel>(rows, row_step, count, entries, asks_ahead);
    }
#endif
    gather_pieces<Pixel>(rows + done * std::ptrdiff_t{sizeof(Pixel)}, row_step, lines, count - done,
                         {entries.at(done), entries.step}, asks_ahead);
}

template <class Pixel>
void scatter_rows(BlurEntries entries, std::int64_t lines, std::int64_t count, std::byte* rows, std::ptrdiff_t row_step,
                  bool streams) {
#ifdef __AVX512F__
    const auto unaligned = static_cast<std::int64_t>(bytes_to_line(rows));
    constexpr std::int64_t bytes = sizeof(Pixel);
    if (lines * bytes == static_cast<std::int64_t>(kEntryUnit)) {
        const bool aligns = row_step % static_cast<std::ptrdiff_t>(kLine) == 0 && unaligned % bytes == 0;
        const std::int64_t head = streams && aligns ? std::min(count, unaligned / bytes) : 0;
        scatter_pieces<Pixel>(entries, lines, head, rows, row_step);
        const std::int64_t done = head + scatter_lines<Pixel>({entries.at(head), entries.step}, count - head,
                                                              rows + head * bytes, row_step, streams && aligns);
        entries.first = entries.at(done), rows += done * bytes, count -= done;
    }
#else
    (void)streams;
#endif
    scatter_pieces<Pixel>(entries, lines, count, rows, row_step);
}

template <class Pixel> void matte_pixels(std::byte* pixels, std::int64_t count) {
    using D = DepthOf<Pixel>;
    using P = Colours<D, kRegister>;
    constexpr std::int32_t most = 1 << 20;
    for (auto* all = reinterpret_cast<Pixel*>(pixels); count > 0; count -= most, all += most) {
        const std::int32_t part = count < most ? static_cast<std::int32_t>(count) : most;
        for_bundles<P>(part, all, all, [](const Pixel* from, Pixel* to) QX_LAMBDA {
            const P p = load_pixels<P>(from);
            store_pixels(to, with_colours(p.a, p, p, [&](auto colour, auto) QX_LAMBDA { return D::mul(colour, p.a); }));
        });
    }
}

}  // namespace qx::QX_ISA
