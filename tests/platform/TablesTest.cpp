// SPDX-License-Identifier: Apache-2.0
#include "platform/HCL_Registry.h"
#include "platform/IK_CopyMemory.h"
#include "platform/M_Tables.h"
#include "platform/TK_CPU.h"
#include "platform/tesselmediatypes.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(ColourTables, EveryEntryFollowsItsLaw) {
    const std::uint8_t *multiply = nullptr, *divide = nullptr;
    ASSERT_EQ(M_PrepareFCMD(true, false, 0, &multiply, &divide), 0);
    for (const auto& [c, a] : places(256, 256)) {
        const int product = static_cast<int>(std::floor(c * a / 255.0 + 0.5));  // never half-way: 255 is odd
        ASSERT_EQ(multiply[a * 256 + c], product) << a << " " << c;
        const int quotient = a == 0 ? 255 : std::min(255, (c * 510 + a - a % 2) / (2 * a));
        ASSERT_EQ(divide[a * 256 + c], quotient) << a << " " << c;
    }
    EXPECT_EQ(M_UnprepareFCMD(), 0);
}

TEST(ColourTables, LiveFromFirstRequestToLastRelease) {
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

TEST(TrigTable, IsASineOf1024Steps) {
    const std::int32_t* table = nullptr;
    ASSERT_EQ(M_PrepareFTrig(true, false, 0, &table), 0);
    EXPECT_TRUE(table[0] == 0 && table[256] == 65536 && table[128] == 46341);  // 65536 / sqrt(2)
    for (int i = 0; i <= 512; ++i) ASSERT_EQ(table[i], -table[1024 - i]) << i;
    for (int i = 0; i <= 256; ++i) {
        const double square = std::pow(table[i], 2) + std::pow(table[256 - i], 2);
        ASSERT_NEAR(std::sqrt(square), 65536, 1) << i;
    }
    EXPECT_EQ(M_UnprepareFTrig(), 0);
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
    // 256 classes of the upper byte: chi-squared with 255 degrees of freedom lies well within 255 +- 6 * 22.6.
    std::vector<int> classes(256);
    for (int i = 0; i < count; ++i) ++classes[table[i] >> 24];
    double chi = 0;
    for (const int n : classes) chi += std::pow(n - count / 256.0, 2) / (count / 256.0);
    EXPECT_NEAR(chi, 255, 136);
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
    const int live = standalone::LiveFakeFrames();
    VPix** frame = standalone::NewFakeFrame(GK::kPixelFormat_GPU_BGRA_4444_16f);
    EXPECT_EQ(standalone::LiveFakeFrames(), live + 1);
    tesselmediatypes::PixelFormat format{};
    EXPECT_TRUE(FK::GetFramePixelFormat(frame, &format));
    EXPECT_EQ(format, GK::kPixelFormat_GPU_BGRA_4444_16f);
    FK::DisposeVPixFromVideoFrame(frame);
    EXPECT_EQ(standalone::LiveFakeFrames(), live);
    EXPECT_FALSE(FK::GetFramePixelFormat(frame, &format));
    EXPECT_FALSE(FK::GetFramePixelFormat(nullptr, &format));
}

TEST(Frames, BytesOfAPixelFollowFromTheProperties) {
    const auto word = [](std::uint32_t kind, std::uint32_t packing, std::uint32_t layout, std::uint32_t precision) {
        const std::uint32_t properties = kind << 19 | packing << 11 | layout << 8 | precision << 1;
        return tesselmediatypes::PixelFormat{std::uint64_t{properties} << 32};
    };
    using N = std::uint32_t;
    // Columns: name, four of word(), and the bytes
    const Cases<Text, N, N, N, N, N> cases = {
        {"four of 8", 1, 0, 1, 0, 4},        {"four of 16", 1, 0, 1, 2, 8},    {"of 16, other code", 1, 0, 7, 3, 8},
        {"four of 24", 1, 0, 1, 4, 12},      {"four of 32", 1, 0, 1, 5, 16},   {"no precision", 1, 0, 1, 6, 0},
        {"two of 8", 1, 1, 0, 0, 2},         {"two of 32", 1, 1, 3, 5, 8},     {"two of 10", 1, 1, 0, 1, 0},
        {"packed 10", 1, 0, 0, 1, 4},        {"three of 8", 1, 0, 0, 0, 3},    {"three of 16", 1, 0, 0, 2, 6},
        {"packed 10, other", 1, 2, 1, 1, 4}, {"other packing", 1, 3, 1, 0, 0}, {"no samples", 0, 0, 1, 0, 0},
        {"no samples, 2", 2, 0, 0, 5, 0}};
    for (const auto& [name, kind, packing, layout, precision, bytes] : cases) {
        const auto format = word(kind, packing, layout, precision);
        EXPECT_EQ(tesselmediatypes::PixelFormatSize(format, 7, 3), bytes * 21) << name;
    }
    EXPECT_EQ(tesselmediatypes::PixelFormatSize(GK::kPixelFormat_GPU_BGRA_4444_32f, 30000, 30000), 14400000000u);
    EXPECT_EQ(tesselmediatypes::PixelFormatSize(GK::kPixelFormat_GPU_BGRA_4444_32f, -1, 5), 0u);
}

TEST(Registry, AnswersAndFailsOnDemand) {
    HCL_XIFAddressProc proc = nullptr;
    standalone::SetRegistryError(9);
    EXPECT_EQ(HCL_GetXIFAddressProc(&proc), 9);
    EXPECT_EQ(proc, nullptr);
    standalone::SetRegistryError(0);
    EXPECT_EQ(HCL_GetXIFAddressProc(&proc), 0);
    EXPECT_EQ(proc("nobody", "nothing"), nullptr);
}

TEST(CopyMemory, MayOverlap) {
    char text[] = "abcdef";
    IK_CopyMemory(text, text + 2, 4);
    EXPECT_STREQ(text, "ababcd");
    IK_CopyMemory(nullptr, nullptr, 0);
}

}  // namespace
