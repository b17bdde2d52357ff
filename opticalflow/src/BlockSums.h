// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/ImgProc.h"

namespace solvan_of {

/// Sums of a block's width of pixels: the target gets at x the sum from x on, as far as whole widths fit. The first is
/// summed, the others go on from it.
class FnMotionEstimateGradientRow : public FnImgProc2<float> {
public:
    FnMotionEstimateGradientRow(InterruptState& state, std::int32_t block_width)
        : FnImgProc2(state), size_(block_width) {}

protected:
    void processPart(int part) override;

private:
    std::int32_t size_;
};

/// The same along columns, which parts share out: a column is summed whole.
class FnMotionEstimateGradientColumn : public FnImgProc2<float> {
public:
    FnMotionEstimateGradientColumn(InterruptState& state, std::int32_t block_height)
        : FnImgProc2(state), size_(block_height) {}

protected:
    void processPart(int part) override;

private:
    std::int32_t size_;
};

}  // namespace solvan_of
