// SPDX-License-Identifier: Apache-2.0
// Rows of a layer that stands still while the shutter is open.
#pragma once

#include "QX/geometry/QX_AreaRow.h"
#include "QX/geometry/QX_Footprint.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_Nearest.h"
#include "QX/sampling/QX_Runs.h"
#include "QX/sampling/QX_SamplerSet.h"

namespace qx {

/// True when 16-bit columns and rows do not wrap up to the end of a row.
constexpr bool indices_fit(FixedPoint from, FixedPoint step, std::int32_t count) {
    const auto fits = [&](std::int32_t at, std::int32_t by) {
        const std::int64_t last = at + std::int64_t{by} * (count - 1);
        return last <= std::int64_t{32767} * kFixedOne && last >= std::int64_t{-32768} * kFixedOne;
    };
    return fits(from.x, step.x) && fits(from.y, step.y);
}

/// Samples of a run.
struct RunSpan {
    std::int32_t from, to;
};

/// The samples of a run of `count` whose coordinate is not negative and below `limit`; no position wraps.
constexpr RunSpan stretch_inside(std::int64_t at, std::int32_t by, std::int32_t count, std::int64_t limit) {
    std::int64_t p = at, step = by;
    if (step < 0) p = limit - 1 - p, step = -step;  // mirrored
    if (step == 0) return {0, p >= 0 && p < limit ? count : 0};
    const auto first_not_below = [&](std::int64_t bound) {
        const std::int64_t steps = bound <= p ? 0 : (bound - p + step - 1) / step;
        return static_cast<std::int32_t>(std::min<std::int64_t>(steps, count));
    };
    return {first_not_below(0), first_not_below(limit)};
}

/// Draft quality: the nearest pixels.
template <class Pixel> class StillDraftRows {
public:
    /// @param run  takes positions with half a pixel added
    StillDraftRows(const QX_LayerDef& src, const RowGeometry& geometry, RunSampler<Pixel> run)
        : world_(src),
          source_(src),
          run_(run),
          at_(geometry.start + FixedPoint{kFixedHalf, kFixedHalf}),
          dx_(geometry.dx),
          dy_(geometry.dy) {}

    /// Samples one row. @return the sum of its alphas
    /// A layer without a turn that grows repeats rows: what `out` still holds is not sampled again.
    QX_AlphaSumOf<Pixel> sample(std::int32_t count, Pixel* out) {
        const std::int32_t row = Nearest<Pixel>::index(at_.y);
        if (dx_.y != 0 || dy_.x != 0 || !sampled_ || row != row_) sum_ = sample_anew(count, out);
        sampled_ = true;
        row_ = row;
        return sum_;
    }
    void advance() { at_ = at_ + dy_; }

    /// Looks at some pixels of a turned row. Alphas of floats may add up to nothing.
    bool surely_shows(std::int32_t count) const {
        constexpr std::int32_t kLooks = 16;
        if (std::is_same_v<Pixel, QX_PixelFloat> || dx_.y == 0 || !indices_fit(at_, dx_, count)) return false;
        const RunSpan inside = stretch_inside(count);
        for (std::int32_t k = 0; k < kLooks; ++k) {
            const std::int32_t i = inside.from + (inside.to - inside.from) / kLooks * k;
            if (i < inside.to && source_.at(at_ + dx_ * i).alpha != 0) return true;
        }
        return false;
    }

private:
    RunSpan stretch_inside(std::int32_t count) const {
        const RunSpan columns = qx::stretch_inside(at_.x, dx_.x, count, std::int64_t{source_.width()} * kFixedOne);
        const RunSpan rows = qx::stretch_inside(at_.y, dx_.y, count, std::int64_t{source_.height()} * kFixedOne);
        return {std::max(columns.from, rows.from), std::min(columns.to, rows.to)};
    }

    QX_AlphaSumOf<Pixel> sample_anew(std::int32_t count, Pixel* out) const {
        QX_AlphaSumOf<Pixel> sum{};
        if (!indices_fit(at_, dx_, count)) {
            for (std::int32_t i = 0; i < count; ++i) {
                out[i] = source_.read(at_ + dx_ * i);
                sum += out[i].alpha;
            }
            return sum;
        }
        const auto [from, to] = stretch_inside(count);
        if (from >= to) {
            std::fill_n(out, count, Pixel{});
            return sum;
        }
        std::fill_n(out, from, Pixel{});
        std::fill(out + to, out + count, Pixel{});
        return copy(from, to, sum, out);
    }

    /// Pixels inside the world. Without a step in y they lie in one row.
    QX_AlphaSumOf<Pixel> copy(std::int32_t from, std::int32_t to, QX_AlphaSumOf<Pixel> sum, Pixel* out) const {
        if (dx_.y == 0) {
            const FixedPoint p = at_ + dx_ * from;
            const Pixel* row = source_.row(p.y);
            const std::int64_t step = dx_.x;
            std::int64_t x = p.x;
            std::int32_t i = from;
            if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
                i += nearest_run(to - from, x, dx_.x, row, source_.width(), &sum, out + from);
                x += step * (i - from);
            }
            for (; i < to; ++i, x += step) {
                out[i] = row[x >> 16];
                sum += out[i].alpha;
            }
        } else {
            run_(to - from, at_ + dx_ * from, dx_, world_, &sum, out + from);
        }
        return sum;
    }

