// SPDX-License-Identifier: Apache-2.0
#include "QX/iterate/QX_Iterate.h"

#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_Slots.h"
#include "QX/iterate/QX_IterateT.h"

namespace qx {

namespace {

/// The source pixel at the same place; without a source the destination pixel itself.
template <class Pixel> struct SamePlace {
    const QX_LayerDef* src;
    auto operator()(std::int32_t y, Pixel* out) const {
        Pixel* in = src != nullptr ? row_of<Pixel>(*src, y) : out;
        return [in](std::int32_t x) { return in + x; };
    }
};

}  // namespace

int iterate_plain(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
                  void* refcon, QX_IteratePixelFunc pix_fn, QX_LayerDef* dst) {
    if (const int code = iterate::check(src, dst, pix_fn != nullptr, Place::iterate)) return code;
    if (const int code = iterate::check_same_depth(src, *dst, Place::iterate)) return code;
    return with_depth(src != nullptr ? *src : *dst, Place::iterate, [&]<class Pixel>() {
        M_LRect rect;
        if (!iterate::clip_to_both(area, src, *dst, &rect)) return 0;
        return iterate::visit_pixels<Pixel>({refcon, pix_fn, *dst}, rect, {in_data, base, final},
                                            SamePlace<Pixel>{src});
    });
}

}  // namespace qx

int QX_Iterate(QX_InData* in_data, std::int32_t base, std::int32_t final, QX_LayerDef* src, const M_LRect* area,
               void* refcon, QX_IteratePixelFunc pix_fn, QX_LayerDef* dst) {
    return qx::guarded(
        [&] { return qx::slot<qx::Slot::Iterate>()(in_data, base, final, src, area, refcon, pix_fn, dst); });
}
