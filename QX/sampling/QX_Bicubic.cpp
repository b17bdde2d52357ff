// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_BicubicT.h"
#include "QX/sampling/QX_Samp.h"

namespace qx::sampling {

std::uint32_t cubic8_plain(const TapRows<4>& rows, const CubicWeights& weights) {
    return finish<QX_Pixel8>(cubic_sum<QX_Pixel8>(rows, weights));
}

}  // namespace qx::sampling

using namespace qx::sampling;

#define QX_BICUBIC(depth, Pixel)                                                                                       \
    int QX_SubpixelBicubic##depth(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {        \
        return cubic_point(x, y, params, out);                                                                         \
    }                                                                                                                  \
    int QX_SubpixelNoClipBicubic##depth(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, Pixel* out) {  \
        return cubic_noclip(x, y, params, out);                                                                        \
    }                                                                                                                  \
    int QX_SubpixelSpanSampleAllInBicubic##depth(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params,       \
                                                 bool* all_in, Pixel* out) {                                           \
        return cubic_plus(x, y, params, all_in, out);                                                                  \
    }                                                                                                                  \
    int QX_SubpixelSpanSampleBicubic##depth(void*, std::int32_t count, std::int32_t x, std::int32_t y,                 \
                                            const QX_SampPB* params, QX_AlphaSumOf<Pixel>* alpha_sum, Pixel* out) {    \
        return cubic_span(count, x, y, params, alpha_sum, out);                                                        \
    }                                                                                                                  \
    int QX_SubpixelSampleTranslateNoClipBicubic##depth(void*, std::int32_t x, std::int32_t y, const double weights[4], \
                                                       const QX_SampPB* params, Pixel* out) {                          \
        return cubic_translate(x, y, weights, params, out);                                                            \
    }

QX_BICUBIC(8, QX_Pixel8)
QX_BICUBIC(16, QX_Pixel16)
QX_BICUBIC(Float, QX_PixelFloat)
