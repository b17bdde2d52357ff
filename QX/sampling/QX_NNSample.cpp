// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Nearest.h"
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampleGpu.h"

namespace qx::sampling {
namespace {

template <class Pixel> int nearest_sample(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    if (is_gpu_world(params->src)) return report_gpu_world(Place::sampler);
    *out = Nearest<Pixel>(*params->src).read(FixedPoint{x, y} + FixedPoint{kFixedHalf, kFixedHalf});
    return kQX_NoError;
}

}  // namespace
}  // namespace qx::sampling

int QX_NNSample(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return qx::sampling::nearest_sample(x, y, params, out);
}
int QX_NNSample16(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel16* out) {
    return qx::sampling::nearest_sample(x, y, params, out);
}
int QX_NNSampleFloat(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_PixelFloat* out) {
    return qx::sampling::nearest_sample(x, y, params, out);
}
