// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_WorldCopy.h"

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Progress.h"
#include "QX/pixelops/QX_CopyRows.h"
#include "QX/pixelops/QX_PastCaches.h"
#include "platform/IK_CopyMemory.h"

namespace qx {
namespace {

bool covers(const M_LRect& rect, const QX_LayerDef& world) {
    return rect == whole_of(world) || (M_EmptyLRect(rect) && M_EmptyLRect(whole_of(world)));
}

/// Both worlds whole, tightly packed and alike: one move does it.
bool is_one_move(const CopyFrom& from, const CopyTo& to, int field) {
    const std::int64_t packed = std::int64_t{from.world->width} * (from.depth / 2);
    return covers(from.rect, *from.world) && covers(from.rect, *to.world) && to.x == 0 && to.y == 0 && field == 0 &&
           from.depth == to.depth && from.world->rowbytes == to.world->rowbytes && from.world->rowbytes == packed;
}

void move_whole(const QX_LayerDef& from, const QX_LayerDef& to) {
    if (M_EmptyLRect(whole_of(from))) return;
    IK_CopyMemory(from.data, to.data, rows_of(whole_of(from)) * static_cast<std::size_t>(from.rowbytes));
}

/// One axis of the clipping, wide enough for any edges.
struct Span {
    std::int64_t first, last;
};
Span clip_axis(std::int64_t from, std::int64_t to, std::int64_t move, std::int64_t src_size, std::int64_t dst_size) {
    return {std::max<std::int64_t>(std::max<std::int64_t>(from, 0) + move, 0),
            std::min(std::min(to, src_size) + move, dst_size)};
}

}  // namespace

bool copy_pixels(const CopyFrom& from, const CopyTo& to, const CopyOptions& options) {
    const CopyRow row = copy_row(from.depth, to.depth);
    if (row == nullptr) return false;
    const QX_LayerDef &src = *from.world, &dst = *to.world;
    if (is_one_move(from, to, options.field)) {
        move_whole(src, dst);
        return true;
    }
    const std::int64_t dx = std::int64_t{to.x} - from.rect.left, dy = std::int64_t{to.y} - from.rect.top;
    const Span x = clip_axis(from.rect.left, from.rect.right, dx, src.width, dst.width);
    const Span y = clip_axis(from.rect.top, from.rect.bottom, dy, src.height, dst.height);
    if (x.last <= x.first || y.last <= y.first) return true;
    const auto at = [](std::int64_t n) { return static_cast<std::int32_t>(n); };
    const auto columns = static_cast<std::size_t>(x.last - x.first);
    const std::size_t from_bytes = bytes_of_pixel(from.depth), to_bytes = bytes_of_pixel(to.depth);
    const PastCaches past(columns * (from_bytes + to_bytes) * static_cast<std::size_t>(y.last - y.first));
    for (std::int64_t i = y.first; i < y.last; ++i) {
        if (in_field(options.field, i)) {
            const std::byte* const in = pixel_address(src, at(x.first - dx), at(i - dy), from_bytes);
            std::byte* const out = pixel_address(dst, at(x.first), at(i), to_bytes);
            if (past && from.depth != to.depth) {  // worlds of one depth may overlap
                copy_row_past_caches(row, from.depth, to.depth, in, out, columns, options.dither);
            } else {
                row(in, out, columns, options.dither);
            }
        }
        poll_row(options.progress, at(i - y.first), at(y.last - y.first));
    }
    return true;
}

}  // namespace qx
