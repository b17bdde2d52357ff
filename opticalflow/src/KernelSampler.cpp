// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/KernelSampler.h"

#include <cmath>

namespace solvan_of {
namespace {

/// Over places -radius to radius of `read`.
template <class Read> float filtered(const Taps& taps, std::int32_t radius, const Read& read) {
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

void KernelSampler::preProcess(const FloatTexture& in, FloatTexture&) {
    pass_count_ = radius() == 0 ? 1 : 2;
    if (radius() > 0 && !allocate_like(across_, in)) {
        state().stop(4);
        pass_count_ = 0;
    }
}

void KernelSampler::processPart(const FloatTexture& in, FloatTexture& out, int part) {
    const bool copies = radius() == 0, along_rows = pass_ == 0;
    for_rows(part, [&](std::int32_t y) {
        float* const to = along_rows && !copies ? across_.row(y) : out.row(y);
        for (std::int32_t x = rectangle_.left; x < rectangle_.right; ++x) {
            if (copies) {
                to[x] = in.read(x, y);
            } else if (along_rows) {
                to[x] = filtered(taps_, radius(), [&](std::int32_t k) { return in.read(x + k, y); });
            } else {
                to[x] = filtered(taps_, radius(), [&](std::int32_t k) { return across_.read(x, y + k); });
            }
        }
    });
}

}  // namespace solvan_of
