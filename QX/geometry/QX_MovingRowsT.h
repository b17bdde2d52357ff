// SPDX-License-Identifier: Apache-2.0
// Rows of a layer that moves in a straight line: the samples of a pixel lie at equal distances from its place at the
// shutter's opening towards that at its closing, which is not sampled itself.
#pragma once

#include "QX/geometry/QX_PathSum.h"
#include "QX/geometry/QX_StillRowsT.h"
#include "QX/geometry/QX_TransformWorld.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Slots.h"

namespace qx {

/// The start and the end of the pixels' paths.
struct LinearPaths {
    FixedPoint from, to;
    FixedPoint from_dx, to_dx, from_dy, to_dy;
    std::int32_t steps;

    LinearPaths(const RowGeometry& start, const RowGeometry& end, std::int32_t motion_steps)
        : from(start.start),
          to(end.start),
          from_dx(start.dx),
          to_dx(end.dx),
          from_dy(start.dy),
          to_dy(end.dy),
          steps(motion_steps) {}

    FixedPoint begin(std::int32_t i) const { return from + from_dx * i; }
    /// The way from one sample of pixel `i` to the next, truncated towards zero.
    FixedPoint step(std::int32_t i) const {
        const FixedPoint a = begin(i), b = to + to_dx * i;
        return {wrapping_difference(b.x, a.x) / steps, wrapping_difference(b.y, a.y) / steps};
    }
    void advance() {
        from = from + from_dy;
        to = to + to_dy;
    }
};

template <class Pixel> class MovingDraftRows {
public:
    MovingDraftRows(const QX_LayerDef& src, const LinearPaths& paths) : source_(src), paths_(paths) {
        constexpr FixedPoint half{kFixedHalf, kFixedHalf};
        paths_.from = paths_.from + half;
        paths_.to = paths_.to + half;
    }

    QX_AlphaSumOf<Pixel> sample(std::int32_t count, Pixel* out) const {
        const bool row_fits =
            indices_fit(paths_.from, paths_.from_dx, count) && indices_fit(paths_.to, paths_.to_dx, count);
        QX_AlphaSumOf<Pixel> sum{};
        for (std::int32_t i = 0; i < count; ++i) {
            out[i] = mean_of_path(paths_.begin(i), paths_.step(i), row_fits);
            sum += out[i].alpha;
        }
        return sum;
    }
    void advance() { paths_.advance(); }

private:
    Pixel mean_of_path(FixedPoint p, FixedPoint step, bool row_fits) const {
        PathSum<Pixel> sum;
        const auto tested = [&](std::int32_t k) {
            const FixedPoint q = p + step * k;
            if (!source_.inside(q)) return false;
            sum.add(source_.at(q));
            return true;
        };
        bracket(paths_.steps, row_fits && run_fits(p, step, paths_.steps), tested,
                [&](std::int32_t k, std::int32_t end) {
                    for (; k < end; ++k) sum.add(source_.at(p + step * k));
                });
        return sum.mean(paths_.steps);
    }

    Nearest<Pixel> source_;
    LinearPaths paths_;
};

template <class Pixel> class MovingQualityRows {
public:
    MovingQualityRows(const QX_SamplerSet<Pixel>& samplers, const QX_SampPB& block, bool averages,
                      const LinearPaths& paths)
        : samplers_(samplers),
          block_(block),
          run_(run_form<Pixel>(samplers.unclipped)),
          averages_(averages),
          paths_(paths) {}

    QX_AlphaSumOf<Pixel> sample(std::int32_t count, Pixel* out) const {
        double weights[kQX_MaxSubFrames][4];
        const bool translates = keeps_fractions();
        if (translates && count > 0) compute_weights(weights);
        QX_AlphaSumOf<Pixel> sum{};
        for (std::int32_t i = 0; i < count; ++i) {
            const FixedPoint p = paths_.begin(i), step = paths_.step(i);
            out[i] = averages_ ? mean_of_areas(p, step) : mean_of_path(p, step, translates ? weights : nullptr);
            sum += out[i].alpha;
        }
        return sum;
    }
    void advance() { paths_.advance(); }

private:
    /// A row that steps by whole pixels has one set of fractions: the weights are computed once.
    bool keeps_fractions() const {
        constexpr FixedPoint one{kFixedOne, 0};
        return !averages_ && paths_.from_dx == one && paths_.to_dx == one;
    }

    void compute_weights(double (*weights)[4]) const {
        const auto weight = slot<Slot::SampleWeight>();
        const FixedPoint p = paths_.begin(0), step = paths_.step(0);
        for (std::int32_t k = 0; k < paths_.steps; ++k) {
            const FixedPoint q = p + step * k;
            weight(q.x & 0xFFFF, q.y & 0xFFFF, weights[k]);
        }
    }

    Pixel mean_of_areas(FixedPoint p, FixedPoint step) const {
        PathSum<Pixel> sum;
        for (std::int32_t k = 0; k < paths_.steps; ++k, p = p + step) {
            Pixel sampled;
            samplers_.area(nullptr, p.x, p.y, &block_, &sampled);
            sum.add(sampled);
        }
        return sum.mean(paths_.steps);
    }

    Pixel mean_of_path(FixedPoint p, FixedPoint step, const double (*weights)[4]) const {
        PathSum<Pixel> sum;
        Pixel sampled;
        const auto tested = [&](std::int32_t k) {
            const FixedPoint q = p + step * k;
            bool all_in = false;
            samplers_.plus(nullptr, q.x, q.y, &block_, &all_in, &sampled);
            sum.add(sampled);
            return all_in;
        };
        bracket(paths_.steps, run_fits(p, step, paths_.steps), tested, [&](std::int32_t k, std::int32_t end) {
            if (weights == nullptr && run_ != nullptr) {
                Pixel run[kQX_MaxSubFrames];
                QX_AlphaSumOf<Pixel> unused{};
                run_(end - k, p + step * k, step, *block_.src, &unused, run);
                for (std::int32_t i = 0; i < end - k; ++i) sum.add(run[i]);
                return;
            }
            for (; k < end; ++k) {
                const FixedPoint q = p + step * k;
                if (weights != nullptr) {
                    samplers_.translate(nullptr, q.x, q.y, weights[k], &block_, &sampled);
                } else {
                    samplers_.unclipped(nullptr, q.x, q.y, &block_, &sampled);
                }
                sum.add(sampled);
            }
        });
        return sum.mean(paths_.steps);
    }

    QX_SamplerSet<Pixel> samplers_;
    QX_SampPB block_;
    RunSampler<Pixel> run_;
    bool averages_;
    LinearPaths paths_;
};

}  // namespace qx
