// SPDX-License-Identifier: Apache-2.0
// Nearest pixels through a matrix, between any two depths.
#include "QX/geometry/QX_CopyBits.h"
#include "QX/geometry/QX_CopyPixel.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Progress.h"
#include "QX/indep/QX_WithDepth.h"
#include "QX/sampling/QX_Nearest.h"

namespace {

template <class From, class To>
void draw_row(const qx::Nearest<From>& src, qx::FixedPoint at, qx::FixedPoint step, std::int32_t count, To* dst) {
    for (std::int32_t x = 0; x < count; ++x, at = at + step) {
        dst[x] = src.inside(at) ? qx::copied_pixel<To>(src.at(at)) : To{};
    }
}

template <class From, class To>
int draw(const QX_ProgressInfo* progress, const QX_LayerDef& src, const qx::RowGeometry& rows, int field,
         const QX_LayerDef& dst) {
    const qx::Nearest<From> source(src);
    qx::FixedPoint at = rows.start + qx::FixedPoint{qx::kFixedHalf, qx::kFixedHalf};
    for (std::int32_t y = 0; y < dst.height; ++y, at = at + rows.dy) {
        if (qx::in_field(field, y)) draw_row(source, at, rows.dx, dst.width, qx::row_of<To>(dst, y));
        if ((y & 63) != 0) continue;
        if (const int code = qx::ask_progress(progress, y, dst.height)) return code;
    }
    return 0;
}

}  // namespace

int QX_CopyBits3_LO_Straight(const QX_ProgressInfo* progress, QX_LayerDef* src, const M_Matrix3* matrix, int, int param,
                             QX_LayerDef* dst) {
    if (qx::is_gpu_world(src) || qx::is_gpu_world(dst)) return qx::report_gpu_world(qx::Place::copy_bits_matrix);
    if (dst == nullptr) return qx::report_failed_verification(qx::Place::copy_bits_matrix, "dst_world is NULL");
    if (src == nullptr || src->data == nullptr || dst->data == nullptr || matrix == nullptr) {
        return qx::report_bad_parameter(qx::Place::copy_bits_matrix);
    }
    constexpr auto place = qx::Place::copy_bits_matrix;
    return qx::with_depth(*src, place, [&]<class From>() {
        return qx::with_depth(*dst, place, [&]<class To>() {
            M_Matrix3 inverse;
            if (!M_InverseMatrixQuiet(*matrix, &inverse)) return 0;
            return draw<From, To>(progress, *src, qx::row_geometry(inverse, 0, 0), param, *dst);
        });
    });
}
