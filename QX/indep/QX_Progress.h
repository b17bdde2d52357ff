// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Records.h"

namespace qx {

/// Asks whether to go on: the progress function, or the abort function where there is none. @return its answer
inline int ask_progress(const QX_ProgressInfo* progress, std::int32_t count, std::int32_t total) {
    if (progress == nullptr) return 0;
    if (progress->progress_func != nullptr) return progress->progress_func(progress->refcon, count, total);
    return progress->abort_func != nullptr ? progress->abort_func(progress->refcon) : 0;
}

/// Asks once every 64 rows; the answer of a callback that says no is thrown. Called after each row with its index
/// from the top of the rectangle.
inline void poll_row(const QX_ProgressInfo* progress, std::int32_t row, std::int32_t total) {
    if ((row & 63) != 63) return;
    if (const int code = ask_progress(progress, row, total)) throw code;
}

}  // namespace qx
