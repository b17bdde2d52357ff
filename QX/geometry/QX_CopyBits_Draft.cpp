// SPDX-License-Identifier: Apache-2.0
// Nearest pixels between any two depths: blocks and rows in one move where nothing changes, else by repeating.
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "QX/geometry/QX_CopyBits.h"
#include "QX/geometry/QX_CopyBitsPlan.h"
#include "QX/geometry/QX_CopyPixel.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_PixelContainer.h"
#include "QX/indep/QX_Slots.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/pixelops/QX_CopyRows.h"
#include "QX/pixelops/QX_MoveRows.h"
#include "platform/IK_CopyMemory.h"

namespace {

using qx::copy_bits::Side;

constexpr qx::copy_bits::OverflowTexts kOverflow{qx::Place::copy_bits_draft,
                                                 "QXp_CopyBitsUniversal x overflow detected",
                                                 "QXp_CopyBitsUniversal y overflow detected"};

template <class From, class To>
void scale_row(const From* src, std::int32_t src_columns, To* dst, std::int32_t dst_columns) {
    if (src_columns == dst_columns) {
        if constexpr (!std::is_same_v<From, To> && !std::is_same_v<From, QX_PixelFloat>) {  // one rule for all copies
            const qx::CopyRow row = qx::copy_row(qx::DepthOf<From>::number, qx::DepthOf<To>::number);
            row(reinterpret_cast<const std::byte*>(src), reinterpret_cast<std::byte*>(dst),
                static_cast<std::size_t>(src_columns), false);
            return;
        }
        for (std::int32_t x = 0; x < src_columns; ++x) dst[x] = qx::copied_pixel<To>(src[x]);
        return;
    }
    qx::copy_bits::Repeats repeats(src_columns, dst_columns);
    for (std::int32_t x = 0; x < src_columns; ++x) {
        std::int32_t n = repeats.next();
        if (n == 0) continue;
        const To pixel = qx::copied_pixel<To>(src[x]);
        for (; n > 0; --n) *dst++ = pixel;
    }
}

template <class From, class To>
void scale(const QX_LayerDef& src, const Side& s, const QX_LayerDef& dst, const Side& d) {
    const std::int32_t from = s.rect.right - s.rect.left, to = d.rect.right - d.rect.left;
    for_repeated_rows(s, d, [&](std::int32_t sy, std::int32_t dy, std::int32_t n) {
        To* const first = qx::pixel_at<To>(dst, d.rect.left, dy);
        scale_row(qx::pixel_at<const From>(src, s.rect.left, sy), from, first, to);
        for (std::int32_t i = 1; i < n; ++i) {
            std::memcpy(qx::pixel_at<To>(dst, d.rect.left, dy + i), first, static_cast<std::size_t>(to) * sizeof(To));
        }
    });
}

/// Equal depths and rectangles that lie alike: nothing but memory moves.
/// @return true when that was all
bool moved(const QX_LayerDef& src, const Side& s, const QX_LayerDef& dst, const Side& d, std::size_t pixel_bytes) {
    if (s.rect != d.rect) return false;
    const M_LRect in_dst = qx::clip_to(dst, &d.rect), area = qx::clip_to(src, &in_dst);
    const std::size_t bytes = qx::columns_of(area) * pixel_bytes, rows = qx::rows_of(area);
    const qx::ByteRows from{qx::pixel_address(src, area.left, area.top, pixel_bytes), src.rowbytes};
    const qx::ByteRows to{qx::pixel_address(dst, area.left, area.top, pixel_bytes), dst.rowbytes};
    const bool whole = s.whole() && d.whole();
    if (!whole || !qx::move_block(from, to, bytes, rows)) qx::move_rows(from, to, bytes, rows);
    return true;
}

template <class SrcPixel, class DstPixel>
int QXp_CopyBitsUniversal(const QX_LayerDef& src, const QX_LayerDef& dst, const M_LRect* src_rect,
                          const M_LRect* dst_rect) {
    Side s(src_rect, src.width, src.height), d(dst_rect, dst.width, dst.height);
    if (s.nothing() || d.nothing()) return 0;
    if constexpr (std::is_same_v<SrcPixel, DstPixel>) {
        if (moved(src, s, dst, d, sizeof(SrcPixel))) return 0;
    }
    if (const int code = cut_sides(s, d, kOverflow)) return code;
    if (!M_EmptyLRect(s.rect) && !M_EmptyLRect(d.rect)) scale<SrcPixel, DstPixel>(src, s, dst, d);
    return 0;
}

/// World objects that are alike to the byte.
bool alike_in_memory(const QX_LayerDef& a, const QX_LayerDef& b) {
    if (a.rowbytes != b.rowbytes || a.width != b.width || a.height != b.height || a.width <= 0 || a.height <= 0) {
        return false;
    }
    if (a.world == nullptr || b.world == nullptr || qx::depth_of(a.world) != qx::depth_of(b.world)) return false;
    return std::size_t(a.rowbytes) == qx::columns_of(qx::whole_of(a)) * qx::bytes_of_pixel(qx::depth_of(a.world));
}

}  // namespace

int QX_CopyBits_Draft_Static(const QX_ProgressInfo*, QX_LayerDef* src, QX_LayerDef* dst, const M_LRect* src_rect,
                             const M_LRect* dst_rect) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) return qx::report_gpu_world(qx::Place::copy_bits_draft);
    if (src == nullptr || src->data == nullptr || dst == nullptr || dst->data == nullptr) {
        return qx::report_bad_parameter(qx::Place::copy_bits_draft);
    }
    if (src_rect == nullptr && dst_rect == nullptr && alike_in_memory(*src, *dst)) {
        IK_CopyMemory(src->data, dst->data,
                      static_cast<std::size_t>(src->height) * static_cast<std::size_t>(src->rowbytes));
        return 0;
    }
    constexpr auto place = qx::Place::copy_bits_draft;
    return qx::with_depth(*src, place, [&]<class From>() {
        return qx::with_depth(
            *dst, place, [&]<class To>() { return QXp_CopyBitsUniversal<From, To>(*src, *dst, src_rect, dst_rect); });
    });
}

int QX_CopyBits_Draft(const QX_ProgressInfo* progress, QX_LayerDef* src, QX_LayerDef* dst, const M_LRect* src_rect,
                      const M_LRect* dst_rect) {
    return qx::guarded([&] { return qx::slot<qx::Slot::CopyBitsDraft>()(progress, src, dst, src_rect, dst_rect); });
}
