// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"

/// Sets the dither noise back to its start, so that a render can repeat it exactly (on one thread).
QX_EXPORT void QX_ResetDitherRandomIndex();

namespace qx {

/// Gets the table from the host and puts the cursor at its start. @return 0 or the host's code
QX_EXPORT int start_noise();

/// The process-wide noise: one 32-bit value a channel, from a table that starts over at its end. The cursor is
/// shared by all dithering code and all threads on purpose; a row keeps it in a local and stores it at the end.
class NoiseRow {
public:
    NoiseRow();
    ~NoiseRow();
    NoiseRow(const NoiseRow&) = delete;
    NoiseRow& operator=(const NoiseRow&) = delete;
    std::uint32_t next() { return next_if(true); }
    /// The next value, which is used up only if it is `wanted`.
    std::uint32_t next_if(bool wanted) {
        const std::uint32_t value = *cursor_;
        cursor_ += wanted;
        if (cursor_ == end_) cursor_ = start_;
        return value;
    }
    /// Values side by side, four a pixel, for one pixel or more, up to `wanted`. They hold until the next call.
    struct Run {
        const std::uint32_t* values;
        std::size_t pixels;
    };
    Run next_pixels(std::size_t wanted) {
        const std::size_t pixels = std::min(wanted, static_cast<std::size_t>(end_ - cursor_) / 4);
        if (pixels == 0) {  // across the table's end
            for (std::uint32_t& value : pixel_) value = next();
            return {pixel_, 1};
        }
        const std::uint32_t* const values = cursor_;
        cursor_ += 4 * pixels;
        if (cursor_ == end_) cursor_ = start_;
        return {values, pixels};
    }

private:
    const std::uint32_t *start_, *end_, *cursor_;
    std::uint32_t pixel_[4];
};

}  // namespace qx
