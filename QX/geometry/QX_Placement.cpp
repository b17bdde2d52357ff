// SPDX-License-Identifier: Apache-2.0
#include "QX/geometry/QX_Placement.h"

#include <cmath>

#include "platform/GK_Motion.h"

namespace qx {

namespace {

constexpr double kSameMatrix = 1e-12;

M_LRect grown(M_LRect rect) {
    M_InsetLRect(&rect, -1, -1);
    return rect;
}

/// Bounding box of a rectangle's image on whole pixels. Coordinates are limited first: those of a matrix that throws
/// its layer far away would pass the numbers.
M_LRect mapped(const M_Matrix3& matrix, const M_LRect& rect) {
    M_FloatRect image{static_cast<double>(rect.left), static_cast<double>(rect.top), static_cast<double>(rect.right),
                      static_cast<double>(rect.bottom)};
    M_TransformFloatRect(matrix, &image);
    const auto whole = [](double v) { return M_RoundDouble(limited_coordinate(v)); };
    return {whole(image.left), whole(image.top), whole(image.right), whole(image.bottom)};
}

/// What one matrix reaches of `clipped`: the part of the source that it needs, there and back, with a pixel to spare
/// on the way. Without an inverse the whole source takes the way there.
M_LRect reached(const Pose& pose, bool invertible, const M_LRect& clipped, const M_LRect& src_bounds) {
    M_LRect part = grown(src_bounds);
    if (invertible && !M_SectLRect(grown(mapped(pose.to_src, clipped)), part, &part)) return {};
    M_LRect rect;
    M_SectLRect(grown(mapped(pose.to_dst, part)), clipped, &rect);
    return rect;
}

/// The hull of the layer's ways from its first to its last place.
M_LRect swept(const Motion& motion, const M_LRect& clipped, const M_LRect& src_bounds) {
    M_LRect rect;
    M_UnionLRect(mapped(motion.start.to_dst, grown(src_bounds)), mapped(motion.end.to_dst, grown(src_bounds)), &rect);
    M_SectLRect(grown(rect), clipped, &rect);
    return rect;
}

M_FloatPoint normalised(M_FloatPoint v) {
    const double length = std::sqrt(v.x * v.x + v.y * v.y);
    return length == 0 ? v : M_FloatPoint{v.x / length, v.y / length};
}

bool same_direction(M_FloatPoint a, M_FloatPoint b) {
    const M_FloatPoint u = normalised(a), v = normalised(b);
    return M_NearlyEqual(u.x, v.x) && M_NearlyEqual(u.y, v.y);
}

}  // namespace

bool pose_of(const M_Matrix3& given, bool src2dst, Pose* pose) {
    (src2dst ? pose->to_dst : pose->to_src) = given;
    return M_InverseMatrixQuiet(given, src2dst ? &pose->to_src : &pose->to_dst);
}

Motion::Motion(const MatrixList& matrices) {
    const M_Matrix3 &first = matrices.at[0], &last = matrices.at[matrices.count - 1];
    starts = pose_of(first, matrices.src2dst, &start);
    end = start;
    ends = starts;
    moving = matrices.count > 1 && !M_EqualMatrixWithinEpsilon(first, last, kSameMatrix);
    if (moving) ends = pose_of(last, matrices.src2dst, &end);
}

M_LRect affected_rect(const MatrixList& matrices, const Motion& motion, const M_LRect& clipped,
                      const M_LRect& src_bounds) {
    if (M_EmptyLRect(clipped)) return {};
    M_LRect rect = reached(motion.start, motion.starts, clipped, src_bounds);
    if (!motion.moving) return rect;
    const auto join = [&](const M_LRect& other) { M_UnionLRect(rect, other, &rect); };
    if (motion.ends) join(reached(motion.end, true, clipped, src_bounds));
    for (int i = 1; i < matrices.count - 1; ++i) {
        Pose inner{};
        if (pose_of(matrices.at[i], matrices.src2dst, &inner)) join(reached(inner, true, clipped, src_bounds));
    }
    join(swept(motion, clipped, src_bounds));
    return rect;
}

bool moves_unevenly(const MatrixList& matrices, const Motion& motion) {
    const RowGeometry a = row_geometry(motion.start.to_src, 0, 0), b = row_geometry(motion.end.to_src, 0, 0);
    return !same_direction(a.exact_dx, b.exact_dx) || !same_direction(a.exact_dy, b.exact_dy) ||
           GK::IsNonLinearSubframeMotion(matrices.at, matrices.count);
}

}  // namespace qx
