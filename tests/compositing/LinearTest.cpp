// SPDX-License-Identifier: Apache-2.0
// Lookups of linear light, rows in linear light, and the conversion of depth.
#include "QX/compositing/QX_LinearLookup.h"
#include "QX/indep/QX_SlotsOf.h"
#include "tests/compositing/TransferSupport.h"

namespace qx::test {
namespace {

/// Between two entries the lookups lie on the line, rounded; over the whole scale, and beyond it they stay at its end.
TEST(LinearLookup, InterpolatesOnTheLine) {
    const auto tables = tables_of_gamma(2.2f);
    for (int c = 0; c <= 32768; ++c) {
        const double at = c * 255.0 / 32768, back_at = c / 8.0;
        const auto line = [](const std::uint16_t* table, double x) {
            const int i = static_cast<int>(x);
            return x == i ? table[i] : table[i] + (table[i + 1] - table[i]) * (x - i);
        };
        ASSERT_EQ(to_linear16(tables, c), std::floor(line(tables.to_linear, at) + 0.5)) << c;
        ASSERT_EQ(from_linear16(tables, c), std::floor(line(tables.from_linear, back_at) + 0.5)) << c;
    }
    EXPECT_EQ(to_linear16(tables, 65535), to_linear16(tables, 32768));
    EXPECT_EQ(from_linear16(tables, 65535), from_linear16(tables, 32768));
    EXPECT_EQ(power(-0.5f, 2.2f), -0.5f);
}

/// An identity table leaves every 8-bit and 16-bit value as it is through both conversions.
TEST(LinearLookup, GammaOneIsTheIdentity) {
    const auto tables = tables_of_gamma(1.0f);
    for (unsigned c = 0; c < 256; ++c) {
        ASSERT_EQ(narrow_16_to_8(static_cast<std::uint32_t>(from_linear16(tables, tables.to_linear[c]))), c);
    }
    for (int c = 0; c <= 32768; ++c) ASSERT_NEAR(from_linear16(tables, to_linear16(tables, c)), c, 1);
}

TEST(LinearRows, NullTablesAreRefused) {
    const Born born(1);
    QX_RowFunc<QX_PixelFloat> row = nullptr;
    ASSERT_EQ(lookup_slot<QX_PixelFloat>(false, true)(xfer_over, &row), 0);
    const QX_PixelFloat src{1, 1, 1, 1};
    QX_PixelFloat dst{0.5f, 0.25f, 0, 0};
    const QX_BlendingMode<QX_PixelFloat> mode(mode_of(xfer_over));
    Reports reports;
    EXPECT_EQ(row(1, &mode, nullptr, &src, nullptr, &dst), 3);
    EXPECT_EQ(reports.last_text(), "Invalid tables for linearized blending");
    EXPECT_EQ(dst.red, 0.25f);
}

/// Depth conversion against the powers themselves, in double: the float side is linear.
TEST(DepthConvert, FloatSideIsLinear) {
    const Born born(1);
    const auto tables = tables_of_gamma(2.0f);
    TestWorld<QX_Pixel8> eight(256, 1, FillKind::opaque, 1), back(256, 1, FillKind::clear, 4);
    TestWorld<QX_Pixel16> deep(256, 1, FillKind::clear, 3);
    TestWorld<QX_PixelFloat> linear(256, 1, FillKind::clear, 2);
    for (int i = 0; i < 256; ++i) std::memset(&eight.at(i, 0), i, 4);
    QX_DepthConvertWorld(&tables, &eight.world(), &linear.world());
    QX_DepthConvertWorld(&tables, &linear.world(), &deep.world());
    QX_DepthConvertWorld(&tables, &linear.world(), &back.world());
    for (int i = 0; i < 256; ++i) {
        const double v = ((static_cast<unsigned>(i) * 0x808080 + 33200) >> 16) / 32768.0;  // 16 bits of the code
        EXPECT_NEAR(linear.at(i, 0).red, v * v, 0.5 / 32768 + 1e-7);
        EXPECT_EQ(linear.at(i, 0).alpha, static_cast<float>(i) * 0.003921569f);
        EXPECT_NEAR(back.at(i, 0).green, i, i < 8 ? 3 : 1);  // the table is coarse where its slope is steep
        EXPECT_EQ(back.at(i, 0).alpha, i);
        EXPECT_EQ(deep.at(i, 0).alpha, (i * 32768 + 128) / 255);
    }
    TestWorld<QX_PixelFloat> odd(1, 1, FillKind::clear, 5);
    odd.at(0, 0) = {1.5f, -0.5f, 2.0f, 0.25f};
    TestWorld<QX_Pixel16> narrow(1, 1, FillKind::clear, 6);
    QX_DepthConvertWorld(&tables, &odd.world(), &narrow.world());
    EXPECT_EQ(narrow.at(0, 0), (QX_Pixel16{49152, 0, 32768, 16384}));  // alpha not clamped; square root of a quarter
}

/// Depths that are none and missing tables are refused; integer pairs need no tables, and sizes must agree.
TEST(DepthConvert, WhatItTakes) {
    const Born born(1);
    const auto tables = tables_of_gamma(2.2f);
    OddWorld odd{64, 3, 1};
    TestWorld<QX_Pixel8> eight(64, 3, FillKind::random, 1), other(64, 3, FillKind::clear, 2),
        wide(65, 3, FillKind::clear, 2);
    TestWorld<QX_Pixel16> deep(64, 3, FillKind::clear, 3);
    TestWorld<QX_PixelFloat> linear(64, 3, FillKind::random, 4);
    const auto convert = [](const QX_LinearBlendingTables* t, const QX_World& from, QX_World& to) {
        return [=, &from, &to] { return code_of([&] { QX_DepthConvertWorld(t, &from, &to); }); };
    };
    const std::string unknown = "Unknown bit depth attempting to depth convert.";
    const std::string missing = "Invalid tables for linearized blending";
    expect_refused({{convert(&tables, odd, eight.world()), unknown},
                    {convert(&tables, eight.world(), odd), unknown},
                    {convert(nullptr, eight.world(), linear.world()), missing},
                    {convert(nullptr, linear.world(), deep.world()), missing}});
    for (const auto* given : {static_cast<const QX_LinearBlendingTables*>(nullptr), &tables}) {
        other.world().Fill(QX_Pixel16{}, nullptr);
        EXPECT_EQ(convert(given, eight.world(), deep.world())(), 0);
        EXPECT_EQ(convert(given, deep.world(), other.world())(), 0);
        EXPECT_EQ(eight.pixels(), other.pixels());
    }
    const auto before = wide.pixels();
    EXPECT_EQ(convert(&tables, eight.world(), wide.world())(), 0);
    EXPECT_EQ(before, wide.pixels());
}

}  // namespace
}  // namespace qx::test
