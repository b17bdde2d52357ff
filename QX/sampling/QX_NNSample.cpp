// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampleGpu.h"
#include "QX/sampling/QX_SampleLanesT.h"
#include "QX/sampling/QX_SampleTapsT.h"

namespace qx::sampling {
namespace {

/// The number of the pixel next to a coordinate. Kept: 16 bits of it, so that what lies beyond 32767 wraps.
constexpr std::int16_t nearest(std::int32_t coordinate) {
    return static_cast<std::int16_t>((static_cast<std::uint32_t>(coordinate) + 0x8000u) >> 16);
}
static_assert(nearest(0x7FFFC000) == -32768 && nearest(-0x8001) == -1 && nearest(0x17FFF) == 1);

template <class Pixel> int nearest_sample(std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    if (is_gpu_world(params->src)) return report_gpu_world(kSamplePlace);
    const QX_EffectWorld& world = *params->src;
    const std::int32_t column = nearest(x), row = nearest(y);
    Pixel pixel{};
    if (contains(world, column, row)) pixel = load_at<Pixel>(pixel_address(world, column, row, sizeof(Pixel)));
    put(out, pixel);
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
