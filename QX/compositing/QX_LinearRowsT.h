// SPDX-License-Identifier: Apache-2.0
// The form in linear light of any row: both rows are converted, the plain row of the linear depth runs, and the
// destination is converted back, its alpha as it came out. Eight-bit rows blend at 16 bits. Where the result is one of
// both pixels, nothing is blended; into linear light and back is still no identity.
#pragma once

#include <algorithm>
#include <tuple>
#include <utility>

#include "QX/compositing/QX_LinearSteps.h"
#include "QX/compositing/QX_OwnRowsT.h"
#include "QX/compositing/QX_RowLookup.h"
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

/// Whole stretches of a row that the mode leaves as they are, or makes the source: these pass linear light unblended.
template <class M, class D, bool Masked> class Unblended {
    using Pixel = typename D::Pixel;

public:
    /// @param own  the row is the library's own
    Unblended(const LinearSteps<Pixel>& steps, const QX_LinearBlendingTables& tables,
              const QX_BlendingMode<Pixel>& mode, bool own)
        : steps_(steps), tables_(tables) {
        // By an opacity that is no number, or infinite, a clear source is none.
        skips_clear_ = own && M::skips == Skips::transparent_source && mode.opacity - mode.opacity == 0;
        copies_opaque_ = skips_clear_ && M::full_source_copies && mode.opacity == D::full;
    }

    /// Does the stretch that begins the row, or tells how far to blend. @return pixels, with whether they are done
    std::pair<std::int32_t, bool> operator()(std::int32_t count, std::int32_t most, const Pixel* src, const Pixel* mask,
                                             Pixel* dst) {
        if (!skips_clear_) return {std::min(count, most), false};
        Stretch kind;
        const Pixel* coverage = Masked ? mask : nullptr;
        const std::int32_t length = steps_.stretch(count, most, copies_opaque_, src, coverage, &kind);
        if (kind == Stretch::mixed) return {length, false};
        if (D::number == 8 && !has_map_) steps_.map(tables_, map_);
        has_map_ = true;
        steps_.through(length, tables_, map_, kind, kind == Stretch::clear ? dst : src, dst);
        return {length, true};
    }

private:
    const LinearSteps<Pixel>& steps_;
    const QX_LinearBlendingTables& tables_;
    bool skips_clear_, copies_opaque_, has_map_ = false;
    CodeMap map_;  ///< made for the first stretch
};

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
    Unblended<M, D, Masked> unblended(steps, *tables, *mode, row == own_row<LinearPixel>(Masked, M::number));
    for (std::int32_t done = 0, run = 0; done < count; done += run) {
        bool is_done;
        std::tie(run, is_done) = unblended(count - done, kRun, src + done, Masked ? mask + done : nullptr, dst + done);
        if (is_done) continue;
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
