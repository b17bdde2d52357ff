// SPDX-License-Identifier: Apache-2.0
// Boxes of rows as they lie in a world, for one level: of floats, of which a register has a pixel of each of four rows.
// Loaded are four positions of each, which are turned over on the way to the sums and back.
#pragma once

#include "QX/filters/QX_BlurEntriesT.h"
#include "QX/filters/QX_BoxGroupT.h"

namespace qx::QX_ISA {

#ifdef __AVX512F__
template <class D> inline constexpr bool kBoxesRows = D::number == 32 && kRegister == 64;

/// Bytes ahead at which rows are asked for, of which processors foresee fewer than are read and written here.
inline constexpr std::ptrdiff_t kRowBytesAhead = 2048;

/// Four pixels whose colours are multiplied by alpha.
QX_INLINE Wide<float> matted(Wide<float> v) {
    const auto pixels = (__m512)v;
    return (Wide<float>)_mm512_mask_mul_ps(pixels, 0xEEEE, pixels, _mm512_permute_ps(pixels, 0));
}

/// Four positions of a register of entries, from `at` on.
QX_INLINE void load_four(const BlurEntries& entries, int which, std::int64_t at, Wide<float> (&v)[4]) {
    constexpr std::ptrdiff_t bytes = sizeof v[0];
    const std::byte* const from = entries.at(at);
    if (entries.are_rows()) {
        for (int k = 0; k < 4; ++k) v[k] = load_lanes<Wide<float>>(from + (which * 4 + k) * entries.row_step);
        turn_sixteens(v);
        if (entries.mattes) {
            for (int k = 0; k < 4; ++k) v[k] = matted(v[k]);
        }
    } else {
        for (int k = 0; k < 4; ++k) v[k] = load_lanes<Wide<float>>(from + k * entries.step + which * bytes);
    }
}
QX_INLINE void store_four(const BlurEntries& entries, int which, std::int64_t at, Wide<float> (&v)[4], bool streams) {
    constexpr std::ptrdiff_t bytes = sizeof v[0];
    std::byte* const to = entries.at(at);
    if (entries.are_rows()) {
        turn_sixteens(v);
        for (int k = 0; k < 4; ++k) store_entry(streams, to + (which * 4 + k) * entries.row_step, v[k]);
    } else {
        for (int k = 0; k < 4; ++k) store_entry(streams, to + k * entries.step + which * bytes, v[k]);
    }
}

/// A multiple of four positions of one entry of rows. @return as box_part_real
template <bool Short> bool box_fours(const BoxStretch& s, std::byte* sums) {
    using F = Wide<float>;
    constexpr int registers = kRowEntry<QX_PixelFloat> / sizeof(F);
    QuickBox<Short> box(s);
    F sum[registers];
    for (int r = 0; r < registers; ++r) sum[r] = load_lanes<F>(sums + r * sizeof(F));
    for (std::int64_t at = 0; at < s.count; at += 4) {
        for (int r = 0; r < registers; ++r) {
            F enter[4], leave[4], left[4];
            for (int k = 0; s.enter.are_rows() && k < 4; ++k)
                __builtin_prefetch(s.enter.at(at) + (r * 4 + k) * s.enter.row_step + kRowBytesAhead);
            load_four(s.enter, r, at, enter);
            load_four(s.leave, r, at, leave);
            if constexpr (Short) load_four(s.left, r, at, left);
            for (int k = 0; k < 4; ++k)
                enter[k] = box.step(sum[r], enter[k], leave[k], [&] QX_LAMBDA { return left[k]; });
            store_four(s.out, r, at, enter, s.streams);
        }
    }
    if (!box.holds(sum)) [[unlikely]]
        return false;
    for (int r = 0; r < registers; ++r) store_lanes(sums + r * sizeof(F), sum[r]);
    return true;
}

/// A few positions of rows as entries that lie side by side.
class RowsAsEntries {
public:
    static constexpr std::int64_t kMost = 16;

