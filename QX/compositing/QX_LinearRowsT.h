// SPDX-License-Identifier: Apache-2.0
// The form in linear light of any row: both rows are converted, the plain row of the linear depth runs, and the
// destination is converted back, its alpha as it came out. Eight-bit rows blend at 16 bits.
#pragma once

#include <algorithm>

#include "QX/compositing/QX_LinearLookup.h"
#include "QX/compositing/QX_OwnRowsT.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_SlotsOf.h"

namespace qx {

/// The mode at the depth of the linear rows.
template <class D>
QX_BlendingMode<typename LinearDepth<D>::Pixel> linear_mode(const QX_BlendingMode<typename D::Pixel>& m) {
    QX_BlendingMode<typename LinearDepth<D>::Pixel> linear;
    linear.xfer = m.xfer;
    linear.rand_seed = m.rand_seed;
    linear.opacity = widen_alpha<D>(m.opacity);
    linear.rgb_only = m.rgb_only;
    return linear;
}

/// Rows go through in runs that fit the stack: no row routine looks beyond one pixel, and nothing is allocated.
template <class M, class D, bool Masked, class Pixel = typename D::Pixel>
int linear_row(std::int32_t count, const QX_BlendingMode<Pixel>* mode, const QX_LinearBlendingTables* tables,
               const Pixel* src, const Pixel* mask, Pixel* dst) {
    using L = LinearDepth<D>;
    using LinearPixel = typename L::Pixel;
    constexpr int kRun = 128;
    if (tables == nullptr)
        return report_failed_verification(Place::linear_row, "Invalid tables for linearized blending");
    QX_RowFunc<LinearPixel> row = nullptr;
    if (const int code = lookup_slot<LinearPixel>(Masked, false)(M::number, &row)) return code;

    const LinearSteps<Pixel>& steps = linear_steps_now<Pixel>();
    auto linear = linear_mode<D>(*mode);
    LinearPixel source[kRun], coverage[Masked ? kRun : 1], target[kRun];
    for (std::int32_t done = 0; done < count; done += kRun) {
        const std::int32_t run = std::min<std::int32_t>(kRun, count - done);
        steps.to(run, *tables, src + done, source);
        steps.to(run, *tables, dst + done, target);
        if constexpr (Masked) {
            for (int i = 0; i < run; ++i) coverage[i] = {widen_alpha<D>(mask[done + i].alpha), 0, 0, 0};
        }
        const LinearPixel* coverage_row = Masked ? coverage : nullptr;
        if constexpr (std::is_same_v<M, modes::Dissolve> && L::number != 32) {
            linear.rand_seed = static_cast<std::int32_t>(plain::dissolve_run<L, Masked>(
                run, linear, static_cast<std::uint32_t>(linear.rand_seed), source, coverage_row, target));
        } else if (const int code = row(run, &linear, nullptr, source, coverage_row, target)) {
            return code;
        }
        steps.from(run, *tables, target, dst + done);
    }
    return kQX_NoError;
}

}  // namespace qx
