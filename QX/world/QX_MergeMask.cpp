// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_MergeMask.h"

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_DepthSteps.h"
#include "QX/indep/QX_Report.h"
#include "QX/world/QX_UnoRows.h"
#include "QX/world/QX_WorldX.h"

namespace {

using namespace qx;

/// Between 0 and full; these two are told on the mask's own scale.
template <class D, class Mask> typename D::Channel weakened(typename D::Channel alpha, typename Mask::Channel sample) {
    using Channel = typename D::Channel;
    if constexpr (D::number == 32) {
        return alpha * convert_channel<QX_PixelFloat, double, typename Mask::Pixel>(sample);
    } else if constexpr (D::number == Mask::number) {
        return static_cast<Channel>(D::mul(std::int64_t{alpha}, std::int64_t{sample}));
    } else {
        const Channel m = convert_channel<typename D::Pixel, double, typename Mask::Pixel>(sample);
        return static_cast<Channel>(D::mul(std::int64_t{alpha}, std::int64_t{m}));
    }
}

/// Where in a row of a world the samples of a mask's row lie, from one column to before another.
struct Run {
    std::int32_t from, to;
};

template <class Pixel> void clear_alpha(Pixel* row, std::int32_t from, std::int32_t to) {
    for (std::int32_t i = from; i < to; ++i) row[i].alpha = 0;
}

template <class Mask, class Pixel>
void merge_row(const M_LRect& area, const Run& run, const typename Mask::Channel* mask, Pixel* row) {
    clear_alpha(row, area.left, run.from);
    for (std::int32_t i = run.from; i < run.to; ++i, ++mask) {
        if (*mask == 0) {
            row[i].alpha = 0;
        } else if (*mask != Mask::full) {
            row[i].alpha = weakened<DepthOf<Pixel>, Mask>(row[i].alpha, *mask);
        }
    }
    clear_alpha(row, run.to, area.right);
}

/// The mask's usable part in its own coordinates, and where in the world these begin.
struct PlacedMask {
    const QX_UnoBuffer& buffer;
    M_LRect part;
    std::int64_t x, y;

    bool has_row(std::int64_t world_row) const { return world_row >= part.top + y && world_row < part.bottom + y; }
    /// Of the columns of an area; an empty one at its left where there are none.
    Run columns_in(const M_LRect& area) const {
        const std::int64_t from = std::max<std::int64_t>(area.left, part.left + x);
        const std::int64_t to = std::min<std::int64_t>(area.right, part.right + x);
        if (from >= to) return {area.left, area.left};
        return {static_cast<std::int32_t>(from), static_cast<std::int32_t>(to)};
    }
};

template <class Mask, class Pixel>
int merge(const QX_ProgressInfo* progress, const PlacedMask& mask, const M_LRect& area, QX_World* world) {
    const Run columns = mask.columns_in(area);
    return for_uno_rows(progress, static_cast<std::int32_t>(rows_of(area)), [&](std::int32_t i) {
        const std::int32_t y = area.top + i;
        Pixel* const row = row_of<Pixel>(*world, y);
        const bool covered = mask.has_row(y) && columns.from < columns.to;
        if (!covered) return clear_alpha(row, area.left, area.right);
        const auto* samples = samples_at<typename Mask::Channel>(
            mask.buffer, static_cast<std::int32_t>(columns.from - mask.x), static_cast<std::int32_t>(y - mask.y));
        merge_row<Mask>(area, columns, samples, row);
    });
}

/// Gives `body.operator()<Pixel>()` for the class of a world.
template <class Body> int with_class(QX_World* world, const Body& body) {
    if (dynamic_cast<QX_WorldX<QX_Pixel8>*>(world) != nullptr) return body.template operator()<QX_Pixel8>();
    if (dynamic_cast<QX_WorldX<QX_Pixel16>*>(world) != nullptr) return body.template operator()<QX_Pixel16>();
    if (dynamic_cast<QX_WorldX<QX_PixelFloat>*>(world) != nullptr) return body.template operator()<QX_PixelFloat>();
    return report_failed_verification(Place::merge_mask, "Unexpected bitdepth in QXp_MergeMaskAlphaScanIter()");
}

}  // namespace

void QX_MergeMaskAlpha(const QX_ProgressInfo* progress, std::int32_t x, std::int32_t y, const M_LRect* buffer_rect,
                       const QX_UnoBuffer* buffer, const M_LRect* rect, QX_World* world) {
    if (is_gpu_world(world)) throw report_gpu_world(Place::merge_mask);
    if (world == nullptr || world->data == nullptr) throw report_bad_parameter(Place::merge_mask);
    if (!is_live(buffer)) throw report_damaged_mask();
    const M_LRect area = clip_to(*world, rect);
    PlacedMask mask{*buffer, {0, 0, buffer->width, buffer->height}, x, y};
    if (buffer_rect != nullptr) M_SectLRect(*buffer_rect, mask.part, &mask.part);
    throw_if(with_class(world, [&]<class Pixel>() {
        if (buffer->depth == 8) return merge<Depth8, Pixel>(progress, mask, area, world);
        if (buffer->depth == 16) return merge<Depth16, Pixel>(progress, mask, area, world);
        return report_failed_verification(Place::merge_mask, "Unexpected bitdepth in QXp_MergeMaskAlphaScanIter()");
    }));
}
