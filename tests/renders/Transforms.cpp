// SPDX-License-Identifier: Apache-2.0
// Random transforms: every depth and quality; layers that stand still, move on a line and move unevenly.
#include "Picture.h"

namespace renders {
namespace {

struct Placing {
    double size, degrees, scale, x, y, perspective;
    M_Matrix3 matrix() const {
        const double a = degrees * 0.017453292519943295, c = std::cos(a), s = std::sin(a);
        M_Matrix3 m{{{1, 0, 0}, {0, 1, 0}, {-size / 2, -size / 2, 1}}};
        for (const M_Matrix3& next :
             {M_Matrix3{{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}}, M_Matrix3{{{scale, 0, 0}, {0, scale * 0.9, 0}, {0, 0, 1}}},
              M_Matrix3{{{1, 0, 0}, {0, 1, 0}, {x, y, 1}}}}) {
            m = M_MultiplyMatrix(m, next);
        }
        m.m[0][2] = perspective;
        return m;
    }
};

/// One matrix, two, or several with a pace that changes.
std::vector<M_Matrix3> path(Numbers& random, int size) {
    constexpr double kTurns[] = {0, 90, 17, -123.4, 301};
    constexpr double kScales[] = {1, 1, 0.3, 0.77, 1.6, 4};
    Placing placing{static_cast<double>(size),
                    kTurns[random.below(5)],
                    kScales[random.below(6)],
                    random.between(20, 100) + (random.below(2) == 0 ? 0 : random.unit()),
                    random.between(15, 80) + (random.below(3) == 0 ? 0 : random.unit()),
                    random.below(8) == 0 ? 0.002 : 0};
    std::vector<M_Matrix3> matrices{placing.matrix()};
    constexpr int kCounts[] = {1, 1, 2, 2, 3, 9};
    for (int more = kCounts[random.below(6)] - 1; more > 0; --more) {
        placing.x += random.unit() * 12;
        placing.y -= random.unit() * 3;
        if (random.below(3) == 0) placing.degrees += 4;
        matrices.push_back(placing.matrix());
    }
    return matrices;
}

template <class Pixel> void one(std::uint64_t seed) {
    Numbers random(seed);
    const int width = random.between(10, 90), height = random.between(10, 70);
    Picture<Pixel> layer(width, height, seed + 1), mask(100, 70, seed + 2), out(121, 83, seed + 3);
    const std::vector<M_Matrix3> matrices = path(random, width);
    const QX_MaskWorld at = mask.mask(random.between(-9, 30), random.between(-9, 30), random.below(4));
    constexpr int kModes[] = {xfer_over, xfer_over, xfer_copy, xfer_screen, xfer_premul_over, xfer_dissolve, xfer_hue};
    const int xfer = random.below(3) == 0 ? random.between(0, kQX_LastMode + 1) : kModes[random.below(7)];
    const QX_CompositeModePlus mode(xfer, random.below(2) == 0 ? 1.0f : 0.6f, nullptr, random.below(4) == 0, 5);
    const M_LRect rect{random.between(-5, 40), random.between(-5, 30), random.between(60, 130), random.between(40, 90)};
    const int quality = random.below(4), field = random.below(2) == 0 ? 0 : random.below(3);
    const bool whole = random.below(2) == 0, masked = random.below(3) == 0, linear = random.below(4) == 0;
    const int code = QX_TransformWorld(nullptr, quality, 0, field, layer.record(), &mode,
                                       linear ? gamma_tables() : nullptr, masked ? &at : nullptr, matrices.data(),
                                       static_cast<int>(matrices.size()), true, whole ? nullptr : &rect, out.record());
    tell("transform/" + depth_name<Pixel>() + "/" + std::to_string(seed), code, out);
}

}  // namespace

void transforms(int count) {
    at_each_depth([=]<class Pixel>(Pixel) {
        for (int i = 0; i < count; ++i) one<Pixel>(static_cast<std::uint64_t>(1000 + i));
    });
}

}  // namespace renders
