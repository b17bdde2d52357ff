// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/sampling/QX_RowGeometry.h"
#include "QX/sampling/QX_SampPB.h"

namespace qx {

/// What one pixel of the destination covers of the source, in 16.16.
struct Footprint {
    std::int32_t x_radius, y_radius, area;
    FixedPoint translation;  ///< of the source-to-destination matrix
    bool degenerate;         ///< the matrix has a scale of nothing

    explicit Footprint(const M_Matrix3& to_dst);
    /// Above half a pixel the pixels are averaged.
    bool averages() const { return x_radius > kFixedHalf || y_radius > kFixedHalf; }
    void write_to(QX_SampPB* block) const;
};

/// True when a matrix only moves by whole pixels: then no sample is taken. In draft quality every translation does.
bool is_pixel_shift(const M_Matrix3& to_dst, FixedPoint translation, int quality);

}  // namespace qx
