// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Records.h"
#include "QX/indep/QX_Wrapping.h"

namespace qx {

/// Address of pixel (x, y) of `pixel_bytes` bytes, as an address alone: it need not lie in the world, and the world
/// need not have pixels.
inline std::byte* pixel_address(const QX_LayerDef& world, std::int32_t x, std::int32_t y, std::size_t pixel_bytes) {
    const std::ptrdiff_t distance =
        std::ptrdiff_t{y} * world.rowbytes + std::ptrdiff_t{x} * static_cast<std::ptrdiff_t>(pixel_bytes);
    const auto address = reinterpret_cast<std::uintptr_t>(world.data) + static_cast<std::uintptr_t>(distance);
    return reinterpret_cast<std::byte*>(address);  // NOLINT(performance-no-int-to-ptr): see above
}

/// The same as a pixel; a row is told by its first one.
template <class Pixel> Pixel* pixel_at(const QX_LayerDef& world, std::int32_t x, std::int32_t y) {
    return reinterpret_cast<Pixel*>(pixel_address(world, x, y, sizeof(Pixel)));
}
template <class Pixel> Pixel* row_of(const QX_LayerDef& world, std::int32_t y) { return pixel_at<Pixel>(world, 0, y); }

/// Bytes of a pixel of a depth.
constexpr std::size_t bytes_of_pixel(int depth) { return static_cast<std::size_t>(depth) / 2; }

/// True for rows of the destination that belong to a field: 1 is the even rows, 2 the odd ones, all others every row.
constexpr bool in_field(int field, std::int64_t row) { return (field != 1 && field != 2) || (row & 1) == field - 1; }

constexpr M_LRect whole_of(const QX_LayerDef& world) { return {0, 0, world.width, world.height}; }

/// The part of a rectangle that lies in the world; null is the whole world. The result may be empty.
constexpr M_LRect clip_to(const QX_LayerDef& world, const M_LRect* rect) {
    if (rect == nullptr) return whole_of(world);
    return {std::max(rect->left, 0), std::max(rect->top, 0), std::min(rect->right, world.width),
            std::min(rect->bottom, world.height)};
}

/// The same pixels, whichever way round the edges were given.
constexpr M_LRect in_order(const M_LRect& r) {
    return {std::min(r.left, r.right), std::min(r.top, r.bottom), std::max(r.left, r.right), std::max(r.top, r.bottom)};
}

/// Columns and rows of an area as counts; none when the edges are the wrong way round.
constexpr std::size_t columns_of(const M_LRect& r) {
    return r.right > r.left ? static_cast<std::size_t>(std::int64_t{r.right} - r.left) : 0;
}
constexpr std::size_t rows_of(const M_LRect& r) {
    return r.bottom > r.top ? static_cast<std::size_t>(std::int64_t{r.bottom} - r.top) : 0;
}

/// A number in memory at any address, and of any origin.
template <class T> struct [[gnu::packed, gnu::may_alias]] Loose { T value; };

/// Calls body(row, columns) for the first pixel of each row of an area that lies in the world.
template <class T, class Body>
void for_each_row(const QX_LayerDef& world, const M_LRect& area, std::size_t pixel_bytes, const Body& body) {
    for (std::int32_t y = area.top; y < area.bottom; ++y) {
        body(reinterpret_cast<Loose<T>*>(pixel_address(world, area.left, y, pixel_bytes)), columns_of(area));
    }
}

}  // namespace qx
