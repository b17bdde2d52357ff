// SPDX-License-Identifier: Apache-2.0
#include "platform/IK_CopyMemory.h"
#include "platform/M_Tables.h"
#include "platform/TK_CPU.h"
#include "platform/tesselcore_Utility.h"
#include "platform/tesselmediatypes.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(Tables, EveryEntryFollowsItsLaw) {
    const std::uint8_t *multiply = nullptr, *divide = nullptr;
    ASSERT_EQ(M_PrepareFCMD(true, false, 0, &multiply, &divide), 0);
    for (const auto& [c, a] : places(256, 256)) {
        const int product = static_cast<int>(std::floor(c * a / 255.0 + 0.5));  // never half-way: 255 is odd
        ASSERT_EQ(multiply[a * 256 + c], product) << a << " " << c;
        const int quotient = a == 0 ? 255 : std::min(255, (c * 510 + a - a % 2) / (2 * a));
        ASSERT_EQ(divide[a * 256 + c], quotient) << a << " " << c;
    }
    EXPECT_EQ(M_UnprepareFCMD(), 0);

    const std::int32_t* turn = nullptr;
    ASSERT_EQ(M_PrepareFTrig(true, false, 0, &turn), 0);
    for (int i = 0; i <= 1024; ++i) ASSERT_NEAR(turn[i], 65536 * std::sin(i * std::acos(-1) / 512), 0.501) << i;
    EXPECT_EQ(M_UnprepareFTrig(), 0);
}

TEST(Tables, LiveFromFirstRequestToLastRelease) {
    const auto blocks = blocks_in_use();
    const std::uint8_t *first = nullptr, *second = nullptr;
    ASSERT_EQ(M_PrepareFCMD(true, false, 0, &first, nullptr), 0);
    ASSERT_EQ(M_PrepareFCMD(true, false, 0, &second, nullptr), 0);
    EXPECT_EQ(first, second);
    EXPECT_EQ(blocks_in_use(), blocks + 1);
    EXPECT_EQ(M_UnprepareFCMD(), 0);
    EXPECT_EQ(first[255 * 256 + 77], 77);
    EXPECT_EQ(M_UnprepareFCMD(), 0);
    EXPECT_EQ(blocks_in_use(), blocks);
    EXPECT_EQ(M_UnprepareFCMD(), 3);

    const Reports quiet;
    EXPECT_EQ(short_of_memory(1, [&] { return M_PrepareFCMD(true, false, 0, &first, &second); }), 4);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(M_UnprepareFCMD(), 3);
}

TEST(Noise, HasAPrimeNumberOfUniformValues) {
    const std::uint32_t *table = nullptr, *again = nullptr;
    std::int32_t count = 0;
    ASSERT_EQ(RND_GetPrimeSizedTable(&table, &count), 0);
    ASSERT_EQ(RND_GetPrimeSizedTable(&again, &count), 0);
    EXPECT_EQ(table, again);
    ASSERT_GT(count, 1000);
    for (int d = 2; d * d <= count; ++d) ASSERT_NE(count % d, 0) << d;

    // Each bit is set in half of the values, within five standard deviations.
    const double spread = 5 * std::sqrt(count) / 2;
    for (int bit = 0; bit < 32; ++bit) {
        int set = 0;
        for (int i = 0; i < count; ++i) set += table[i] >> bit & 1;
        EXPECT_NEAR(set, count / 2.0, spread) << bit;
    }
    // Neighbours are not related.
    double sum = 0;
    for (int i = 0; i < count; ++i)
        sum += (table[i] / 4294967296.0 - 0.5) * (table[(i + 1) % count] / 4294967296.0 - 0.5);
    EXPECT_NEAR(sum / count, 0, 5.0 / 12 / std::sqrt(count));
}

TEST(Maths, RemainderOfFloats) {
    EXPECT_EQ(M_fmod(7.5, 2), 1.5);
    EXPECT_EQ(M_fmod(-7.5, 2), -1.5);
    EXPECT_EQ(M_fmod(7.5, 0), 0);
}

