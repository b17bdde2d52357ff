// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/geometry/QX_Bracket.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_AreaRuns.h"

namespace qx {

/// Rows of samples of an area sampler, as a run where that has one.
template <class Pixel> class AreaRow {
public:
    AreaRow(QX_PointSampler<Pixel> sampler, const QX_SampPB& block, FixedPoint step)
        : sampler_(sampler), block_(block), step_(step), run_(area_run_form<Pixel>(sampler, block, step)) {}

    /// @return the sum of the alphas
    QX_AlphaSumOf<Pixel> sample(FixedPoint at, std::int32_t count, Pixel* out) const {
        QX_AlphaSumOf<Pixel> sum{};
        const auto take = [&](std::int32_t from, std::int32_t to) {
            FixedPoint p = at + step_ * from;
            for (std::int32_t i = from; i < to; ++i, p = p + step_) {
                sampler_(nullptr, p.x, p.y, &block_, out + i);
                sum += out[i].alpha;
            }
        };
        if (run_ == nullptr || !area_run_holds<Pixel>(block_, at, step_.x)) {
            take(0, count);
            return sum;
        }
        const auto tested = [&](std::int32_t i) {
            take(i, i + 1);
            return box_is_inside(block_, (at + step_ * i).x);
        };
        bracket(count, run_fits(at, step_, count), tested, [&](std::int32_t from, std::int32_t to) {
            run_(to - from, at + step_ * from, step_.x, block_, &sum, out + from);
        });
        return sum;
    }

private:
    QX_PointSampler<Pixel> sampler_;
    QX_SampPB block_;
    FixedPoint step_;
    AreaRun<Pixel> run_;
};

}  // namespace qx
