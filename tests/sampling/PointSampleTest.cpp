// SPDX-License-Identifier: Apache-2.0
// Nearest, bilinear and bicubic samples against formulas in double, and against each other.
#include "tests/sampling/SampSupport.h"

namespace {

using namespace qx::test;
using standalone::ProcessorLevel;

/// Keys' kernel, a = -0.75, in its textbook form.
double keys(double t) {
    constexpr double a = -0.75;
    t = std::abs(t);
    if (t <= 1) return (a + 2) * t * t * t - (a + 3) * t * t + 1;
    return t < 2 ? a * t * t * t - 5 * a * t * t + 8 * a * t - 4 * a : 0;
}
double tent(double t) { return std::max(0.0, 1 - std::abs(t)); }

/// Alpha and colours by a separable kernel: colours weighted by alpha, or plain where there is none.
struct Model {
    double alpha = 0, by_alpha[3] = {}, plain[3] = {};
    bool one_alpha = true;
    double first = -1;

    template <class Pixel, class Kernel>
    Model(Source<Pixel>& picture, std::int32_t x, std::int32_t y, int reach, const Kernel& kernel) {
        for (int j = 1 - reach; j <= reach; ++j) {
            for (int i = 1 - reach; i <= reach; ++i) {
                const auto p = picture.tap((x >> 16) + i, (y >> 16) + j);
                const double w = kernel(i - (x & 0xFFFF) / 65536.0) * kernel(j - (y & 0xFFFF) / 65536.0);
                one_alpha &= first < 0 || p[0] == first;
                first = p[0];
                alpha += w * p[0];
                for (std::size_t c = 0; c < 3; ++c) by_alpha[c] += w * p[0] * p[c + 1], plain[c] += w * p[c + 1];
            }
        }
    }
    double colour(std::size_t c, bool keeps) const {
        if (one_alpha) return first == 0 && !keeps ? 0 : plain[c];
        return alpha == 0 ? keeps ? plain[c] : 0 : by_alpha[c] / alpha;
    }
};

/// Half a step and what single precision adds; at float depth the latter alone.
template <class Pixel> double tolerance(double value) {
    return sizeof(Pixel) == 16 ? 5e-7 * (1 + std::abs(value)) : sizeof(Pixel) == 8 ? 0.52 : 0.5002;
}
/// A sum of float shares has this much error at most, in steps of the depth.
template <class Pixel> double noise() { return kScale<Pixel> * 4e-6; }

template <class Pixel> class PointSample : public testing::Test {
protected:
    Born born{1, ProcessorLevel::plain};
    Numbers number{5};

    /// A position whose integer part lies between the bounds, often with a fraction of 0 or beside it.
    std::int32_t position(int low, int high) {
        const int corners[] = {0, 1, 0x8000, 0xFFFF}, any = number(0, 65536);
        return number(low, high + 1) * 65536 + (number(0, 3) == 0 ? corners[any % 4] : any);
    }

    /// Calls check(x, y, picture, channels of the sample, model) at places of pictures of all kinds.
    template <class Kernel, class Check>
    void on_all_fills(int quality, int reach, const Kernel& kernel, const Check& check) {
        const auto sample = QXp_GetSamplerSet<Pixel>(quality).clipped;
        for (const FillKind fill : kAllFills) {
            Source<Pixel> picture(23, 17, fill, 3);
            for (Pixel& p : picture.pixels) {  // by the smallest alphas no colour can be divided
                if (std::abs(double(p.alpha)) < 1e-6) p.alpha = 0;
            }
            for (int n = 0; n < 60000 && !HasFatalFailure(); ++n) {
                const std::int32_t x = position(-4, 26), y = position(-4, 20);
                SCOPED_TRACE(testing::Message() << "fill " << int(fill) << " at " << x << ", " << y);
                Pixel out;
                ASSERT_EQ(sample(nullptr, x, y, &picture.params, &out), 0);
                check(x, y, picture, channels(out), Model(picture, x, y, reach, kernel));
            }
        }
    }
};
TYPED_TEST_SUITE(PointSample, AllDepths);

TYPED_TEST(PointSample, BilinearIsTheModel) {
    constexpr bool is_float = sizeof(TypeParam) == 16;
    this->on_all_fills(1, 1, tent, [](int x, int y, auto& picture, const std::vector<double>& got, const Model& m) {
        if (!is_float && ((x | y) & 0xFFFF) == 0) {
            ASSERT_EQ(got, picture.tap(x >> 16, y >> 16));
            return;
        }
        if (!is_float && std::abs(m.alpha - 0.5) < 1e-3) return;  // on the edge of vanishing
        const bool vanishes = !is_float && m.alpha < 0.5;
        const double alpha = is_float && !m.one_alpha ? std::min(m.alpha, 1.0) : m.alpha;
        ASSERT_NEAR(got[0], vanishes ? 0 : alpha, tolerance<TypeParam>(m.alpha));
        if (is_float && !m.one_alpha && (std::abs(m.alpha) < 1e-3 || m.alpha > 1)) return;
        for (std::size_t c = 0; c < 3; ++c) {
            const double want = vanishes ? 0 : std::min(m.colour(c, is_float), is_float ? 1e9 : kScale<TypeParam>);
            const double share = is_float && !m.one_alpha ? std::min(1.0, std::abs(m.alpha)) : 1;
            ASSERT_NEAR(got[c + 1], want, tolerance<TypeParam>(want) / share) << "colour " << c;
        }
    });
}

TYPED_TEST(PointSample, BicubicIsKeysKernel) {
    constexpr bool is_float = sizeof(TypeParam) == 16;
    this->on_all_fills(3, 2, keys, [](int, int, auto&, const std::vector<double>& got, const Model& m) {
        const double full = kScale<TypeParam>;
        ASSERT_NEAR(got[0], std::clamp(m.alpha, 0.0, full), tolerance<TypeParam>(1)) << m.alpha;
        // Colour is a quotient by alpha; close to 0 nothing of it is left but rounding.
        if (!m.one_alpha && std::abs(m.alpha) < 0.05 * full) return;
        for (std::size_t c = 0; c < 3; ++c) {
            const double v = m.colour(c, true), want = is_float ? v : std::clamp(v, 0.0, full);
            ASSERT_NEAR(got[c + 1], want,
                        tolerance<TypeParam>(want) + (m.one_alpha ? 0
                                                      : is_float  ? 1e-4
                                                                  : noise<TypeParam>() * 60));
        }
    });
}

/// Inside, every route gives the pixel of the clipped sample; the reports are as stated.
TYPED_TEST(PointSample, RoutesAgree) {
    for (const int quality : {1, 2}) {
        const auto set = QXp_GetSamplerSet<TypeParam>(quality);
        for (const FillKind fill : kAllFills) {
            Source<TypeParam> picture(40, 12, fill, 6);
            for (int n = 0; n < 20000; ++n) {
                const std::int32_t x = this->position(-2, 40), y = this->position(-2, 12);
                const int column = x >> 16, row = y >> 16, reach = quality;
                const bool between = ((x | y) & 0xFFFF) != 0;
                TypeParam clipped, plus, other[9];
                bool all_in = true;
                set.clipped(nullptr, x, y, &picture.params, &clipped);
                set.plus(nullptr, x, y, &picture.params, &all_in, &plus);
                ASSERT_EQ(clipped, plus);
                const bool inside = column >= reach - 1 && row >= reach - 1 && column + reach < 40 && row + reach < 12;
                const bool told = quality == 2 ? column >= 1 && column < 37 && row >= 2 && row < 10
                                               : inside && (between || sizeof(TypeParam) == 16);
                ASSERT_EQ(all_in, told) << x << ", " << y << " quality " << quality;
                if (!inside) continue;
                set.unclipped(nullptr, x, y, &picture.params, other);
                ASSERT_EQ(clipped, other[0]);
                if (quality == 1 && between) {
                    double weights[4];
                    ASSERT_EQ(QX_SubpixelSampleComputeWeight(x & 0xFFFF, y & 0xFFFF, weights), 0);
                    for (int k = 0; k < 4; ++k) {  // in double they are exact
                        ASSERT_EQ(weights[k],
                                  tent(k % 2 - (x & 0xFFFF) / 65536.0) * tent(k / 2 - (y & 0xFFFF) / 65536.0));
                    }
                    set.translate(nullptr, x, y, weights, &picture.params, other);
                    ASSERT_TRUE(sizeof(TypeParam) != 8 || clipped == other[0]) << x << ", " << y;
                    // Weights in double may narrow to others than those computed in float.
                    for (std::size_t c = 0; c < 4 && clipped.alpha > 2 * noise<TypeParam>() + kScale<TypeParam> * 0.01;
                         ++c) {
                        const double want = channels(clipped)[c];
                        ASSERT_NEAR(channels(other[0])[c], want,
                                    sizeof(TypeParam) == 4 ? 1 : 1e-4 * (1 + std::abs(want)));
                    }
                }
                const int count = std::min(9, 40 - reach - column);
                QX_AlphaSumOf<TypeParam> sum{7}, want{7};
                set.span(nullptr, count, x, y, &picture.params, &sum, other);
                for (int k = 0; k < count; ++k) {
                    want += other[k].alpha;
                    set.clipped(nullptr, x + k * 65536, y, &picture.params, &clipped);
                    if (!between && other[k].alpha == 0) continue;  // the run alone mixes at whole positions
                    ASSERT_EQ(clipped, other[k]) << x << ", " << y << " pixel " << k;
                }
                ASSERT_EQ(sum, want);
            }
        }
    }
}

/// Any position and any source size: what lies outside is zero, and nothing beside the pixels is read.
TYPED_TEST(PointSample, AnywhereAtAll) {
    constexpr std::int32_t extremes[] = {INT32_MIN, INT32_MIN + 1, -65537,     -65536,   -65535, -1, 0,
                                         1,         0x7FFF8000,    0x7FFF7FFF, INT32_MAX};
    std::mt19937 random(5);
    const auto anything = [&] {
        const auto any = static_cast<std::int32_t>(random());
        return random() % 2 ? any >> (random() % 20) : extremes[random() % std::size(extremes)];
    };
    for (int n = 0; n < 60000; ++n) {
        Source<TypeParam> picture(this->number(1, 6), this->number(1, 6), FillKind::opaque, 2);
        const std::int32_t x = anything(), y = anything();
        const int mask = n % 40 == 0 ? -1 : 0x1FFFFF;  // few radii of any size or sign: they take long
        picture.radii(anything() & mask, anything() & mask);
        for (const int quality : {1, 2}) {
            const auto set = QXp_GetSamplerSet<TypeParam>(quality);
            TypeParam out, plus;
            bool all_in;
            set.clipped(nullptr, x, y, &picture.params, &out);
            set.plus(nullptr, x, y, &picture.params, &all_in, &plus);
            ASSERT_EQ(out, plus);
            const int column = x >> 16, row = y >> 16;
            const bool far = column < -2 || row < -2 || column > 6 || row > 6;
            ASSERT_TRUE(!far || out == TypeParam{});
            set.area(nullptr, x, y, &picture.params, &out);
        }
    }
}

TYPED_TEST(PointSample, NearestAndWholePositions) {
    const std::tuple routines(qx::slot<qx::Slot::NNSample>(), qx::slot<qx::Slot::NNSample16>(), &QX_NNSampleFloat);
    const auto nearest = std::get<QX_PointSampler<TypeParam>>(routines);
    Source<TypeParam> picture(5, 4, FillKind::random, 8);
    for (const auto& [i, j] : places(342, 51)) {
        const std::int32_t x = 1357 * i - 70000, y = 7919 * j - 70000;
        TypeParam out;
        ASSERT_EQ(nearest(nullptr, x, y, &picture.params, &out), 0);
        const auto column = static_cast<int>(std::floor(x / 65536.0 + 0.5));
        const auto row = static_cast<int>(std::floor(y / 65536.0 + 0.5));
        ASSERT_EQ(channels(out), picture.tap(column, row)) << x << ", " << y;
    }
    TypeParam out;
    nearest(nullptr, 0x7FFFC000, 0, &picture.params, &out);
    EXPECT_EQ(out, TypeParam{}) << "wraps to the left";
}

/// Kept: four at once have no threshold and no exits, so a faint alpha keeps its place in the colours.
TEST(FourAtOnce, AreTheModelAndTheirTranslations) {
    const Born born;
    Numbers number(3);
    for (const FillKind fill : {FillKind::random, FillKind::extremes, FillKind::clear}) {
        Source<QX_Pixel8> picture(33, 9, fill, 5);
        for (int n = 0; n < 50000; ++n) {
            std::int32_t coords[8];
            for (int i = 0; i < 8; ++i) coords[i] = number(0, (i % 2 ? 8 : 32) * 65536);
            QX_Pixel8 out[4], one;
            ASSERT_EQ(QX_SubpixelSampleNoClip_Straight_4(nullptr, coords, &picture.params, out), 0);
            for (int i = 0; i < 4; ++i) {
                const Model m(picture, coords[2 * i], coords[2 * i + 1], 1, tent);
                ASSERT_NEAR(out[i].alpha, m.alpha, 0.501);
                ASSERT_TRUE(m.alpha != 0 || out[i] == QX_Pixel8{});
                ASSERT_NEAR(out[i].green, m.alpha > 0.1 ? m.by_alpha[1] / m.alpha : out[i].green, 0.51);
            }
            double weights[4];
            QX_SubpixelSampleComputeWeight(coords[0] & 0xFFFF, coords[1] & 0xFFFF, weights);
            ASSERT_EQ(QX_SubpixelSampleTranslateNoClip_Straight_4(nullptr, coords, weights, &picture.params, out), 0);
            for (int i = 0; i < 4; ++i) {
                QX_SubpixelSampleTranslateNoClip_Straight(nullptr, coords[2 * i], coords[2 * i + 1], weights,
                                                          &picture.params, &one);
                ASSERT_EQ(one, out[i]);
            }
        }
    }
}

}  // namespace
