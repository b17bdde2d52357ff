// SPDX-License-Identifier: Apache-2.0
#include "QX/compositing/QX_Blend.h"

#include <algorithm>

#include "QX/compositing/QX_BlendKernels.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Fixed.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/pixelops/QX_MoveRows.h"

namespace {

using namespace qx;

const BlendKernels* kernels = &plain::blend_kernels;

void copy_world(const QX_LayerDef& src, const QX_LayerDef& dst, std::size_t row_bytes, std::size_t rows) {
    move_rows({src.data, src.rowbytes}, {dst.data, dst.rowbytes}, row_bytes, rows);
}

template <class Pixel>
void blend_rows(bool straight, const QX_LayerDef& src1, const QX_LayerDef& src2, std::int32_t ratio,
                const QX_LayerDef& dst) {
    const M_LRect area = whole_of(dst);
    if (ratio <= 0) return copy_world(src1, dst, columns_of(area) * sizeof(Pixel), rows_of(area));
    if (ratio >= kFixedOne) return copy_world(src2, dst, columns_of(area) * sizeof(Pixel), rows_of(area));
    const BlendRows<Pixel>& rows = kernels->of<Pixel>();
    const auto row = straight ? rows.straight : rows.premul;
    for (std::int32_t y = 0; y < area.bottom; ++y) {
        row(area.right, row_of<const Pixel>(src1, y), row_of<const Pixel>(src2, y), ratio, row_of<Pixel>(dst, y));
    }
}

int blend(bool straight, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio, const QX_LayerDef* dst) {
    if (is_gpu_world(src1) || is_gpu_world(src2)) return report_gpu_world(Place::blend);
    if (src1 == nullptr || src2 == nullptr || dst == nullptr) return report_bad_parameter(Place::blend);
    const int depth = QXp_WorldDepth(dst);
    // Kept: the words name one form in both.
    constexpr const char* differ = "QX_BlendPremul requires src1, src2 and dst worlds to be same depth";
    if (const int code = must_have_depth(depth, QXp_WorldDepth(src1), "src1", Place::blend, differ)) return code;
    if (const int code = must_have_depth(depth, QXp_WorldDepth(src2), "src2", Place::blend, differ)) return code;
    return with_depth(*dst, Place::blend, [&]<class Pixel>() {
        if (src1->data == nullptr || src2->data == nullptr || dst->data == nullptr) {
            return report_bad_parameter(Place::blend);
        }
        const auto unlike_dst = [&](const QX_LayerDef* src) {
            return src->width != dst->width || src->height != dst->height;
        };
        if (unlike_dst(src1) || unlike_dst(src2)) {
            return report_failed_verification(Place::blend,
                                              "QX_Blend requires width and height of all worlds to be the same");
        }
        blend_rows<Pixel>(straight, *src1, *src2, ratio, *dst);
        return 0;
    });
}

}  // namespace

void qx::choose_blend_kernels(Level level) { kernels = &blend_kernels_of(level); }

int QX_Blend(void* effect_ref, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio, QX_LayerDef* dst) {
    return QX_Blend_Straight(effect_ref, src1, src2, ratio, dst);
}

int QX_Blend_Straight(void*, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio, QX_LayerDef* dst) {
    return blend(true, src1, src2, ratio, dst);
}

int QX_Blend_Premul(void*, const QX_LayerDef* src1, const QX_LayerDef* src2, std::int32_t ratio, QX_LayerDef* dst) {
    return blend(false, src1, src2, ratio, dst);
}
