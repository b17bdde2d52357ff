// SPDX-License-Identifier: Apache-2.0
// A square that turns while the shutter is open: several matrices in time order make motion blur.
#include <QX/QX.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kSide = 200, kSquare = 60, kMoments = 17;

/// About the square's middle, which lies in the frame's.
M_Matrix3 turned(double radians) {
    M_Matrix3 matrix = kM_IdentityMatrix;
    matrix.m[2][0] = matrix.m[2][1] = -kSquare / 2.0;
    M_Matrix3_Rotate(radians, &matrix);
    matrix.m[2][0] += kSide / 2.0;
    matrix.m[2][1] += kSide / 2.0;
    return matrix;
}

int alpha_at(const QX_World& world, int x, int y) {
    QX_LayerDef record{};
    world.FillOutEffectWorld(&record);
    const auto* const row = static_cast<const std::byte*>(record.data) + std::ptrdiff_t{y} * record.rowbytes;
    return reinterpret_cast<const QX_Pixel8*>(row)[x].alpha;
}

}  // namespace

int main() {
    if (const int code = QX_Birth()) return code;
    int code = 0;
    {
        const std::unique_ptr<QX_World> square(QX_World::New(kSquare, kSquare, 8, 0));
        const std::unique_ptr<QX_World> frame(QX_World::New(kSide, kSide, 8, kQX_ClearPixels));
        square->Fill(QX_PixelFloat{1, 1, 0.5f, 0}, nullptr);
        std::vector<M_Matrix3> moments;
        for (int i = 0; i < kMoments; ++i) moments.push_back(turned(0.4 * i / (kMoments - 1)));

        QX_LayerDef from{}, to{};
        square->FillOutEffectWorld(&from);
        frame->FillOutEffectWorld(&to);
        const QX_CompositeModePlus over(xfer_over, 1.0f, nullptr, false, 0);
        code = QX_TransformWorld(nullptr, kQX_QualityBilinear, kQX_NoFlags, kQX_AllRows, &from, &over, nullptr, nullptr,
                                 moments.data(), kMoments, true, nullptr, &to);
        std::printf("transform: code %d, alpha is %d in the middle, %d at a corner's path, %d beside it\n", code,
                    alpha_at(*frame, kSide / 2, kSide / 2), alpha_at(*frame, 77, 66), alpha_at(*frame, 10, 10));
    }
    QX_Death();
    return code;
}
