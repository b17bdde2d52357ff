// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "lanes/Levels.h"
#include "opticalflow/src/HvVec2.h"

namespace qx {

/// A row of vectors, their components apart.
struct VectorRow {
    float *x, *y;
};

/// Where the pixels of a row lie along a row of the field: left of two neighbours, and how far on towards the other.
struct FlowColumns {
    const std::int32_t* whole;
    const float* fraction;
    std::int32_t count;
};

/// A frame of pixels with four channels, alpha first, of less than 2 GiB; reads beside it find its edge.
struct FlowFrame {
    const std::byte* pixels;
    std::ptrdiff_t row_bytes;
    std::int32_t width, height;
};

/// A row of the picture at time t between two frames.
struct FlowPictureRow {
    FlowFrame first, second;
    VectorRow to_first, to_second;  ///< a vector a pixel
    float t;
    float scale;  ///< picture pixels a pixel of the field
    std::int32_t y, count;
    void* out;
};

struct FlowPicture {
    /// A row of a field with as many vectors as the picture has; beside the row are zero vectors.
    void (*widen)(const HvVec2* row, std::int32_t width, const FlowColumns& columns, const VectorRow& out);
    /// Between two rows. `out` may be one of them.
    void (*mix_rows)(const VectorRow& top, const VectorRow& bottom, float fraction, std::int32_t count,
                     const VectorRow& out);
    using Row = void (*)(const FlowPictureRow& row);
    /// Both frames sampled where the vectors lead, bilinear, and mixed by t. Integers are limited and truncated.
    Row bilinear8, bilinear16, bilinear32;
};
QX_DECLARE_LEVELS(FlowPicture, flow_picture)

}  // namespace qx
