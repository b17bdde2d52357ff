// SPDX-License-Identifier: Apache-2.0
// Bilinear samples of float pixels.
#include "QX/sampling/QX_Samp.h"
#include "QX/sampling/QX_SampleGpu.h"
#include "QX/sampling/QX_SampleMixT.h"

namespace qx::sampling {
namespace {

void sample(const TapRows<2>& rows, const Weights<float>& weights, QX_PixelFloat* out) {
    Float4 p[4];
    for (int i = 0; i < 4; ++i) p[i] = widen<float, QX_PixelFloat>(rows[i >> 1] + (i & 1) * int{sizeof *out});
    put(out, keeping_mix(p, weights.w, equal_alphas(p), 1.0f));
}

void sample_clipped(const Position& at, const QX_EffectWorld& world, QX_PixelFloat* out) {
    TapRows<2> rows;
    Edge<QX_PixelFloat, 2> edge;
    taps_clipped<QX_PixelFloat, 2>(world, at.column, at.row, edge, rows);
    sample(rows, Weights<float>::of(at), out);
}

}  // namespace
}  // namespace qx::sampling

using namespace qx::sampling;

int QX_SubpixelBilinearFloat(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_PixelFloat* out) {
    if (const int code = refuse_gpu_world(params)) return code;
    sample_clipped(Position(x, y), *params->src, out);
    return 0;
}
int QX_SubpixelNoClipBilinearFloat(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params, QX_PixelFloat* out) {
    if (const int code = refuse_gpu_world(params)) return code;
    const Position at(x, y);
    TapRows<2> rows;
    taps_inside<QX_PixelFloat, 2>(*params->src, at.column, at.row, rows);
    sample(rows, Weights<float>::of(at), out);
    return 0;
}
int QX_SubpixelSpanSampleAllInBilinearFloat(void*, std::int32_t x, std::int32_t y, const QX_SampPB* params,
                                            bool* all_in, QX_PixelFloat* out) {
    if (const int code = refuse_gpu_world(params)) return code;
    const Position at(x, y);
    *all_in = contains_square<2>(*params->src, at.column, at.row);
    sample_clipped(at, *params->src, out);
    return 0;
}
int QX_SubpixelSampleTranslateNoClipBilinearFloat(void* in_data, std::int32_t x, std::int32_t y,
                                                  const double weights[4], const QX_SampPB* params,
                                                  QX_PixelFloat* out) {
    return QX_SubpixelSampleTranslateNoClipBicubicFloat(in_data, x, y, weights, params, out);
}
int QX_SubpixelSpanSampleBilinearFloat(void*, std::int32_t count, std::int32_t x, std::int32_t y,
                                       const QX_SampPB* params, float* alpha_sum, QX_PixelFloat* out) {
    if (count < 1) return 0;
    if (const int code = refuse_gpu_world(params)) return code;
    const Position at(x, y);
    const auto weights = Weights<float>::of(at);
    TapRows<2> rows;
    taps_inside<QX_PixelFloat, 2>(*params->src, at.column, at.row, rows);
    for (std::int32_t i = 0; i < count; ++i) {
        sample(rows, weights, out + i);
        *alpha_sum += out[i].alpha;
        for (auto& row : rows) row += sizeof *out;
    }
    return 0;
}
