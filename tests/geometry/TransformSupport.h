// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/support/Test.h"

namespace qx::test {

inline M_Matrix3 moved(double x, double y) { return {{{1, 0, 0}, {0, 1, 0}, {x, y, 1}}}; }
inline M_Matrix3 scaled(double x, double y) { return {{{x, 0, 0}, {0, y, 0}, {0, 0, 1}}}; }
inline M_Matrix3 turned(double degrees) {
    const double a = degrees * 0.017453292519943295, c = std::cos(a), s = std::sin(a);
    return {{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}};
}
inline M_Matrix3 operator*(const M_Matrix3& a, const M_Matrix3& b) { return M_MultiplyMatrix(a, b); }
/// Turned and scaled about the middle of a world of this size, then moved.
inline M_Matrix3 placed(double size, double degrees, double scale, double x, double y) {
    return moved(-size / 2, -size / 2) * turned(degrees) * scaled(scale, scale) * moved(size / 2 + x, size / 2 + y);
}

/// The arguments of a transform, with what is usual as default.
struct TransformCall {
    std::vector<M_Matrix3> matrices{kM_IdentityMatrix};
    int quality = 1, field = 0;
    bool src2dst = true;
    QX_CompositeModePlus mode = mode_of(xfer_over);
    const QX_LinearBlendingTables* tables = nullptr;
    const QX_MaskWorld* mask = nullptr;
    const QX_ProgressInfo* progress = nullptr;
    const M_LRect* rect = nullptr;

    int operator()(QX_LayerDef* src, QX_LayerDef* dst) const {
        return QX_TransformWorld(progress, quality, 0, field, src, &mode, tables, mask, matrices.data(),
                                 static_cast<int>(matrices.size()), src2dst, rect, dst);
    }
};

}  // namespace qx::test
