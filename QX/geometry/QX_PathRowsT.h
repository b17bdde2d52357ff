// SPDX-License-Identifier: Apache-2.0
// Rows of a layer that moves unevenly: every matrix but the last is a sub-frame with positions, steps and footprint of
// its own, kept in the scratch block's buffers of motion blur.
#pragma once

#include <new>

#include "QX/geometry/QX_MovingRowsT.h"
#include "QX/geometry/QX_Placement.h"

namespace qx {

/// The buffers of motion blur, an entry for each sub-frame.
struct SubFrames {
    FixedPoint* at;  ///< of the current row's first pixel
    FixedPoint *dx, *dy;
    M_FloatPoint *exact_dx, *exact_dy;
    M_Matrix3* to_src;
    QX_SampPB* block;
    std::int32_t count;

    /// A matrix without an inverse leaves the first one's data in its place, and counts.
    SubFrames(const QX_ScratchBlock& scratch, const MatrixList& matrices, const Pose& first,
              const QX_SampPB& first_block, std::int32_t left, std::int32_t top)
        : at(buffer<FixedPoint>(scratch, 0)),
          dx(buffer<FixedPoint>(scratch, 1)),
          dy(buffer<FixedPoint>(scratch, 2)),
          exact_dx(buffer<M_FloatPoint>(scratch, 3)),
          exact_dy(buffer<M_FloatPoint>(scratch, 4)),
          to_src(buffer<M_Matrix3>(scratch, 5)),
          block(buffer<QX_SampPB>(scratch, 6)),
          count(matrices.count - 1) {
        for (std::int32_t k = 0; k < count; ++k) {
            Pose pose{};
            const bool own = k > 0 && pose_of(matrices.at[k], matrices.src2dst, &pose);
            QX_SampPB footprint = first_block;
            if (own) Footprint(pose.to_dst).write_to(&footprint);
            set(k, own ? pose.to_src : first.to_src, footprint, left, top);
        }
    }

    bool average() const {
        for (std::int32_t k = 0; k < count; ++k) {
            if (block[k].x_radius > kFixedHalf || block[k].y_radius > kFixedHalf) return true;
        }
        return false;
    }
    bool fit(std::int32_t pixels) const {
        for (std::int32_t k = 0; k < count; ++k) {
            if (!run_fits(at[k], dx[k], pixels)) return false;
        }
        return true;
    }
    void advance() {
        for (std::int32_t k = 0; k < count; ++k) at[k] = at[k] + dy[k];
    }

private:
    template <class T> static T* buffer(const QX_ScratchBlock& scratch, int number) {
        return static_cast<T*>(scratch.motion[number]);
    }
    void set(std::int32_t k, const M_Matrix3& matrix, const QX_SampPB& footprint, std::int32_t left, std::int32_t top) {
        const RowGeometry rows = row_geometry(matrix, left, top);
        new (at + k) FixedPoint(rows.start);
        new (dx + k) FixedPoint(rows.dx);
        new (dy + k) FixedPoint(rows.dy);
        new (exact_dx + k) M_FloatPoint(rows.exact_dx);
        new (exact_dy + k) M_FloatPoint(rows.exact_dy);
        new (to_src + k) M_Matrix3(matrix);
        new (block + k) QX_SampPB(footprint);
    }
};

template <class Pixel> class PathRows {
public:
    PathRows(const QX_SamplerSet<Pixel>& samplers, const SubFrames& frames)
        : samplers_(samplers), frames_(frames), averages_(frames.average()) {}

    QX_AlphaSumOf<Pixel> sample(std::int32_t count, Pixel* out) const {
        if (averages_) {
            for (std::int32_t i = 0; i < count; ++i) out[i] = mean(i, samplers_.area);
        } else {
            bracket(
                count, frames_.fit(count), [&](std::int32_t i) { return tested(i, out + i); },
                [&](std::int32_t i, std::int32_t end) {
                    for (; i < end; ++i) out[i] = mean(i, samplers_.unclipped);
                });
        }
        QX_AlphaSumOf<Pixel> sum{};
        for (std::int32_t i = 0; i < count; ++i) sum += out[i].alpha;
        return sum;
    }
    void advance() { frames_.advance(); }

private:
    /// The mean over the sub-frames, from the last to the first, of take(k, position, &pixel).
    template <class Take> Pixel mean_of(std::int32_t i, const Take& take) const {
        PathSum<Pixel> sum;
        Pixel sampled;
        for (std::int32_t k = frames_.count - 1; k >= 0; --k) {
            take(k, frames_.at[k] + frames_.dx[k] * i, &sampled);
            sum.add(sampled);
        }
        return sum.mean(frames_.count);
    }
    Pixel mean(std::int32_t i, QX_PointSampler<Pixel> sampler) const {
        return mean_of(i, [&](std::int32_t k, FixedPoint p, Pixel* sampled) {
            sampler(nullptr, p.x, p.y, &frames_.block[k], sampled);
        });
    }
    /// @return true when all sub-frames of the pixel lie inside
    bool tested(std::int32_t i, Pixel* out) const {
        bool all = true;
        *out = mean_of(i, [&](std::int32_t k, FixedPoint p, Pixel* sampled) {
            bool all_in = false;
            samplers_.plus(nullptr, p.x, p.y, &frames_.block[k], &all_in, sampled);
            all = all && all_in;
        });
        return all;
    }

    QX_SamplerSet<Pixel> samplers_;
    SubFrames frames_;
    bool averages_;
};

}  // namespace qx
