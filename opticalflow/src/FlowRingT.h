// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowRing.h"
#include "opticalflow/src/FlowSampleT.h"

namespace qx::QX_ISA {

inline void ring_samples(const FlowImage& image, std::int32_t count, const float* x, const float* y, float* out) {
    std::int32_t at = 0;
    for (; at + lanes_in<Floats> <= count; at += lanes_in<Floats>)
        store_lanes(out + at, ring_sample(image, load_lanes<Floats>(x + at), load_lanes<Floats>(y + at)));
    if (at == count) return;
    float px[lanes_in<Floats>]{}, py[lanes_in<Floats>]{}, samples[lanes_in<Floats>];
    for (std::int32_t i = 0; i < count - at; ++i) px[i] = x[at + i], py[i] = y[at + i];
    store_lanes(samples, ring_sample(image, load_lanes<Floats>(px), load_lanes<Floats>(py)));
    for (std::int32_t i = 0; i < count - at; ++i) out[at + i] = samples[i];
}

extern const FlowRing flow_ring;
const FlowRing flow_ring{.samples = &ring_samples};

}  // namespace qx::QX_ISA
