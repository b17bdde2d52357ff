// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_Runs.h"

#include "QX/sampling/QX_SampForms.h"

namespace qx {

namespace {
bool has_vectors = false;

std::uint32_t two_stage_run(std::int32_t count, FixedPoint at, FixedPoint step, const QX_LayerDef& world,
                            QX_Pixel8* out) {
    const std::int32_t wide = count / kRunLanes * kRunLanes;
    std::uint32_t sum = avx2::two_stage_run(wide, at, step, world, out);
    QX_SampPB block{};
    block.src = &world;
    FixedPoint p = at + step * wide;
    for (std::int32_t i = wide; i < count; ++i, p = p + step) {
        avx2::noclip_two_stage(nullptr, p.x, p.y, &block, out + i);
        sum += out[i].alpha;
    }
    return sum;
}

}  // namespace

void choose_run_forms(bool vectors) { has_vectors = vectors; }

template <> RunSampler<QX_Pixel8> run_form(QX_PointSampler<QX_Pixel8> unclipped) {
    return has_vectors && unclipped == &avx2::noclip_two_stage ? &two_stage_run : nullptr;
}
template <> RunSampler<QX_Pixel16> run_form(QX_PointSampler<QX_Pixel16>) { return nullptr; }
template <> RunSampler<QX_PixelFloat> run_form(QX_PointSampler<QX_PixelFloat>) { return nullptr; }

}  // namespace qx
