// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "opticalflow/src/Imager.h"

namespace solvan_of {

/// How many levels a pyramid has: one more for each halving after which either side has more than 7 pixels.
int level_count(std::int32_t width, std::int32_t height);

/// An image and halvings of it, each smoothed before.
class FnFilteredPyramid : public Generator<FloatTexture> {
public:
    FnFilteredPyramid(InterruptState& state, int levels) : Generator(state), levels_(levels) {}

    const FloatTexture& level(int number) const { return number == 0 ? *base_ : *made_[std::size_t(number) - 1]; }
    int levels() const { return static_cast<int>(made_.size()) + 1; }

    int filter_length = 3;
    float filter_variance = 2.25f;
    bool smooths_by_kernel = false;

protected:
    void preProcess(FloatTexture& base) override;
    void processPart(FloatTexture&, int) override {}
    virtual void postLevel(int) {}

private:
    bool add_level(const FloatTexture& above);
    void smooth_and_halve(const FloatTexture& above, FloatTexture& half);

    const FloatTexture* base_ = nullptr;
    std::vector<std::unique_ptr<FloatTexture>> made_;
    int levels_;
};

/// The pyramids of a pair of images.
class FnFilteredPyramidAlpha : public FnFilteredPyramid {
public:
    using FnFilteredPyramid::FnFilteredPyramid;
};

}  // namespace solvan_of
