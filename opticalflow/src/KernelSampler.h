// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "opticalflow/src/Imager.h"

namespace solvan_of {

/// Weights of an odd number of taps around a pixel.
using Taps = std::vector<float>;

/// exp(-d^2 / (2 * variance)) for each distance from the middle, over their sum.
Taps gaussian_taps(int length, float variance);

/// The same taps along rows and then along columns. Without taps beside the middle it copies.
class KernelSampler : public Sampler<FloatTexture, FloatTexture> {
public:
    KernelSampler(InterruptState& state, Taps taps) : Sampler(state), taps_(std::move(taps)) {}

protected:
    void preProcess(const FloatTexture& in, FloatTexture& out) override;
    void processPart(const FloatTexture& in, FloatTexture& out, int part) override;

private:
    std::int32_t radius() const { return static_cast<std::int32_t>(taps_.size() / 2); }

    Taps taps_;
    FloatTexture across_;  ///< filtered along rows
};

}  // namespace solvan_of
