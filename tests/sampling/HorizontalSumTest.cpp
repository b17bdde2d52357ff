// SPDX-License-Identifier: Apache-2.0
// Sums along rows against the same sums told cell by cell.
#include "QX/sampling/QX_HorizontalSum.h"

#include <boost/shared_ptr.hpp>

#include "tests/support/Test.h"

namespace qx::test {
namespace {

struct Settings {
    double radius = 0, gain = 0, threshold = 0, saturation = 0, aspect = 1, rotation = 0;
    bool padded = false;
    const QX_LinearBlendingTables* tables = nullptr;

    template <class Pixel> QX_HorizontalSumTable<Pixel> of(const QX_WorldX<Pixel>* world) const {
        return {world, 11, 12, radius, gain, threshold, saturation, aspect, rotation, padded, tables};
    }
};

/// What a pixel adds to its row.
template <class Pixel> std::array<float, 4> added(const Settings& s, const Pixel& p) {
    constexpr int depth = DepthOf<Pixel>::number;
    constexpr float unit = depth == 8 ? 0.003921569f : depth == 16 ? 3.0517578e-5f : 1.0f;
    std::array<float, 4> v{float(p.alpha) * unit, float(p.red) * unit, float(p.green) * unit, float(p.blue) * unit};
    for (std::size_t i = 1; i < 4; ++i) {
        if (s.tables != nullptr && v[i] >= 0) v[i] = std::pow(v[i], s.tables->to_linear_gamma);
        if (s.tables == nullptr || v[0] != 1.0f) v[i] *= v[0];
    }
    const float luma = (0.299f * v[1] + 0.587f * v[2]) + 0.114f * v[3], threshold = static_cast<float>(s.threshold);
    const float gain = static_cast<float>(5.0 * s.gain), saturation = static_cast<float>(s.saturation);
    if (gain <= 0 || luma <= threshold) return v;
    const float boost = (luma - threshold) * gain;
    for (std::size_t i = 1; i < 4; ++i) {
        const float q = std::abs(luma) <= 1e-12f ? v[i] : v[i] / std::abs(luma) - 1;
        if (boost > 0) v[i] += boost * (1 + saturation * q);
    }
    return v;
}

template <class Pixel> void expect_sums(const Settings& s, int width, int height, FillKind fill, std::uint64_t seed) {
    TestWorld<Pixel> world(width, height, fill, seed);
    const auto table = s.of<Pixel>(&world.world());
    const double across = s.radius * (s.aspect * std::abs(std::cos(s.rotation)) + std::abs(std::sin(s.rotation)));
    const double down = s.radius * (s.aspect * std::abs(std::sin(s.rotation)) + std::abs(std::cos(s.rotation)));
    ASSERT_EQ(table.PadX(), s.padded ? std::ceil(across) : 0);
    ASSERT_EQ(table.PadY(), s.padded ? std::ceil(down) : 0);
    ASSERT_EQ(table.Width(), width + 2 * table.PadX());
    ASSERT_EQ(table.Height(), height + 2 * table.PadY());
    ASSERT_EQ(std::tuple(table.A(), table.B(), table.Padded()), std::tuple(11, 12, s.padded));
    for (int y = 0; y < table.Height(); ++y) {
        std::array<float, 4> sum{};
        for (int x = 0; x < table.Width(); ++x) {
            const auto v = added(
                s, world.at(std::clamp(x - table.PadX(), 0, width - 1), std::clamp(y - table.PadY(), 0, height - 1)));
            for (std::size_t i = 0; i < 4; ++i) sum[i] += v[i];
            ASSERT_EQ(table.Row(y)[x], (QX_PixelFloat{sum[0], sum[1], sum[2], sum[3]})) << x << ", " << y;
        }
    }
    ASSERT_EQ(table.Cells(), table.Row(0));
}

template <class Pixel> class HorizontalSumAt : public testing::Test {};
TYPED_TEST_SUITE(HorizontalSumAt, AllDepths);

TYPED_TEST(HorizontalSumAt, EveryCellIsTheSumToItsLeft) {
    QX_LinearBlendingTables tables{};
    tables.to_linear_gamma = 2.2f;
    std::uint64_t seed = 0;
    for (const auto& [padded, gain, saturation, linear, rotation] :
         each(std::array{false, true}, std::array{0.0, 0.7, -1.0}, std::array{0.0, 0.4}, std::array{false, true},
              std::array{0.0, 0.3, 2.0})) {
        Settings s{.radius = 3.6, .gain = gain, .threshold = 0.35, .saturation = saturation, .aspect = 1.7};
        s.padded = padded, s.rotation = rotation, s.tables = linear ? &tables : nullptr;
        ++seed;
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        expect_sums<TypeParam>(s, 1 + static_cast<int>(seed * 7 % 40), 1 + static_cast<int>(seed % 6),
                               kAllFills[seed % 6], seed);
        if (this->HasFatalFailure()) return;
    }
}

TEST(HorizontalSum, BelowNoLightColoursAreTheirOwnExcess) {
    const Born born(1);
    TestWorld<QX_PixelFloat> world(2, 1, FillKind::clear, 1);
    world.at(0, 0) = {1, 0, 0, 0}, world.at(1, 0) = {1, 0.587f, -0.299f, 0};
    const auto table = Settings{.gain = 1, .threshold = -0.5, .saturation = 2}.of(&world.world());
    EXPECT_EQ(table.Row(0)[0], (QX_PixelFloat{1, 2.5f, 2.5f, 2.5f}));
    const float boost = 0.5f * 5;
    EXPECT_NEAR(table.Row(0)[1].red - 2.5f, 0.587f + boost * (1 + 2 * 0.587f), 1e-5);
}

TEST(HorizontalSum, WithoutColourSettingsTheLightStays) {
    const Born born(1);
    TestWorld<QX_Pixel8> world(9, 2, FillKind::random, 1);
    const boost::shared_ptr<QX_ColorSettings> none;
    const QX_HorizontalSumTable<QX_Pixel8> table(&world.world(), 1, 2, 2, 0, 0, 0, 1, 0, true, none, true);
    const auto plain = Settings{.radius = 2, .padded = true}.of(&world.world());
    ASSERT_EQ(std::pair(table.Width(), table.Height()), std::pair(13, 6));
    EXPECT_EQ(std::memcmp(table.Cells(), plain.Cells(), 13 * 6 * sizeof(QX_PixelFloat)), 0);
}

TEST(HorizontalSum, WhatCannotBeSummedThrows) {
    const Born born(1);
    BadWorlds bad;
    TestWorld<QX_Pixel8> world(4, 4, FillKind::random, 1);
    QX_WorldX<QX_Pixel8> gpu(&bad.gpu, false), empty(&bad.empty, false);
    gpu.platform_ref = bad.gpu.platform_ref;
    const auto built = [&](const QX_WorldX<QX_Pixel8>* from, double radius = 1) {
        return thrown([=] { (void)Settings{.radius = radius, .padded = true}.of(from); });
    };
    expect_refused(kOnGpu, {built(&gpu)});
    expect_refused(kBadParameter, {built(nullptr), built(&empty)});
    std::vector<Refused> cases;
    for (const double radius : {double(NAN), double(INFINITY), -double(INFINITY), 1e300, 1e9, 5e8}) {
        cases.push_back({.call = built(&world.world(), radius), .text = "out of memory", .code = 4});
    }
    expect_refused(cases);
    EXPECT_EQ(built(&world.world(), -3)(), 0);
    const Reports reports;
    NewCounter::fail(1);
    EXPECT_EQ(built(&world.world())(), 4);
    NewCounter::fail(0);
}

}  // namespace
}  // namespace qx::test
