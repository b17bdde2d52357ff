// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_SampForms.h"

namespace qx {

namespace {

/// The eight lanes of the wide form, then single samples for what is left.
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

constexpr SampForms kPlain{&sampling::noclip_plain,
                           &sampling::area_plain8,
                           &sampling::area_plain16,
                           &sampling::cubic8_plain,
                           nullptr,
                           nullptr,
                           nullptr};
constexpr SampForms kVector{&sampling::noclip_two_stage,
                            &sampling::area_template8,
                            &sampling::area_template16,
                            &sampling::cubic8_plain,
                            nullptr,
                            nullptr,
                            nullptr};

/// The wide forms; what has none stays as it is.
constexpr SampForms widened(SampForms forms) {
    forms.unclipped8 = &avx2::noclip_two_stage;
    forms.area8 = &avx2::area_template8;
    forms.cubic8 = &avx2::cubic8;
    forms.run8 = &two_stage_run;
    forms.area_run8 = &avx2::area_run;
    forms.nearest_run8 = &avx2::nearest_run;
    return forms;
}
constexpr SampForms kFasterPlain = widened(kPlain), kFaster = widened(kVector);

}  // namespace

constinit const SampForms* samp_forms = &kPlain;

void choose_samp_forms(const Processor& processor) {
    if (processor.faster) {
        samp_forms = processor.vector ? &kFaster : &kFasterPlain;
    } else {
        samp_forms = processor.vector ? &kVector : &kPlain;
    }
}

}  // namespace qx
