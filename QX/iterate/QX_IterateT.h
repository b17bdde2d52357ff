// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Records.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_RoutineTypes.h"
#include "QX/indep/QX_WithDepth.h"

/// What the plain routines of the family share: the clip, the poll after each row, and the one loop over pixels.
namespace qx::iterate {

/// True when an area lies wholly past one edge of a world, so that a call does nothing, not even a poll.
/// Kept: an area that just touches the right or bottom edge passes, and may still poll for its rows.
inline bool misses(const M_LRect& area, const QX_LayerDef& world) {
    return area.right < 1 || area.left > world.width || area.bottom < 1 || area.top > world.height;
}

/// The part of the destination that an area (null: all of it) asks for.
/// @return false when the call has nothing to do
inline bool clip_to_destination(const M_LRect* area, const QX_LayerDef& dst, M_LRect* rect) {
    *rect = clip_to(dst, area);
    return area == nullptr || !misses(*area, dst);
}

/// The same where source and destination lie corner on corner: the source limits too.
inline bool clip_to_both(const M_LRect* area, const QX_LayerDef* src, const QX_LayerDef& dst, M_LRect* rect) {
    if (!clip_to_destination(area, dst, rect)) return false;
    if (src == nullptr) return true;
    if (area != nullptr && (area->left > src->width || area->top > src->height)) return false;
    rect->right = std::min(rect->right, src->width);
    rect->bottom = std::min(rect->bottom, src->height);
    return true;
}

/// Who hears of a finished row.
struct RowPoll {
    QX_InData* in_data;
    std::int32_t base, final;

    int operator()(std::int32_t rows_done) const {
        if (final == 0 || in_data == nullptr || in_data->progress == nullptr) return 0;
        return in_data->progress(in_data->effect_ref, static_cast<std::int32_t>(std::int64_t{base} + rows_done), final);
    }
};

/// Runs `row(y)` over the rectangle's rows, with the poll after each. A row's code, or an interruption, ends it.
/// Kept: any other answer of a poll is replaced by the next one, so only the last row's becomes the result.
template <class Row> int for_rows(const M_LRect& rect, const RowPoll& poll, const Row& row) {
    int answer = 0;
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        if (const int code = row(y)) return code;
        answer = poll(y - rect.top + 1);
        if (answer == kQX_Interrupted) return answer;
    }
    return answer;
}

/// The pixel function of a call, and where it writes.
struct Visit {
    void* refcon;
    QX_IteratePixelFunc pix_fn;
    const QX_LayerDef& dst;
};

/// The one loop over pixels. `source(y, out)` opens a row of the source beside the destination's, and what it
/// gives is asked for the pixel at x.
template <class Pixel, class Source>
int visit_pixels(const Visit& visit, const M_LRect& rect, const RowPoll& poll, const Source& source) {
    return for_rows(rect, poll, [&](std::int32_t y) {
        Pixel* out = row_of<Pixel>(visit.dst, y);
        const auto in = source(y, out);
        for (std::int32_t x = rect.left; x < rect.right; ++x) {
            if (const int code = visit.pix_fn(visit.refcon, x, y, in(x), out + x)) return code;
        }
        return 0;
    });
}

/// The checks that all forms with a pixel function begin with. `complete` is false when an argument that only
/// some forms have is missing. @return 0, or 3 after a report
inline int check(const QX_LayerDef* src, const QX_LayerDef* dst, bool complete, Place place) {
    if (is_gpu_world(src) || is_gpu_world(dst)) return report_gpu_world(place);
    const bool no_pixels = (src != nullptr && src->data == nullptr) || dst == nullptr || dst->data == nullptr;
    return no_pixels || !complete ? report_bad_parameter(place) : 0;
}

inline int check_same_depth(const QX_LayerDef* src, const QX_LayerDef& dst, Place place) {
    if (src == nullptr || QXp_WorldDepth(src) == QXp_WorldDepth(&dst)) return 0;
    return report_failed_verification(place, "QX_Iterate requires source and dst worlds to be same depth");
}

}  // namespace qx::iterate
