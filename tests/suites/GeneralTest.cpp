// SPDX-License-Identifier: Apache-2.0
#include "tests/support/DepthModel.h"
#include "tests/support/Test.h"

namespace {

using qx::test::Born;

TEST(Rand, IsTheFormulaOverTheWholeRange) {
    std::mt19937 seeds(20);
    for (std::uint32_t i = 0; i < 200000; ++i) {
        const std::uint32_t start = i < 400 ? 200 - i : static_cast<std::uint32_t>(seeds());
        std::uint32_t seed = start, next = start;
        ASSERT_EQ(QX_Rand(&seed), qx::test::model::random_bits(next)) << "seed " << start;
        ASSERT_EQ(seed, next) << "seed " << start;
    }
}

TEST(General, Hypot) {
    EXPECT_EQ(QX_Hypot(3, 4), 5.0);
    EXPECT_EQ(QX_Hypot(-5, 12), 13.0);
    EXPECT_TRUE(std::isinf(QX_Hypot(1e200, 1e200))) << "no care for overflow";
}

TEST(General, AppCallbackGivesTheTables) {
    const Born born;
    int unread = 0;
    for (const int selector : {-1, 0, 1, 10, 100}) {
        void* result = &unread;
        EXPECT_EQ(QX_AppCallback(nullptr, selector, &result), 0);
        EXPECT_EQ(result, &unread) << selector;
    }
    void* result = nullptr;
    for (int selector = 2; selector < 10; ++selector) {
        EXPECT_EQ(QX_AppCallback(nullptr, selector, &result), 0);
        if (selector < 4) {
            EXPECT_EQ(std::memcmp(result, selector == 2 ? QXp_G_fcm_table : QXp_G_fcd_table, 65536), 0);
        } else if (selector < 6) {
            EXPECT_EQ(static_cast<std::int32_t*>(result)[256], 65536) << "the sine of a right angle";
        }
    }
}

TEST(General, VectorConstantsLieAligned) {
    for (const void* constant : {static_cast<const void*>(&QX_G_vf255), static_cast<const void*>(&QX_G_vi128_32),
                                 static_cast<const void*>(&QX_G_AlphaMask32)}) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(constant) % 16, 0u);
    }
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(QX_G_AlphaMask32.lane[i] ^ QX_G_BGRMask32.lane[i], 0xFFFFFFFF);
        EXPECT_EQ(QX_G_vfHalf.lane[i], 0.5f);
    }
    EXPECT_EQ(QX_G_AlphaMask32.lane[0], 0xFFFFFFFF);
    for (const double zero : QX_G_ZeroData) EXPECT_EQ(zero, 0.0);
}

}  // namespace
