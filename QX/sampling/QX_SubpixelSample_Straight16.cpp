// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SubpixelSampleT.h"

using namespace qx::sampling;

int QX_SubpixelSample_Straight16(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_Pixel16* out) {
    return straight_point(x, y, params, out);
}
int QX_SubpixelSampleNoClip_Straight16(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                       QX_Pixel16* out) {
    return straight_noclip(x, y, params, out);
}
int QX_SubpixelSamplePlus_Straight16(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, bool* all_in,
                                     QX_Pixel16* out) {
    return straight_plus(x, y, params, all_in, out);
}
int QX_SubpixelSampleTranslateNoClip_Straight16(void*, std::int32_t x, std::int32_t y, const double weights[4],
                                                const QX_SampPB* params, QX_Pixel16* out) {
    return straight_translate(x, y, weights, params, out);
}
int QX_SubpixelSpanSampleTranslateNoClip_Straight16(void*, std::int32_t count, std::int32_t x, std::int32_t y,
                                                    const QX_SampPB* params, std::uint32_t* alpha_sum,
                                                    QX_Pixel16* out) {
    return straight_span(count, x, y, params, alpha_sum, out);
}
