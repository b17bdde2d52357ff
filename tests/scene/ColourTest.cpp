// SPDX-License-Identifier: Apache-2.0
// Pictures from profile to profile, against the definition of both in double.
#include "scene/colour/Convert.h"

#include <array>
#include <limits>

#include "tests/pictures/Support.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::Picture;

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;

Vector operator*(const Matrix& m, const Vector& v) {
    Vector made{};
    for (std::size_t i = 0; i < 3; ++i) made[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return made;
}
Matrix operator*(const Matrix& a, const Matrix& b) {
    Matrix made{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) made[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    }
    return made;
}
Matrix inverse(const Matrix& m) {
    const auto minor = [&](std::size_t i, std::size_t j) {
        const std::size_t a = (i + 1) % 3, b = (i + 2) % 3, c = (j + 1) % 3, d = (j + 2) % 3;
        return m[a][c] * m[b][d] - m[a][d] * m[b][c];
    };
    const double determinant = m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
    Matrix made;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) made[j][i] = minor(i, j) / determinant;
    }
    return made;
}

/// What a file holds of a number.
double in_file(double v) { return std::floor(v * 65536 + 0.5) / 65536; }

using Points = std::array<std::array<double, 2>, 4>;  // red, green, blue, white
constexpr Points kSrgb{{{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, {0.3127, 0.3290}}};
constexpr Points kP3{{{0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, {0.3127, 0.3290}}};
constexpr Points kRec2020{{{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}, {0.3127, 0.3290}}};

Vector xyz(const std::array<double, 2>& p) { return {p[0] / p[1], 1, (1 - p[0] - p[1]) / p[1]}; }

/// From light to XYZ, seen under D50 after Bradford, as a file holds it: its rows sum to D50.
Matrix to_xyz(const Points& points) {
    Matrix own;
    for (std::size_t j = 0; j < 3; ++j) {
        for (std::size_t i = 0; i < 3; ++i) own[i][j] = xyz(points[j])[i];
    }
    const Vector share = inverse(own) * xyz(points[3]), d50{0.9642, 1, 0.8249};
    for (auto& row : own) {
        for (std::size_t j = 0; j < 3; ++j) row[j] *= share[j];
    }
    constexpr Matrix bradford{{{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
    const Vector seen = bradford * xyz(points[3]), wanted = bradford * d50;
    Matrix scale{};
    for (std::size_t i = 0; i < 3; ++i) scale[i][i] = wanted[i] / seen[i];
    Matrix made = inverse(bradford) * scale * bradford * own;
    for (std::size_t i = 0; i < 3; ++i) {
        made[i][0] = in_file(made[i][0]);
        made[i][2] = in_file(made[i][2]);
        made[i][1] = in_file(d50[i]) - made[i][0] - made[i][2];
    }
    return made;
}

/// (a x + b) ^ g from d on, c x below, and back.
struct Curve {
    double g, a, b, c, d;
    Curve(double exponent, double offset, double slope, double foot)
        : g(in_file(exponent)),
          a(in_file(1 / (1 + offset))),
          b(in_file(offset / (1 + offset))),
          c(in_file(1 / slope)),
          d(in_file(foot)) {}
    double to_light(double x) const { return x >= d ? std::pow(a * x + b, g) : c * x; }
    double of_light(double y) const {
        return y >= std::pow(a * d + b, g) ? (std::pow(y, 1 / g) - b) / a : c == 0 ? 0 : y / c;
    }
};
const Curve kSrgbCurve(2.4, 0.055, 12.92, 0.04045), kCameraCurve(1 / 0.45, 0.099, 4.5, 0.081);
const Curve kPower(2.2, 0, std::numeric_limits<double>::infinity(), 0);

struct Space {
    const char* name;
    const Points& points;
    const Curve& curve;
};
const Space kSpaces[] = {{"srgb", kSrgb, kSrgbCurve},
                         {"display-p3", kP3, kSrgbCurve},
                         {"rec2020", kRec2020, kCameraCurve},
                         {"gamma-2.2", kSrgb, kPower}};

constexpr double kFull[] = {255, 32768, 1};
double full_of(int depth) { return depth == 8 ? kFull[0] : depth == 16 ? kFull[1] : kFull[2]; }

/// Colours and alphas without an order.
Picture colours(int depth) {
    const auto part = [](int x, int y, int c) { return (x * (c * 31 + 7) + y * (c * 17 + 3)) % 61 / 60.0; };
    const auto fill = [&]<class Pixel>(Pixel) {
        using Channel = decltype(Pixel::red);
        return picture<Pixel>(61, 9, true, [&](int x, int y) {
            const auto value = [&](int c) {
                const double v = part(x, y, c) * full_of(depth);
                return static_cast<Channel>(depth == 32 ? v : std::floor(v + 0.5));
            };
            return Pixel{value(0), value(1), value(2), value(3)};
        });
    };
    return depth == 8 ? fill(QX_Pixel8{}) : depth == 16 ? fill(QX_Pixel16{}) : fill(QX_PixelFloat{});
}

/// Apart by half a step and what single precision makes of the largest light.
TEST(Colours, AreWhatBothDefinitionsSay) {
    const Born born;
    for (const Space& from : kSpaces) {
        for (const Space& to : kSpaces) {
            const Matrix matrix = inverse(to_xyz(to.points)) * to_xyz(from.points);
            for (const auto& [depth, result] : {std::pair{8, 8}, {8, 16}, {8, 32}, {16, 16}, {16, 32}, {32, 32}}) {
                SCOPED_TRACE(testing::Message() << from.name << " " << to.name << " " << depth << " " << result);
                const Picture in = colours(depth);
                Picture made = colours(depth);
                convert("a", made, profile_of_text(from.name), profile_of_text(to.name), result);
                ASSERT_EQ(made.world->Depth(), result);
                const double full = full_of(result), rounding = result == 32 ? 1e-6 : 0.51;
                for (int y = 0; y < in.world->height; ++y) {
                    for (int x = 0; x < in.world->width; ++x) {
                        const List own = channels(in, x, y), is = channels(made, x, y);
                        EXPECT_NEAR(is[0], own[0] * full / full_of(depth), result == 32 ? 1e-7 : 0.5);
                        Vector light;
                        for (std::size_t c = 0; c < 3; ++c) light[c] = from.curve.to_light(own[c + 1] / full_of(depth));
                        light = matrix * light;
                        const double slack = 1e-6 * std::max({light[0], light[1], light[2]});
                        for (std::size_t c = 0; c < 3; ++c) {
                            const auto value = [&](double v) {
                                const double encoded = to.curve.of_light(v);
                                return full * (result == 32 ? encoded : std::clamp(encoded, 0.0, 1.0));
                            };
                            ASSERT_GE(is[c + 1], value(light[c] - slack) - rounding) << x << " " << y << " " << c;
                            ASSERT_LE(is[c + 1], value(light[c] + slack) + rounding) << x << " " << y << " " << c;
                        }
                    }
                }
            }
        }
    }
}

TEST(Colours, StopsWhereItsWatchDoes) {
    const Born born(7);
    Picture picture = colours(8);
    CountingWatch watch(1);
    EXPECT_THROW(convert("a", picture, profile_of_text("srgb"), profile_of_text("rec2020"), 8, {}, watch),
                 qx::pictures::Stopped);
}

}  // namespace
