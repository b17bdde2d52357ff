// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BlockSums.h"

namespace solvan_of {
namespace {

/// Along a line of `length` places.
template <class Read, class Give>
void sliding_sums(std::int32_t length, std::int32_t size, const Read& read, const Give& give) {
    if (length < size) return;
    float sum = 0;
    for (std::int32_t i = 0; i < size; ++i) sum += read(i);
    give(0, sum);
    for (std::int32_t i = 1; i + size <= length; ++i) {
        sum += read(i + size - 1);
        sum -= read(i - 1);
        give(i, sum);
    }
}

}  // namespace

void FnMotionEstimateGradientRow::processPart(int part) {
    for_rows(part, [&](std::int32_t y) {
        const float* const from = second_->row(y);
        float* const to = first_->row(y);
        sliding_sums(
            width_, size_, [from](std::int32_t x) { return from[x]; },
            [to](std::int32_t x, float sum) { to[x] = sum; });
    });
}

void FnMotionEstimateGradientColumn::processPart(int part) {
    const PartRows columns = rows_of_part(width_, part, processorCount());
    for (std::int32_t x = columns.begin; x < columns.end && !interrupted(part); ++x) {
        sliding_sums(
            height_, size_, [&](std::int32_t y) { return second_->at(x, y); },
            [&](std::int32_t y, float sum) { first_->at(x, y) = sum; });
    }
}

}  // namespace solvan_of
