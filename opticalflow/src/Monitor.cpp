// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Monitor.h"

#include <algorithm>
#include <cmath>

#include "opticalflow/src/Kernels.h"

namespace solvan_of {

void FnMotionEstimateGradientChangedNeighboursMonitor::initialise() {
    saw_invalid_.store(false, std::memory_order_relaxed);
    if (is_first_) {
        begin();
    } else {
        pass_count_ = 1;
        all_changed_ = false;
    }
}

void FnMotionEstimateGradientChangedNeighboursMonitor::begin() {
    pass_count_ = 0;
    const bool is_new = map_.width() != width_ || map_.height() != height_ || !map_.has_pixels();
    if (is_new && !(allocate_like(map_, *first_) && allocate_like(saved_, *first_))) return state().stop(4);
    const HvVec2 b = first_->background;
    map_.background = place_of(std::sqrt(b.x * b.x + b.y * b.y)).whole;
    saved_.background = b;
    run_parts<FnMotionEstimateGradientChangedNeighboursMonitor,
              &FnMotionEstimateGradientChangedNeighboursMonitor::save_rows>(state(), *this);
    is_first_ = false;
}

void FnMotionEstimateGradientChangedNeighboursMonitor::save_rows(int part) {
    const PartRows rows = rows_of_part(height_, part, processorCount());
    map_.fill_rows(rows.begin, rows.end, 1);
    for (std::int32_t y = rows.begin; y < rows.end; ++y) std::copy_n(first_->row(y), width_, saved_.row(y));
}

void FnMotionEstimateGradientChangedNeighboursMonitor::processPart(int part) {
    bool invalid = false;
    for_rows(part, [&](std::int32_t y) {
        invalid |= kernels().choice->watch(first_->row(y), width_, saved_.row(y), map_.row(y));
    });
    if (invalid) saw_invalid_.store(true, std::memory_order_relaxed);
}

}  // namespace solvan_of
