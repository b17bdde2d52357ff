// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>
#include <vector>

#include "opticalflow/src/Imager.h"

namespace solvan_of {

/// Weights of an odd number of taps around a pixel.
using Taps = std::vector<float>;

/// exp(-d^2 / (2 * variance)) for each distance from the middle, over their sum.
Taps gaussian_taps(int length, float variance);

/// Kernels for both axes, of which the last pair is used.
class KernelContainer {
public:
    void add(Taps horizontal, Taps vertical) { kernels_.emplace_back(std::move(horizontal), std::move(vertical)); }
    std::size_t count() const { return kernels_.size(); }

protected:
    ~KernelContainer() = default;
    std::vector<std::pair<Taps, Taps>> kernels_;
};

/// Filters along rows into a texture of its own, and from there along columns: so in place too.
class BiKernelSampler : public Sampler<FloatTexture, FloatTexture> {
public:
    BiKernelSampler(InterruptState& state, const Taps& horizontal, const Taps& vertical)
        : Sampler(state), horizontal_(horizontal), vertical_(vertical) {}

protected:
    void preProcess(const FloatTexture& in, FloatTexture& out) override;
    void processPart(const FloatTexture& in, FloatTexture& out, int part) override;

private:
    const Taps &horizontal_, &vertical_;
    FloatTexture across_;  ///< filtered along rows
};

/// Filters by the last kernels. Without any, or without taps beside the middle, it copies.
class KernelSamplerMasked : public Sampler<FloatTexture, FloatTexture>, public KernelContainer {
public:
    using Sampler::Sampler;

protected:
    void preProcess(const FloatTexture& in, FloatTexture& out) override;
    void processPart(const FloatTexture&, FloatTexture&, int) override {}
};

/// The same taps along rows and columns.
class KernelSampler : public KernelSamplerMasked {
public:
    KernelSampler(InterruptState& state, const Taps& taps) : KernelSamplerMasked(state) { add(taps, taps); }
};

}  // namespace solvan_of