    RowsAsEntries() = default;
    BlurEntries entries() { return {buffer_, kRowEntry<QX_PixelFloat>}; }
    BlurEntries taken(const BlurEntries& from, std::int64_t count) {
        if (!from.are_rows()) return from;
        for_units([&](std::int64_t line, std::ptrdiff_t at) {
            gather_rows<QX_PixelFloat>(from.first + line * from.row_step, from.row_step, kUnit, count,
                                       {buffer_ + at, entries().step}, true);
        });
        if (from.mattes)
            matte_pixels<QX_PixelFloat>(buffer_, count * kUnit * std::ptrdiff_t{kRowEntry<QX_PixelFloat> / kEntryUnit});
        return entries();
    }
    void give(const BlurEntries& to, std::int64_t count, bool streams) {
        for_units([&](std::int64_t line, std::ptrdiff_t at) {
            scatter_rows<QX_PixelFloat>({buffer_ + at, entries().step}, kUnit, count, to.first + line * to.row_step,
                                        to.row_step, streams);
        });
    }

private:
    static constexpr std::int64_t kUnit = kEntryUnit / sizeof(QX_PixelFloat);
    template <class Body> static void for_units(const Body& body) {
        for (std::size_t at = 0; at < kRowEntry<QX_PixelFloat>; at += kEntryUnit)
            body(static_cast<std::int64_t>(at / sizeof(QX_PixelFloat)), static_cast<std::ptrdiff_t>(at));
    }
    alignas(64) std::byte buffer_[kMost * kRowEntry<QX_PixelFloat>];
};

/// Positions that do not come by fours, and whatever the quick form does not take.
inline void box_by_entries(const BoxStretch& s, void* sums) {
    RowsAsEntries enter, leave, left, out;
    for (std::int64_t at = 0; at < s.count; at += RowsAsEntries::kMost) {
        const std::int64_t count = std::min(s.count - at, RowsAsEntries::kMost);
        BoxStretch part = s.part(at, count);
        const BlurEntries to = part.out;
        part.enter = enter.taken(part.enter, count);
        part.leave = leave.taken(part.leave, count);
        part.left = left.taken(part.left, count);
        if (to.are_rows()) part.out = out.entries(), part.streams = false;
        box_entries<DepthFloat>(part, sums);
        if (to.are_rows()) out.give(to, count, s.streams);
    }
}

inline void box_rows(const BoxStretch& s, void* sums) {
    constexpr auto pixel = static_cast<std::int64_t>(sizeof(QX_PixelFloat));
    const std::int64_t unaligned =
        s.out.are_rows() && s.streams ? static_cast<std::int64_t>(bytes_to_line(s.out.first)) / pixel : 0;
    const std::int64_t head = is_quick(s) ? std::min(unaligned, s.count) : s.count;
    const std::int64_t fours = (s.count - head) / 4 * 4;
    box_by_entries(s.part(0, head), sums);
    if (fours > 0) {
        const BoxStretch part = s.part(head, fours);
        auto* const to = static_cast<std::byte*>(sums);
        if (!(s.end_short == 0 ? box_fours<false>(part, to) : box_fours<true>(part, to))) box_by_entries(part, sums);
    }
    box_by_entries(s.part(head + fours, s.count - head - fours), sums);
}

inline void add_rows(const BlurEntries& entries, std::int64_t count, void* sums) {
    RowsAsEntries some;
    for (std::int64_t at = 0; at < count; at += RowsAsEntries::kMost) {
        const std::int64_t part = std::min(count - at, RowsAsEntries::kMost);
        add_box_sums<DepthFloat>(some.taken(entries.from(at), part), kRowEntry<QX_PixelFloat>, part, sums);
    }
}
#else
template <class D> inline constexpr bool kBoxesRows = false;
#endif

template <class D> void box_stretch(const BoxStretch& s, void* sums) {
#ifdef __AVX512F__
    if constexpr (kBoxesRows<D>) {
        if (s.enter.are_rows() || s.leave.are_rows() || s.left.are_rows() || s.out.are_rows()) return box_rows(s, sums);
    }
#endif
    box_entries<D>(s, sums);
}

template <class D> void box_sums(const BlurEntries& entries, std::size_t entry_bytes, std::int64_t count, void* sums) {
#ifdef __AVX512F__
    if constexpr (kBoxesRows<D>) {
        if (entries.are_rows()) return add_rows(entries, count, sums);
    }
#endif
    add_box_sums<D>(entries, entry_bytes, count, sums);
}

}  // namespace qx::QX_ISA
