// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "QX/indep/QX_PerDepth.h"
#include "lanes/Levels.h"

/// Neighbouring lines are blurred as a group: the pixels of all at one position along them lie side by side as an
/// entry, and every channel of an entry is a lane. Columns lie so in a world already, rows are turned over.
namespace qx {

/// Bytes of an entry are a multiple of this.
inline constexpr std::size_t kEntryUnit = 64;
/// Bytes of an entry of rows: so many lanes that sums along them need not wait for each other.
template <class Pixel> inline constexpr std::size_t kRowEntry = sizeof(Pixel) == 16 ? 2 * kEntryUnit : kEntryUnit;
inline constexpr std::int64_t kMostLinesInGroup = 32;
/// Zeroes for all that lies outside a line.
alignas(64) inline constexpr std::byte kClearEntry[16 * kMostLinesInGroup]{};

/// One entry a position.
struct BlurEntries {
    std::byte* first;
    std::ptrdiff_t step;
    std::ptrdiff_t row_step = 0;  ///< of rows as they lie in a world, from each pixel of an entry to the next; else 0
    bool mattes = false;          ///< colours of rows are multiplied by alpha as they are read

    std::byte* at(std::int64_t position) const { return first + position * step; }
    BlurEntries from(std::int64_t position) const { return {at(position), step, row_step, mattes}; }
    bool are_rows() const { return row_step != 0; }
};

/// Rows of which the next block of a group will be gathered: while one is worked on they are asked for, a few lines of
/// the caches at each position.
struct RowsAhead {
    const std::byte* first = nullptr;  ///< null asks for nothing
    std::ptrdiff_t row_step = 0;
    int rows_shift = 0;  ///< there are 2 to this power
    int each = 0;        ///< lines that are asked for at a position
};

/// Positions side by side of one pass of a box: what enters and leaves the window at each, and the pixels at its left
/// end; those at its right end are what enters.
struct BoxStretch {
    std::int64_t count;
    std::size_t entry_bytes;
    BlurEntries enter, leave, left, out;
    std::int64_t divisor, divisor_step;  ///< of the first position, and from one to the next
    std::int32_t end_short;
    bool streams;  ///< what goes out is aligned to lines of the caches, rows alike, and goes past them
    RowsAhead ahead{};

    BoxStretch part(std::int64_t from, std::int64_t positions) const {
        BoxStretch p = *this;
        p.count = positions, p.divisor += from * divisor_step, p.ahead = {};
        for (BlurEntries* const entries : {&p.enter, &p.leave, &p.left, &p.out}) *entries = entries->from(from);
        return p;
    }
};

/// Positions side by side of a Gaussian.
struct GaussianStretch {
    std::int64_t count, reach;
    std::size_t entry_bytes;
    const std::byte* taps;         ///< wide entries, from a reach before the first position on
    std::ptrdiff_t plane_bytes;    ///< from a plane to the next
    const void* weights;           ///< GaussianWeight, from the centre on
    const std::int32_t* divisors;  ///< of each position
    BlurEntries out;
    bool streams;
};
/// Weights in the form that a depth's lanes take. Two zeroes follow the last.
template <class Pixel> using GaussianWeight = std::conditional_t<sizeof(Pixel) == 4, std::int16_t, float>;
/// Wide entries have channels of 16 bits, or floats. What stems from kEntryUnit bytes of entries is a plane of its own.
template <class Pixel> inline constexpr std::size_t kWideUnit = sizeof(Pixel) == 16 ? kEntryUnit : 2 * kEntryUnit;
/// Reaches for which sums at 8 bits fit 31 bits with room to spare.
inline constexpr std::int64_t kLongestGroupedGaussian = 2047;

template <class Pixel> struct BlurGroupKernels {
    /// Rows to kEntryUnit bytes of entries and back. Lanes of entries for which there is no line take any value. Where
    /// nobody else has asked for what follows in the rows, gathering does.
    void (*gather)(const std::byte* rows, std::ptrdiff_t row_step, std::int64_t lines, std::int64_t count,
                   const BlurEntries& entries, bool asks_ahead);
    void (*scatter)(BlurEntries entries, std::int64_t lines, std::int64_t count, std::byte* rows,
                    std::ptrdiff_t row_step, bool past_caches);
    /// Multiplies colours by alpha.
    void (*matte)(std::byte* pixels, std::int64_t count);
    /// Makes entries wide.
    void (*widen)(const BlurEntries& entries, std::size_t entry_bytes, std::int64_t count, std::byte* wide,
                  std::ptrdiff_t plane_bytes);
    void (*gaussian)(const GaussianStretch& stretch);
    /// Whether boxes take and make entries of rows too.
    bool boxes_rows;
    /// `sums` are of 32 bits, one a lane of an entry, of the window before the stretch; `box_sums` adds to them.
    void (*box_sums)(const BlurEntries& entries, std::size_t entry_bytes, std::int64_t count, void* sums);
    void (*box)(const BoxStretch& stretch, void* sums);
};
struct BlurKernels : PerDepth<BlurGroupKernels> {
    bool has_groups;  ///< the plain level filters line by line
};
QX_DECLARE_LEVELS(BlurKernels, blur_kernels)

/// Chooses the kernels that blurs of worlds use, at the library's start. Until then lines are filtered one by one.
void choose_blur_kernels(Level level);

}  // namespace qx
