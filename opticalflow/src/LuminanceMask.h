// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "opticalflow/src/GeneralSampler.h"

namespace solvan_of {

/// Replaces luminance that a mask leaves out, below 0.5, by the mean of what it does not.
class FnMotionEstimateLuminanceMasker : public GeneralSampler<float, float> {
public:
    FnMotionEstimateLuminanceMasker(InterruptState& state, const FloatTexture& mask)
        : GeneralSampler(state), mask_(&mask) {}
    float mean = 0;

protected:
    void pixel(const float& in, float& out, int, std::int32_t x, std::int32_t y) override {
        out = mask_->at(x, y) < 0.5f ? mean : in;
    }

private:
    const FloatTexture* mask_;
};

/// The mean for a masker: sums of parts, added in their order; 0 where the mask leaves out all.
class FnMeanCalculator : public GeneralSampler<float, float> {
public:
    FnMeanCalculator(InterruptState& state, const FloatTexture& mask, FnMotionEstimateLuminanceMasker& masker)
        : GeneralSampler(state), mask_(&mask), masker_(&masker) {}

protected:
    void preProcess(const FloatTexture&, FloatTexture&) override {
        sums_.assign(static_cast<std::size_t>(processorCount()), {});
    }
    void pixel(const float& in, float&, int part, std::int32_t x, std::int32_t y) override {
        if (mask_->at(x, y) < 0.5f) return;
        Sum& sum = sums_[static_cast<std::size_t>(part)];
        sum.value += in;
        ++sum.count;
    }
    void postProcess(const FloatTexture&, FloatTexture&) override {
        Sum all;
        for (const Sum& sum : sums_) {
            all.value += sum.value;
            all.count += sum.count;
        }
        masker_->mean = all.count == 0 ? 0.0f : all.value / static_cast<float>(all.count);
    }

private:
    struct Sum {
        float value = 0;
        std::int64_t count = 0;
    };
    const FloatTexture* mask_;
    FnMotionEstimateLuminanceMasker* masker_;
    std::vector<Sum> sums_;
};

}  // namespace solvan_of
