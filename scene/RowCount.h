// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Records.h"
#include "pictures/Watch.h"

namespace qx::scene {

/// The rows of one transfer, counted for a watch over all parts that the work is cut into.
class RowCount {
public:
    RowCount(pictures::Watch& watch, int rows) : watch_(watch), rows_(rows) {}
    bool stops() const noexcept { return watch_.stops(); }
    void add(int rows) noexcept {
        if (rows != 0) watch_.rows(done_.fetch_add(rows, std::memory_order_relaxed) + rows, rows_);
    }

private:
    pictures::Watch& watch_;
    const int rows_;
    std::atomic<std::int64_t> done_{0};
};

/// One call of the library among them, which stands for so many of the rows whatever it counts itself.
class RowPart {
public:
    RowPart(RowCount& all, int rows) : all_(all), rows_(rows) {}
    QX_ProgressInfo info() { return {this, abort, advance}; }
    void finish() noexcept { tell(rows_); }

private:
    static int abort(void* part) { return static_cast<RowPart*>(part)->all_.stops() ? kQX_Interrupted : 0; }
    static int advance(void* refcon, std::int32_t count, std::int32_t total) {
        auto& part = *static_cast<RowPart*>(refcon);
        if (total > 0) part.tell(static_cast<int>(std::int64_t{part.rows_} * count / total));
        return abort(refcon);
    }
    void tell(int rows) noexcept {
        all_.add(rows - told_);
        told_ = rows;
    }

    RowCount& all_;
    const int rows_;
    int told_ = 0;
};

}  // namespace qx::scene