    const QX_LayerDef& world_;
    Nearest<Pixel> source_;
    RunSampler<Pixel> run_;
    FixedPoint at_, dx_, dy_;
    bool sampled_ = false;
    std::int32_t row_ = 0;
    QX_AlphaSumOf<Pixel> sum_{};
};

/// The samplers of a quality: area samples where pixels are averaged, else point samples.
template <class Pixel> class StillQualityRows {
public:
    StillQualityRows(const QX_SamplerSet<Pixel>& samplers, const QX_SampPB& block, bool averages,
                     const RowGeometry& geometry)
        : samplers_(samplers),
          block_(block),
          run_(run_form<Pixel>(samplers.unclipped)),
          clear_outside_(is_clear_outside<Pixel>(samplers.plus)),
          area_row_(samplers.area, block, geometry.dx),
          averages_(averages),
          at_(geometry.start),
          dx_(geometry.dx),
          dy_(geometry.dy) {}

    QX_AlphaSumOf<Pixel> sample(std::int32_t count, Pixel* out) const {
        if (averages_) return area_row_.sample(at_, count, out);
        QX_AlphaSumOf<Pixel> sum{};
        const auto tested = [&](std::int32_t i) {
            bool all_in = false;
            const FixedPoint p = at_ + dx_ * i;
            samplers_.plus(nullptr, p.x, p.y, &block_, &all_in, out + i);
            sum += out[i].alpha;
            return all_in;
        };
        const bool fits = run_fits(at_, dx_, count);
        const RunSpan near = fits && clear_outside_ ? stretch_near(count) : RunSpan{0, count};
        std::fill(out, out + near.from, Pixel{});
        std::fill(out + near.to, out + count, Pixel{});
        const auto tested_near = [&](std::int32_t i) { return tested(near.from + i); };
        bracket(near.to - near.from, fits, tested_near, [&](std::int32_t first, std::int32_t last) {
            const std::int32_t from = near.from + first, to = near.from + last;
            if (dx_ == FixedPoint{kFixedOne, 0}) {
                const FixedPoint p = at_ + dx_ * from;
                samplers_.span(nullptr, to - from, p.x, p.y, &block_, &sum, out + from);
            } else if (run_ != nullptr) {
                run_(to - from, at_ + dx_ * from, dx_, *block_.src, &sum, out + from);
            } else {
                take(samplers_.unclipped, from, to, &sum, out);
            }
        });
        return sum;
    }
    void advance() { at_ = at_ + dy_; }

private:
    /// Samples of which some tap may lie inside: taps lie up to two pixels from a position.
    RunSpan stretch_near(std::int32_t count) const {
        constexpr std::int64_t margin = 2 * std::int64_t{kFixedOne};
        const auto near = [&](std::int32_t at, std::int32_t by, std::int32_t size) {
            return stretch_inside(at + margin, by, count, std::int64_t{size} * kFixedOne + 2 * margin);
        };
        const RunSpan x = near(at_.x, dx_.x, block_.src->width), y = near(at_.y, dx_.y, block_.src->height);
        const std::int32_t from = std::max(x.from, y.from);
        return {from, std::max(from, std::min(x.to, y.to))};
    }

    void take(QX_PointSampler<Pixel> sampler, std::int32_t from, std::int32_t to, QX_AlphaSumOf<Pixel>* sum,
              Pixel* out) const {
        FixedPoint p = at_ + dx_ * from;
        for (std::int32_t i = from; i < to; ++i, p = p + dx_) {
            sampler(nullptr, p.x, p.y, &block_, out + i);
            *sum += out[i].alpha;
        }
    }

    QX_SamplerSet<Pixel> samplers_;
    QX_SampPB block_;
    RunSampler<Pixel> run_;
    bool clear_outside_;
    AreaRow<Pixel> area_row_;
    bool averages_;
    FixedPoint at_, dx_, dy_;
};

}  // namespace qx
