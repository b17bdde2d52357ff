// SPDX-License-Identifier: Apache-2.0
#include "QX/sampling/QX_SampForms.h"

namespace qx {

namespace {

constexpr SampForms kPlain{&sampling::noclip_plain, &sampling::area_plain8, &sampling::area_plain16,
                           &sampling::cubic8_plain, &plain::run_kernels,    nullptr};
constexpr SampForms kVector{&sampling::noclip_two_stage, &sampling::area_template8, &sampling::area_template16,
                            &sampling::cubic8_plain,     &plain::run_kernels,       nullptr};

/// The wide forms; what has none stays as it is.
constexpr SampForms widened(SampForms forms, const RunKernels& runs) {
    forms.unclipped8 = &avx2::noclip_two_stage;
    forms.area8 = &avx2::area_template8;
    forms.cubic8 = &avx2::cubic8;
    forms.runs = &runs;
    forms.nearest_run8 = &avx2::nearest_run;
    return forms;
}
constexpr SampForms kFasterPlain = widened(kPlain, avx2::run_kernels), kFaster = widened(kVector, avx2::run_kernels),
                    kWidest = widened(kVector, avx512::run_kernels);

}  // namespace

constinit const SampForms* samp_forms = &kPlain;

void choose_samp_forms(const Processor& processor) {
    if (processor.faster) {
        samp_forms = processor.widest ? &kWidest : processor.vector ? &kFaster : &kFasterPlain;
    } else {
        samp_forms = processor.vector ? &kVector : &kPlain;
    }
}

}  // namespace qx