TEST(Processor, LevelsSetFlagsButNeverAboveTheProcessor) {
    using standalone::ProcessorLevel;
    const ProcessorLevel there = standalone::DetectedProcessorLevel();
    for (const auto level : kLevels) {
        standalone::SetProcessorLevel(level);
        const auto expected = std::min(level, there);
        EXPECT_EQ(TK_G_CPU_DataP->flags[2] != 0, expected >= ProcessorLevel::vector);
        EXPECT_EQ(TK_G_CPU_DataP->flags[6] != 0, expected >= ProcessorLevel::faster);
        EXPECT_EQ(TK_G_CPU_DataP->flags[7] != 0, expected >= ProcessorLevel::widest);
    }
}

TEST(Frames, FakeFrameAnswersUntilItIsDisposed) {
    const int live = standalone::LiveFrameHandles();
    VPix** frame = standalone::NewFakeFrame(GK::kPixelFormat_GPU_BGRA_4444_16f);
    EXPECT_EQ(standalone::LiveFrameHandles(), live + 1);
    const auto behind = FK::GetVPixHandFrameMapping(frame);
    EXPECT_TRUE(behind && behind->GetPixelFormat() == GK::kPixelFormat_GPU_BGRA_4444_16f);
    FK::DisposeVPixFromVideoFrame(frame);
    EXPECT_EQ(standalone::LiveFrameHandles(), live);
    EXPECT_FALSE(FK::GetVPixHandFrameMapping(frame) || FK::GetVPixHandFrameMapping(nullptr));
}

TEST(Frames, BytesOfAPixelFollowFromTheProperties) {
    using N = std::uint32_t;
    // Columns: name, kind, packing, layout, precision, and the bytes
    const Cases<Text, N, N, N, N, N> cases = {
        {"four of 8", 1, 0, 1, 0, 4},        {"four of 16", 1, 0, 1, 2, 8},    {"of 16, other code", 1, 0, 7, 3, 8},
        {"four of 24", 1, 0, 1, 4, 12},      {"four of 32", 1, 0, 1, 5, 16},   {"no precision", 1, 0, 1, 6, 0},
        {"two of 8", 1, 1, 0, 0, 2},         {"two of 32", 1, 1, 3, 5, 8},     {"two of 10", 1, 1, 0, 1, 0},
        {"packed 10", 1, 0, 0, 1, 4},        {"three of 8", 1, 0, 0, 0, 3},    {"three of 16", 1, 0, 0, 2, 6},
        {"packed 10, other", 1, 2, 1, 1, 4}, {"other packing", 1, 3, 1, 0, 0}, {"no samples", 0, 0, 1, 0, 0},
        {"no samples, 2", 2, 0, 0, 5, 0}};
    for (const auto& [name, kind, packing, layout, precision, bytes] : cases) {
        const std::uint64_t properties = kind << 19 | packing << 11 | layout << 8 | precision << 1;
        const tesselmediatypes::PixelFormat format{properties << 32};
        EXPECT_EQ(tesselmediatypes::PixelFormatSize(format, 7, 3), bytes * 21) << name;
    }
    EXPECT_EQ(tesselmediatypes::PixelFormatSize(GK::kPixelFormat_GPU_BGRA_4444_32f, 30000, 30000), 14400000000u);
    EXPECT_EQ(tesselmediatypes::PixelFormatSize(GK::kPixelFormat_GPU_BGRA_4444_32f, -1, 5), 0u);
}

TEST(LongSwap, BeginsWithTheHighestByte) {
    const std::uint8_t bytes[] = {0x12, 0x34, 0x56, 0x78};
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    EXPECT_EQ(TK_LongSwap(number), 0x12345678u);
    EXPECT_EQ(TK_LongSwap(0x12345678u), number);
}

TEST(CopyMemory, MayOverlap) {
    char text[] = "abcdef";
    IK_CopyMemory(text, text + 2, 4);
    EXPECT_STREQ(text, "ababcd");
    IK_CopyMemory(nullptr, nullptr, 0);
}

}  // namespace
