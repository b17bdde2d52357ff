// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Records.h"

namespace qx {

/// Asks, once every 64 rows, whether to go on; the answer of a callback that says no is thrown. Called after each
/// row with its index from the top of the rectangle. A progress function, where there is one, is asked alone.
inline void poll_row(const QX_ProgressInfo* progress, std::int32_t row, std::int32_t total) {
    if (progress == nullptr || (row & 63) != 63) return;
    int code = 0;
    if (progress->progress_func != nullptr) {
        code = progress->progress_func(progress->refcon, row, total);
    } else if (progress->abort_func != nullptr) {
        code = progress->abort_func(progress->refcon);
    }
    if (code != 0) throw code;
}

}  // namespace qx
