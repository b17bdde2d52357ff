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

std::int32_t nearest_run(std::int32_t count, std::int64_t x, std::int32_t step, const QX_Pixel8* row,
                         std::int32_t width, std::uint32_t* sum, QX_Pixel8* out) {
    if (!has_vectors || step < 0 || step > kFixedOne) return 0;
    return avx2::nearest_run(count, x, step, row, width, sum, out);
}

template <> RunSampler<QX_Pixel8> run_form(QX_PointSampler<QX_Pixel8> unclipped) {
    return has_vectors && unclipped == &avx2::noclip_two_stage ? &two_stage_run : nullptr;
}
template <> RunSampler<QX_Pixel16> run_form(QX_PointSampler<QX_Pixel16>) { return nullptr; }
template <> RunSampler<QX_PixelFloat> run_form(QX_PointSampler<QX_PixelFloat>) { return nullptr; }

}  // namespace qx
