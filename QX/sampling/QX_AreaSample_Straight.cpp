// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "QX/sampling/QX_AreaSample.h"
#include "QX/sampling/QX_AreaSampleT.h"
#include "QX/sampling/QX_SampForms.h"
#include "QX/sampling/QX_SampleGpu.h"

namespace qx::sampling {
int area_plain8(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return area_sample<QX_Pixel8, RoundNearest>(x, y, params, 1, out);
}
int area_template8(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return area_sample<QX_Pixel8, RoundUp>(x, y, params, 1, out);
}
int area_plain16(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel16* out) {
    return area_sample<QX_Pixel16, RoundNearest>(x, y, params, 1, out);
}
int area_template16(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel16* out) {
    return area_sample<QX_Pixel16, RoundUp>(x, y, params, 1, out);
}

}  // namespace qx::sampling

using namespace qx::sampling;

int QX_AreaSample_Straight(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel8* out) {
    return qx::slot<qx::Slot::AreaSample>()(in_data, x, y, params, out);
}
int QX_AreaSample_Straight16(void* in_data, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel16* out) {
    return qx::slot<qx::Slot::AreaSample16>()(in_data, x, y, params, out);
}

template <class Pixel, int Quality>
int QX_AreaSample_CPlusPlus(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {
    if (const int code = refuse_gpu_world(params)) return code;
    return area_sample<Pixel, RoundUp>(x, y, params, Quality, out);
}

#define QX_AREA_SAMPLE(Pixel)                                                                                    \
    template int QX_AreaSample_CPlusPlus<Pixel, 1>(void*, std::int32_t, std::int32_t, const QX_SampPB*, Pixel*); \
    template int QX_AreaSample_CPlusPlus<Pixel, 2>(void*, std::int32_t, std::int32_t, const QX_SampPB*, Pixel*);
QX_AREA_SAMPLE(QX_Pixel8)
QX_AREA_SAMPLE(QX_Pixel16)
QX_AREA_SAMPLE(QX_PixelFloat)
