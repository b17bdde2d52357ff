// SPDX-License-Identifier: Apache-2.0
#pragma once

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
    std::uint32_t next() {
        const std::uint32_t value = *cursor_;
        if (++cursor_ == end_) cursor_ = start_;
        return value;
    }

private:
    const std::uint32_t *start_, *end_, *cursor_;
};

}  // namespace qx
