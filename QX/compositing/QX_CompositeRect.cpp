// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_CompositeRect.h"

#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_ColourTables.h"
#include "QX/indep/QX_Progress.h"
#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_WorldDepth.h"

namespace {

using namespace qx;

/// What every form is called with, but for the value that nobody reads.
struct Call {
    const QX_ProgressInfo* progress;
    const M_LRect* rect;
    std::uint8_t opacity;
    const QX_LayerDef* src;
    std::int32_t x, y, field;
    const QX_LayerDef* dst;
};

using UnderRow = void(std::int32_t count, const QX_Pixel8* src, unsigned opacity, QX_Pixel8* dst);

/// The products of a factor with all channels.
const std::uint8_t* products(unsigned factor) { return QXp_G_fcm_table + factor * 256; }

void straight_row(std::int32_t count, const QX_Pixel8* src, unsigned opacity, QX_Pixel8* dst) {
    constexpr unsigned kSquare = 255 * 255;
    for (std::int32_t i = 0; i < count; ++i) {
        const QX_Pixel8 s = src[i], d = dst[i];
        if (d.alpha == 255) continue;
        if (d.alpha == 0) {
            dst[i] = {products(opacity)[s.alpha], s.red, s.green, s.blue};
            continue;
        }
        // 255 * w is the largest number, and below 2^32.
        const unsigned k = (255u - d.alpha) * s.alpha * opacity, kept = d.alpha * kSquare, w = kept + k;
        const auto mixed = [=](unsigned cs, unsigned cd) {
            return static_cast<std::uint8_t>((cs * k + cd * kept) / w);
        };
        dst[i] = {static_cast<std::uint8_t>(w / kSquare), mixed(s.red, d.red), mixed(s.green, d.green),
                  mixed(s.blue, d.blue)};
    }
}

QX_Pixel8 multiplied(const QX_Pixel8& p, unsigned factor) {
    const std::uint8_t* row = products(factor);
    return {row[p.alpha], row[p.red], row[p.green], row[p.blue]};
}

void premul_row(std::int32_t count, const QX_Pixel8* src, unsigned opacity, QX_Pixel8* dst) {
    const auto sum = [](std::uint8_t a, std::uint8_t b) { return static_cast<std::uint8_t>(a + b); };
    for (std::int32_t i = 0; i < count; ++i) {
        const QX_Pixel8 d = dst[i];
        if (d.alpha == 255) continue;
        const QX_Pixel8 s = opacity == 255 ? src[i] : multiplied(src[i], opacity);
        const QX_Pixel8 seen = d.alpha == 0 ? s : multiplied(s, 255u - d.alpha);
        dst[i] = d.alpha == 0 ? seen
                              : QX_Pixel8{sum(d.alpha, seen.alpha), sum(d.red, seen.red), sum(d.green, seen.green),
                                          sum(d.blue, seen.blue)};
    }
}

/// The rectangle lies in the source, its image in the destination, and its sides are ones that this family counts.
bool fits(const M_LRect& r, const Call& call) {
    constexpr std::int64_t kLongest = 32767;
    const std::int64_t columns = std::int64_t{r.right} - r.left, rows = std::int64_t{r.bottom} - r.top;
    return columns >= 0 && columns <= kLongest && rows >= 0 && rows <= kLongest &&                     //
           r.left >= 0 && r.top >= 0 && r.right <= call.src->width && r.bottom <= call.src->height &&  //
           call.x >= 0 && call.y >= 0 && call.x + columns <= call.dst->width && call.y + rows <= call.dst->height;
}

int run_rows(const Call& call, const M_LRect& r, UnderRow* row) {
    const std::int32_t total = r.bottom - r.top;
    for (std::int32_t i = 0; i < total; ++i) {
        const std::int32_t left = total - 1 - i, y = call.y + i;
        if (left % 32 == 0) {
            if (const int code = ask_progress(call.progress, total - left, total)) return code;
        }
        if (call.field != 0 && !in_field(call.field == 1 ? 1 : 2, y)) continue;
        row(r.right - r.left, pixel_at<const QX_Pixel8>(*call.src, r.left, r.top + i), call.opacity,
            pixel_at<QX_Pixel8>(*call.dst, call.x, y));
    }
    return 0;
}

int composite(const Call& call, UnderRow* row) {
    constexpr Place here = Place::composite_rect;
    if (is_gpu_world(call.src) || is_gpu_world(call.dst)) return report_gpu_world(here);
    for (const QX_LayerDef* world : {call.src, call.dst}) {
        if (world == nullptr || world->data == nullptr || QXp_WorldDepth(world) != 8) return report_bad_parameter(here);
    }
    if (call.opacity == 0) return 0;
    const M_LRect r = call.rect != nullptr ? *call.rect : whole_of(*call.src);
    return fits(r, call) ? run_rows(call, r, row) : report_bad_parameter(here);
}

}  // namespace

int QX_CompositeRectBest_Straight(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                  const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                  std::int32_t, QX_LayerDef* dst) {
    return composite({progress, rect, opacity, src, x, y, field, dst}, &straight_row);
}

int QX_CompositeRectDraft_Straight(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                   const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                   std::int32_t reserved, QX_LayerDef* dst) {
    return QX_CompositeRectBest_Straight(progress, rect, opacity, src, x, y, field, reserved, dst);
}

int QX_CompositeRectBest_Premul(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                std::int32_t reserved, QX_LayerDef* dst) {
    return QX_CompositeRectDraft_Premul(progress, rect, opacity, src, x, y, field, reserved, dst);
}

int QX_CompositeRectDraft_Premul(const QX_ProgressInfo* progress, const M_LRect* rect, std::uint8_t opacity,
                                 const QX_LayerDef* src, std::int32_t x, std::int32_t y, std::int32_t field,
                                 std::int32_t, QX_LayerDef* dst) {
    return composite({progress, rect, opacity, src, x, y, field, dst}, &premul_row);
}
