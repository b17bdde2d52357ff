// SPDX-License-Identifier: Apache-2.0
// Nearest pixels through a matrix, between any two depths.
#include "QX/geometry/QX_CopyBits.h"
#include "QX/geometry/QX_CopyPixel.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Progress.h"
#include "QX/sampling/QX_Nearest.h"
#include "QX/world/QX_StackWorld.h"

namespace {

constexpr int kPlace = 51;

template <class From, class To>
void draw_row(const qx::Nearest<From>& src, qx::FixedPoint at, qx::FixedPoint step, std::int32_t count, To* dst) {
    for (std::int32_t x = 0; x < count; ++x, at = at + step) {
        dst[x] = src.inside(at) ? qx::copied_pixel<To>(src.at(at)) : To{};
    }
}

template <class From, class To>
int draw(const QX_ProgressInfo* progress, const QX_WorldX<From>& src, const qx::RowGeometry& rows, int field,
         QX_WorldX<To>& dst) {
    const qx::Nearest<From> source(src);
    qx::FixedPoint at = rows.start + qx::FixedPoint{qx::kFixedHalf, qx::kFixedHalf};
    for (std::int32_t y = 0; y < dst.height; ++y, at = at + rows.dy) {
        const bool skipped = field != 0 && (y & 1) == (field & 1);
        if (!skipped) draw_row(source, at, rows.dx, dst.width, dst.Row(y));
        if ((y & 63) != 0) continue;
        if (const int code = qx::ask_progress(progress, y, dst.height)) return code;
    }
    return 0;
}

}  // namespace

int QX_CopyBits3_LO_Straight(const QX_ProgressInfo* progress, QX_LayerDef* src, const M_Matrix3* matrix, int, int param,
                             QX_LayerDef* dst) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) return qx::report_gpu_world(kPlace);
    if (dst == nullptr) return qx::report_failed_verification(kPlace, "dst_world is NULL");
    if (src == nullptr || src->data == nullptr || dst->data == nullptr || matrix == nullptr) {
        return qx::report_bad_parameter(kPlace);
    }
    constexpr const char* unknown_depth = "Unknown world bitdepth in##CONDITIONNAME";
    return qx::with_stack_world(src, kPlace, unknown_depth, [&](auto& from) {
        return qx::with_stack_world(dst, kPlace, unknown_depth, [&](auto& to) {
            M_Matrix3 inverse;
            if (!M_InverseMatrixQuiet(*matrix, &inverse)) return 0;
            return draw(progress, from, qx::row_geometry(inverse, 0, 0), param, to);
        });
    });
}
