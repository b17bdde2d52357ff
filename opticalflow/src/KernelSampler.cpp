// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/KernelSampler.h"

#include <cmath>

#include "opticalflow/src/CopySampler.h"

namespace solvan_of {
namespace {

/// Over the places around that which `read` has at 0.
template <class Read> float filtered(const Taps& taps, const Read& read) {
    const auto radius = static_cast<std::int32_t>(taps.size() / 2);
    float sum = 0;
    for (std::int32_t k = -radius; k <= radius; ++k) sum += taps[static_cast<std::size_t>(k + radius)] * read(k);
    return sum;
}

}  // namespace

Taps gaussian_taps(int length, float variance) {
    Taps taps;
    float sum = 0;
    for (int d = length / 2; d > length / 2 - length; --d) {
        taps.push_back(std::exp(-static_cast<float>(d * d) / (2.0f * variance)));
        sum += taps.back();
    }
    for (float& tap : taps) tap /= sum;
    return taps;
}

void BiKernelSampler::preProcess(const FloatTexture& in, FloatTexture&) {
    pass_count_ = 2;
    if (!allocate_like(across_, in)) {
        state().stop(4);
        pass_count_ = 0;
    }
}

void BiKernelSampler::processPart(const FloatTexture& in, FloatTexture& out, int part) {
    const bool along_rows = pass_ == 0;
    for_rows(part, [&](std::int32_t y) {
        float* const to = along_rows ? across_.row(y) : out.row(y);
        for (std::int32_t x = rectangle_.left; x < rectangle_.right; ++x) {
            to[x] = along_rows ? filtered(horizontal_, [&](std::int32_t k) { return in.read(x + k, y); })
                               : filtered(vertical_, [&](std::int32_t k) { return across_.read(x, y + k); });
        }
    });
}

void KernelSamplerMasked::preProcess(const FloatTexture& in, FloatTexture& out) {
    pass_count_ = 0;
    const bool copies = kernels_.empty() || (kernels_.back().first.size() < 2 && kernels_.back().second.size() < 2);
    if (!copies) {
        BiKernelSampler(state(), kernels_.back().first, kernels_.back().second).process(in, &out);
    } else if (&in != &out) {
        SimpleCopySampler<float>(state()).process(in, &out);
    }
}

}  // namespace solvan_of
