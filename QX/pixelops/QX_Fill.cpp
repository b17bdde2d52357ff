// SPDX-License-Identifier: Apache-2.0
#include "QX/pixelops/QX_Fill.h"

#include <algorithm>

#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/pixelops/QX_PixelRun.h"

namespace {

template <class Pixel> int fill(const QX_LayerDef& world, const M_LRect* rect, const Pixel& pixel) {
    if (world.data == nullptr) return qx::report_bad_parameter(qx::Place::missing_pixels);
    const M_LRect ordered = rect == nullptr ? qx::whole_of(world) : qx::in_order(*rect);
    qx::fill_area(world, qx::clip_to(world, &ordered), pixel);
    return 0;
}

/// The way of all three fills: test, depth, wrapper, colour at that depth, rows.
template <class Colour>
int fill_world(const Colour* colour, const M_LRect* rect, QX_LayerDef* record, const char* unknown_depth) {
    if (record == nullptr) return qx::report_bad_parameter(qx::Place::missing_pixels);
    if (qx::is_gpu_world(record)) return qx::report_gpu_world(qx::Place::fill_gpu);
    return qx::with_depth(
        *record, qx::Place::fill_depth,
        [&]<class Pixel>() { return fill(*record, rect, qx::colour_argument<Pixel>(colour)); }, unknown_depth);
}

/// The edges have been clamped by the caller; a missing buffer is told even when there is nothing to clear.
template <class Pixel> int clear_alpha(const QX_LayerDef& world, const M_LRect& rect) {
    if (world.data == nullptr) return qx::report_bad_parameter(qx::Place::missing_pixels);
    using Channel = QX_ChannelOf<Pixel>;
    qx::for_each_row<Channel>(world, qx::in_order(rect), sizeof(Pixel),
                              [](qx::Loose<Channel>* row, std::size_t columns) {
                                  for (std::size_t i = 0; i < columns; ++i) row[4 * i].value = 0;
                              });
    return 0;
}

template <class Pixel> int clear_alpha_except(const QX_LayerDef& world, const M_LRect& rect) {
    const std::int32_t width = std::max(world.width, 0), height = std::max(world.height, 0);
    M_LRect r = qx::clip_to(world, &rect);
    if (M_EmptyLRect(r)) {
        if (width == 0 && height == 0) return 0;
        r = {0, 0, 0, 0};  // then the last of the eight is the whole world
    } else if (r == qx::whole_of(world)) {
        return 0;
    }
    const M_LRect around[] = {{0, 0, r.left, r.top},
                              {r.left, 0, r.right, r.top},
                              {r.right, 0, width, r.top},
                              {0, r.top, r.left, r.bottom},
                              {r.right, r.top, width, r.bottom},
                              {0, r.bottom, r.left, height},
                              {r.left, r.bottom, r.right, height},
                              {r.right, r.bottom, width, height}};
    for (const M_LRect& part : around) {
        if (const int code = clear_alpha<Pixel>(world, part)) return code;
    }
    return 0;
}

}  // namespace

int QX_Fill(void*, const QX_Pixel8* color, const M_LRect* rect, QX_LayerDef* world) {
    return fill_world(color, rect, world, "Unknown world bitdepth in QX_Fill");
}

int QX_Fill16(void*, const QX_Pixel16* color, const M_LRect* rect, QX_LayerDef* world) {
    return fill_world(color, rect, world, "Unknown world bitdepth in QX_Fill16");
}

int QX_FillFloat(void*, const QX_PixelFloat* color, const M_LRect* rect, QX_LayerDef* world) {
    return fill_world(color, rect, world, "Unknown world bitdepth in QX_FillFloat");
}

int QX_ClearAlphaExceptRect(void*, const M_LRect* rect, QX_LayerDef* world) {
    if (world == nullptr || rect == nullptr) return qx::report_bad_parameter(qx::Place::missing_pixels);
    // Kept: a GPU world is told by its missing pixels alone.
    return qx::with_depth(*world, qx::Place::fill_depth,
                          [&]<class Pixel>() { return clear_alpha_except<Pixel>(*world, *rect); });
}
