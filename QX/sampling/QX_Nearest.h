// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>

#include "QX/indep/QX_Records.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "QX/sampling/QX_RowGeometry.h"

namespace qx {

/// Reads the pixel whose square a position lies in. Positions have half a pixel added already: truncation then
/// rounds. Kept: columns and rows are numbers of 16 bits, and wrap there.
template <class Pixel> class Nearest {
public:
    explicit Nearest(const QX_LayerDef& world)
        : data_(static_cast<const std::byte*>(world.data)),
          rowbytes_(world.rowbytes),
          width_(std::max(world.width, 0)),
          height_(std::max(world.height, 0)) {}

    bool inside(FixedPoint p) const {
        const std::int16_t column = index(p.x), row = index(p.y);
        return column >= 0 && column < width_ && row >= 0 && row < height_;
    }
    /// A position inside the world.
    const Pixel& at(FixedPoint p) const { return row(p.y)[index(p.x)]; }
    /// Transparent black outside.
    Pixel read(FixedPoint p) const { return inside(p) ? at(p) : Pixel{}; }

    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

    static std::int16_t index(std::int32_t fixed) { return static_cast<std::int16_t>(fixed >> 16); }
    /// First pixel of the row at a height inside the world.
    const Pixel* row(std::int32_t y) const {
        return reinterpret_cast<const Pixel*>(data_ + std::ptrdiff_t{index(y)} * rowbytes_);
    }

private:
    const std::byte* data_;
    std::ptrdiff_t rowbytes_;
    std::int32_t width_, height_;
};

}  // namespace qx
