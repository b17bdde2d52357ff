// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Estimator.h"

#include "opticalflow/src/BlockLanes.h"
#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/Kernels.h"

namespace solvan_of {

void FnMotionEstimateGradient::initialise() {
    cells_ = engineBlock<std::int32_t>(std::size_t(width_) * std::size_t(height_));
    if (cells_ == nullptr) state().stop(4);
}

// A block that starts without a vector stays so. A refused step leaves the vector from before it.
void FnMotionEstimateGradient::processPart(int part) {
    const PartRows rows = rows_of(part);
    if (rows.begin >= rows.end || cells_ == nullptr) return;
    std::int32_t* const cells = cells_.get() + std::ptrdiff_t{rows.begin} * width_;
    std::int32_t count = 0;
    for_rows(part, [&](std::int32_t y) {
        for (std::int32_t x = 0; x < width_; ++x)
            if (is_valid(first_->at(x, y))) cells[count++] = y * width_ + x;
    });
    const BlockRoom room(images_, *this);
    for (int k = 0; k < kMostSteps && count > 0 && !interrupted(part); ++k) step(cells, count, room.floats());
    tell(part);
}

/// One step of all cells; those that go on are left in the list.
void FnMotionEstimateGradient::step(std::int32_t* cells, std::int32_t& count, float* room) {
    std::int32_t left = 0;
    for (std::int32_t at = 0; at < count; at += qx::kMostLanes) {
        const std::int32_t some = std::min(count - at, qx::kMostLanes);
        BlockBatch batch(images_, *this, room);
        for (std::int32_t i = 0; i < some; ++i) {
            const std::int32_t x = cells[at + i] % width_, y = cells[at + i] / width_;
            batch.add(x, y, first_->at(x, y));
        }
        HvVec2 moved[qx::kMostLanes];
        qx::FlowStep steps[qx::kMostLanes];
        kernels().solve->solve(images_.images(), batch.blocks(), error_threshold, moved, steps);
        for (std::int32_t i = 0; i < some; ++i) {
            const std::int32_t cell = cells[at + i];
            first_->at(cell % width_, cell / width_) = moved[i];
            if (steps[i] == qx::FlowStep::moved) cells[left++] = cell;
        }
    }
    count = left;
}

void FnMotionEstimateGradient::tell(int part) {
    if (centres == nullptr && errors == nullptr && motion == nullptr) return;
    const BlockRoom room(images_, *this);
    for_rows(part, [&](std::int32_t y) {
        for (std::int32_t x = 0; x < width_; ++x) {
            const HvVec2 v = first_->at(x, y);
            BlockBatch batch(images_, *this, room.floats());
            batch.add(x, y, v);
            if (centres != nullptr) centres->at(x, y) = batch.centre(0);
            if (errors != nullptr) kernels().solve->errors(images_.images(), batch.blocks(), &errors->at(x, y));
            if (motion != nullptr) motion->at(x, y) = std::sqrt(v.x * v.x + v.y * v.y);
        }
    });
}

float quantised(float component, float step) {
    if (component == INVALID_VECTOR) return component;
    return std::floor((component + step / 2.0f) / step) * step;
}

void FnMotionEstimateGradientQuantise::processPart(int part) {
    for_rows(part, [&](std::int32_t y) {
        for (std::int32_t x = 0; x < width_; ++x) {
            HvVec2& v = first_->at(x, y);
            v = {quantised(v.x, quantisation_step), quantised(v.y, quantisation_step)};
        }
    });
}

}  // namespace solvan_of
