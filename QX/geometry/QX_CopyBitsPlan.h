// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <limits>

#include "QX/indep/QX_Report.h"
#include "platform/M_Geometry.h"

/// What copies from rectangle to rectangle share: which pixels take part, and how often each is written.
namespace qx::copy_bits {

/// A rectangle of a world or chunk.
struct Side {
    M_LRect rect;
    std::int32_t width, height;

    /// @param asked  null is all of it
    Side(const M_LRect* asked, std::int32_t columns, std::int32_t rows)
        : rect(asked != nullptr ? *asked : M_LRect{0, 0, columns, rows}), width(columns), height(rows) {}

    bool whole() const { return rect == M_LRect{0, 0, width, height}; }
    /// No pixel of it lies in the world.
    bool nothing() const {
        return M_EmptyLRect(rect) || rect.left >= width || rect.top >= height || rect.right < 1 || rect.bottom < 1;
    }
    std::int64_t columns() const { return std::int64_t{rect.right} - rect.left; }
    std::int64_t rows() const { return std::int64_t{rect.bottom} - rect.top; }
};

inline bool same_size(const Side& a, const Side& b) { return a.columns() == b.columns() && a.rows() == b.rows(); }

/// Where a report says that numbers pass 32 bits.
struct OverflowTexts {
    Place place;
    const char *x, *y;
};

/// One direction of a rectangle.
struct Reach {
    std::int32_t from, to;
};

/// Cuts both reaches to their worlds. What is cut off one is cut off the other by the same part of its length, in whole
/// pixels; lengths in the quotients are those before all cuts, and the source is cut first.
/// @return false when a number passes 32 bits
inline bool cut(Reach& s, std::int32_t s_end, Reach& d, std::int32_t d_end) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const std::int64_t s_length = std::int64_t{s.to} - s.from, d_length = std::int64_t{d.to} - d.from;
    if (s_length > most || d_length > most) return false;
    bool fits = true;
    const auto part = [&](std::int64_t n, std::int64_t length, std::int64_t of) {
        fits = fits && n * length <= most;
        return static_cast<std::int32_t>(n * length / of);
    };
    const auto cut_one = [&](Reach& a, std::int32_t end, std::int64_t a_length, Reach& b, std::int64_t b_length) {
        if (a.from < 0) {
            b.from += part(-std::int64_t{a.from}, b_length, a_length);
            a.from = 0;
        }
        if (a.to > end) {
            b.to -= part(std::int64_t{a.to} - end, b_length, a_length);
            a.to = end;
        }
    };
    cut_one(s, s_end, s_length, d, d_length);
    cut_one(d, d_end, d_length, s, s_length);
    return fits && std::int64_t{s.to} - s.from + d.to - d.from <= most;
}

/// The two rectangles after cutting. @return 0, or 3 after a report
inline int cut_sides(Side& s, Side& d, const OverflowTexts& texts) {
    Reach sx{s.rect.left, s.rect.right}, dx{d.rect.left, d.rect.right};
    Reach sy{s.rect.top, s.rect.bottom}, dy{d.rect.top, d.rect.bottom};
    if (!cut(sx, s.width, dx, d.width)) return report_failed_verification(texts.place, texts.x);
    if (!cut(sy, s.height, dy, d.height)) return report_failed_verification(texts.place, texts.y);
    s.rect = {sx.from, sy.from, sx.to, sy.to};
    d.rect = {dx.from, dy.from, dx.to, dy.to};
    return 0;
}

/// How often each of `from` places is repeated so that they fill `to`: a sum grows by `to` each time, and what it holds
/// of `from` is taken out.
class Repeats {
public:
    Repeats(std::int32_t from, std::int32_t to) : from_(from), whole_(to / from), rest_(to % from) {}
    std::int32_t next() {
        sum_ += rest_;
        if (sum_ < from_) return whole_;
        sum_ -= from_;
        return whole_ + 1;
    }

private:
    std::int32_t from_, whole_, rest_, sum_ = 0;
};

/// Calls row(source row, first destination row, count) for the source rows that are written.
template <class Row> void for_repeated_rows(const Side& s, const Side& d, const Row& row) {
    Repeats repeats(s.rect.bottom - s.rect.top, d.rect.bottom - d.rect.top);
    for (std::int32_t sy = s.rect.top, dy = d.rect.top; sy < s.rect.bottom; ++sy) {
        const std::int32_t n = repeats.next();
        if (n > 0) row(sy, dy, n);
        dy += n;
    }
}

}  // namespace qx::copy_bits
