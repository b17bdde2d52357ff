// SPDX-License-Identifier: Apache-2.0
// Nearest pixels through a matrix, between any two depths.
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/indep/QX_StackWorld.h"
#include "QX/sampling/QX_CopyBits.h"
#include "QX/sampling/QX_CopyPixel.h"
#include "QX/sampling/QX_RowGeometry.h"

namespace {

constexpr int kPlace = 51;

/// The pixel that a position rounds to.
qx::FixedPoint nearest(qx::FixedPoint at) {
    const qx::FixedPoint rounded = at + qx::FixedPoint{qx::kFixedHalf, qx::kFixedHalf};
    return {rounded.x >> 16, rounded.y >> 16};
}

bool inside(const QX_LayerDef& world, qx::FixedPoint p) {
    return p.x >= 0 && p.x < world.width && p.y >= 0 && p.y < world.height;
}

template <class From, class To>
void draw_row(const QX_WorldX<From>& src, qx::FixedPoint at, qx::FixedPoint step, std::int32_t count, To* dst) {
    for (std::int32_t x = 0; x < count; ++x, at = at + step) {
        const qx::FixedPoint p = nearest(at);
        dst[x] = inside(src, p) ? qx::copied_pixel<To>(src.Row(p.y)[p.x]) : To{};
    }
}

/// A progress function, where there is one, is asked alone.
int ask(const QX_ProgressInfo* progress, std::int32_t row, std::int32_t rows) {
    if (progress == nullptr || (row & 63) != 0) return 0;
    if (progress->progress_func != nullptr) return progress->progress_func(progress->refcon, row, rows);
    return progress->abort_func != nullptr ? progress->abort_func(progress->refcon) : 0;
}

template <class From, class To>
int draw(const QX_ProgressInfo* progress, const QX_WorldX<From>& src, const qx::RowGeometry& rows, int field,
         QX_WorldX<To>& dst) {
    qx::FixedPoint at = rows.start;
    for (std::int32_t y = 0; y < dst.height; ++y, at = at + rows.dy) {
        const bool skipped = field != 0 && (y & 1) == (field & 1);
        if (!skipped) draw_row(src, at, rows.dx, dst.width, dst.Row(y));
        if (const int code = ask(progress, y, dst.height)) return code;
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
