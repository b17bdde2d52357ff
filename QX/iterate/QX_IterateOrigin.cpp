// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_Iterate.h"
#include "QX/iterate/QX_IterateT.h"

namespace qx {

namespace {

struct NoSource {
    template <class Pixel> auto operator()(std::int32_t, Pixel*) const {
        return [](std::int32_t) -> void* { return nullptr; };
    }
};

/// The rectangle lies in the source wherever it is visited.
template <class Pixel> struct Covered {
    const QX_LayerDef& src;
    M_LPoint origin;
    auto operator()(std::int32_t y, Pixel*) const {
        Pixel* in = row_of<Pixel>(src, y - origin.y);
        return [in, left = origin.x](std::int32_t x) { return in + (x - left); };
    }
};

/// Beside the source lies a transparent pixel. Coordinates are 64-bit: the origin may be any.
template <class Pixel> struct Surrounded {
    const QX_LayerDef& src;
    M_LPoint origin;
    Pixel* outside;
    auto operator()(std::int32_t y, Pixel*) const {
        const std::int64_t row = std::int64_t{y} - origin.y;
        const bool in_rows = row >= 0 && row < src.height;
        Pixel* in = in_rows ? row_of<Pixel>(src, static_cast<std::int32_t>(row)) : nullptr;
        return [in, left = std::int64_t{origin.x}, width = src.width, none = outside](std::int32_t x) {
            const std::int64_t column = x - left;
            return in != nullptr && column >= 0 && column < width ? in + column : none;
        };
    }
};

/// Where a source ends that lies at `origin`; one of no size ends where it begins.
std::int64_t end_of(std::int32_t origin, std::int32_t size) { return std::int64_t{origin} + std::max(size, 0); }

/// Narrows the rectangle to where the source lies. May leave it empty or inverted.
void clip_to_placed(const QX_LayerDef& src, const M_LPoint& origin, M_LRect* rect) {
    rect->left = std::max(rect->left, origin.x);
    rect->top = std::max(rect->top, origin.y);
    rect->right = static_cast<std::int32_t>(std::min<std::int64_t>(rect->right, end_of(origin.x, src.width)));
    rect->bottom = static_cast<std::int32_t>(std::min<std::int64_t>(rect->bottom, end_of(origin.y, src.height)));
}

struct Arguments {
    iterate::RowPoll poll;
    QX_LayerDef* src;
    const M_LRect* area;
    const M_LPoint* origin;
    void* refcon;
    QX_IteratePixelFunc pix_fn;
    QX_LayerDef* dst;
};

template <class Pixel, bool Clip> int visit_placed(const Arguments& call, const M_LRect& rect) {
    const iterate::Visit visit{call.refcon, call.pix_fn, *call.dst};
    if (call.src == nullptr) return iterate::visit_pixels<Pixel>(visit, rect, call.poll, NoSource{});
    if constexpr (Clip) {
        return iterate::visit_pixels<Pixel>(visit, rect, call.poll, Covered<Pixel>{*call.src, *call.origin});
    } else {
        Pixel transparent{};
        return iterate::visit_pixels<Pixel>(visit, rect, call.poll,
                                            Surrounded<Pixel>{*call.src, *call.origin, &transparent});
    }
}

template <bool Clip> int iterate_placed(const Arguments& call) {
    const bool complete = call.pix_fn != nullptr && call.origin != nullptr;
    if (const int code = iterate::check(call.src, call.dst, complete, Place::iterate_origin)) return code;
    if (const int code = iterate::check_same_depth(call.src, *call.dst, Place::iterate_origin)) return code;
    return with_depth(call.src != nullptr ? *call.src : *call.dst, Place::iterate_origin, [&]<class Pixel>() {
        M_LRect rect;
        if (!iterate::clip_to_destination(call.area, *call.dst, &rect)) return 0;
        if (Clip && call.src != nullptr) clip_to_placed(*call.src, *call.origin, &rect);
        return M_EmptyLRect(rect) ? 0 : visit_placed<Pixel, Clip>(call, rect);
    });
}

}  // namespace

int iterate_origin_plain(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src,
                         const M_LRect* area, const M_LPoint* origin, void* refcon, QX_IteratePixelFunc pix_fn,
                         QX_LayerDef* dst) {
    return iterate_placed<true>({{in_data, base, final}, src, area, origin, refcon, pix_fn, dst});
}

int iterate_origin_no_clip_plain(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src,
                                 const M_LRect* area, const M_LPoint* origin, void* refcon, QX_IteratePixelFunc pix_fn,
                                 QX_LayerDef* dst) {
    return iterate_placed<false>({{in_data, base, final}, src, area, origin, refcon, pix_fn, dst});
}

}  // namespace qx

int QX_IterateOrigin(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                     const M_LPoint* origin, void* refcon, QX_IteratePixelFunc pix_fn, QX_LayerDef* dst) {
    return qx::guarded([&] {
        return qx::slot<qx::Slot::IterateOrigin>()(in_data, base, final, src, area, origin, refcon, pix_fn, dst);
    });
}
