// SPDX-License-Identifier: Apache-2.0
// How depth is told and written, and what is said of worlds that are of none.
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(Depth, OfARecordIsToldByTheHighByteAlone) {
    Reports reports;
    const Cases<std::uint32_t, int> cases = {{0, 8},           {1, 8},           {0x01000001, 16}, {0x01000000, 16},
                                             {0x01FFFFFE, 16}, {0x02000000, 32}, {0x02000001, 32}};
    QX_LayerDef record{};
    int depth = 0;
    for (const auto& [flags, expected] : cases) {
        record.world_flags = flags;
        EXPECT_EQ(QX_GetEffectWorldDepth(&record, &depth), 0);
        EXPECT_EQ(depth, expected) << std::hex << flags;
    }
    EXPECT_TRUE(reports.all().empty());
    for (const std::uint32_t flags : {0x03000000u, 0xFF000001u}) {
        reports.clear();
        record.world_flags = flags;
        EXPECT_EQ(QXp_WorldDepth(&record), 8);
        EXPECT_EQ(reports.last_text(), "Unknown pixel format");
    }
    const World deep(QX_World::New(1, 1, 32, 0));
    record.world = deep.get();  // an object knows better than the flags
    EXPECT_EQ(QXp_WorldDepth(&record), 32);
}

TEST(Depth, OfAGpuWorldIsThatOfItsFrame) {
    Reports reports;
    const Cases<tesselmediatypes::PixelFormat, int, Text> cases = {
        {GK::kPixelFormat_GPU_BGRA_4444_16f, 16, ""},
        {GK::kPixelFormat_GPU_BGRA_4444_32f, 32, ""},
        {tesselmediatypes::kPixelFormat_ARGB_4444_8u, 8, ""},
        {tesselmediatypes::kPixelFormat_ARGB_4444_15u, 16, ""},
        {tesselmediatypes::kPixelFormat_ARGB_4444_32f, 32, ""},
        {tesselmediatypes::FourChannelFormat("zzzz", 5), 8, "Unsupported QX_PixelFormat"}};
    const World narrow(QX_World::New(1, 1, 8, 0));
    for (const auto& [format, expected, report] : cases) {
        reports.clear();
        QX_LayerDef record{};
        record.platform_ref = standalone::NewFakeFrame(format);
        record.world = narrow.get();  // is not asked
        EXPECT_TRUE(vn::qx::VideoFrameFactory::IsEffectWorldGPUBased(&record));
        int depth = 0;
        EXPECT_EQ(QX_GetEffectWorldDepth(&record, &depth), 0);
        EXPECT_EQ(depth, expected);
        EXPECT_EQ(reports.last_text(), report);
        record.data = &depth;  // with pixels it is no GPU world
        EXPECT_FALSE(vn::qx::VideoFrameFactory::IsEffectWorldGPUBased(&record));
        EXPECT_EQ(QXp_WorldDepth(&record), 8);
        FK::DisposeVPixFromVideoFrame(record.platform_ref);
        record.data = nullptr;
        EXPECT_EQ(QXp_WorldDepth(&record), 8);
        EXPECT_EQ(reports.last_text(), "Unknown pixel format");  // no frame is behind it now
    }
    EXPECT_FALSE(vn::qx::VideoFrameFactory::IsEffectWorldGPUBased(nullptr));
}

TEST(Depth, IsWrittenIntoTheHighByteAndBit0) {
    Reports reports;
    // Columns: before, depth, after, code
    const Cases<std::uint32_t, int, std::uint32_t, int> cases = {{0, 8, 0x0, 0},
                                                                 {0, 16, 0x01000001, 0},
                                                                 {0, 32, 0x02000000, 0},
                                                                 {0xFFABCDE0, 16, 0x01ABCDE1, 0},
                                                                 {0x01ABCDE1, 32, 0x02ABCDE1, 0},
                                                                 {0x12345678, 24, 0x12345678, 3}};
    for (const auto& [before, depth, after, code] : cases) {
        QX_LayerDef record{};
        record.world_flags = before;
        EXPECT_EQ(QXp_SetWorldDepth(&record, depth), code);
        EXPECT_EQ(record.world_flags, after) << depth;
    }
    EXPECT_EQ(reports.last_text(), "Unknown pixel format");
}

TEST(PixelFormats, CodesAndDepths) {
    Reports reports;
    // Columns: depth, of a GPU, code, report
    const Cases<int, bool, Text, std::string> cases = {{8, false, "argb", ""},       {16, false, "vn16", ""},
                                                       {32, false, "vn32", ""},      {16, true, "@CDa", ""},
                                                       {32, true, "@CDA", ""},       {8, true, "badf", "gpu pixel"},
                                                       {24, false, "badf", "pixel"}, {0, true, "badf", "pixel"}};
    for (const auto& [of_world, gpu, bytes, depth_of] : cases) {
        const std::string wrong = "Unsupported " + depth_of + " depth in QXp_EffectWorldDepthToPixelFormat()";
        const std::string report = depth_of.empty() ? "" : wrong;
        reports.clear();
        std::uint32_t code = 0;
        const int result = report.empty() ? 0 : 3;
        EXPECT_EQ(QXp_EffectWorldDepthToPixelFormat(of_world, gpu, &code), result);
        EXPECT_EQ(std::memcmp(&code, bytes, 4), 0) << bytes;
        EXPECT_EQ(reports.last_text(), report);
        int depth = 7;
        EXPECT_EQ(QXp_PixelFormatToEffectWorldDepth(code, &depth), result);
        EXPECT_EQ(depth, result == 0 ? of_world : 7);
        EXPECT_EQ(reports.last_text(), result == 0 ? "" : "Unsupported QX_PixelFormat");
    }
}

TEST(Depth, OfNoClassIsRefusedInTheRoutinesOwnWords) {
    std::uint32_t pixels[4] = {1, 2, 3, 4};
    OddWorld odd(pixels, 2, 2, 8);
    const World plain = make(2, 2, 8);
    const M_LRect rect{0, 0, 1, 1};
    const std::string unknown = "Unknown world bitdepth in";
    expect_refused({{[&] { return QX_Fill(nullptr, nullptr, nullptr, &odd); }, unknown + " QX_Fill"},
                    {[&] { return QX_Fill16(nullptr, nullptr, nullptr, &odd); }, unknown + " QX_Fill16"},
                    {[&] { return QX_FillFloat(nullptr, nullptr, nullptr, &odd); }, unknown + " QX_FillFloat"},
                    {[&] { return QX_ClearAlphaExceptRect(nullptr, &rect, &odd); }, unknown + "##CONDITIONNAME"},
                    {thrown([&] { odd.Swizzle(); }), "Unexpected bitdepth in QX_IteratePixels()"},
                    {thrown([&] { World(QX_World::NewReference(&odd)); }),
                     "Unexpected bitdepth in QX_World::NewReference(QX_EffectWorld)"},
                    {thrown([&] { plain->CopyRect(&odd, rect, 0, 0); }),
                     "Src and dest bitdepths are different in QX_World::CopyRect"},
                    {thrown([&] { plain->CopyRectPossiblyDifferentBitdepth(&odd, rect, true, 0, 0, nullptr); }),
                     "Unknown bit depth in QX_World::CopyRectPossiblyDifferentBitdepths", 0},
                    {thrown([&] { plain->CopyRectPossiblyDifferentBitdepthWithField(&odd, rect, 1); }),
                     "Unknown bit depth in QX_World::CopyRectPossiblyDifferentBitdepthsWithField", 0},
                    {thrown([&] {
                         plain->ShrinkToSubRect({0, 0, 3, 1});
                     }),
                     "bad sub rect in ShrinkToSubRect"}});
    for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(pixels[i], i + 1);
    EXPECT_EQ(*static_cast<std::uint32_t*>(plain->data), 0u);
    EXPECT_EQ(code_of([&] { World(QX_World::NewReference(pixels, 2, 2, 24, 8)); }), 3);
}

TEST(Texts, EveryNumber) {
    const char* const texts[] = {"invalid callback selector",
                                 "invalid parameter",
                                 "effects modules should only dispose worlds they have allocated",
                                 "image plane buffer",
                                 "bad parameter passed to effect callback",
                                 "problem opening plug-in acceleration module.",
                                 "unimplemented blending mode.",
                                 "noise table.",
                                 "Unable to guess alpha channel.",
                                 "Obsolete routine",
                                 "memory for blurring",
                                 "memory for mask buffer",
                                 "damaged mask buffer",
                                 "can#{rsquo}t unlock QX Mask Buffer",
                                 "gaussian weight array",
                                 "blending scratch buffer",
                                 "can#{rsquo}t copy different channel worlds",
                                 "out of memory for channel chunk",
                                 "image buffer",
                                 "effect plug-in passed invalid world to get_platform_refs"};
    ASSERT_EQ(QX_G_zref.count, 20);
    for (int i = 0; i < 20; ++i) {
        char key[32];
        std::snprintf(key, sizeof key, "$$$/VN/QX/LStr/%04d=", i);
        EXPECT_EQ(QX_G_zref.keys[i], std::string(key) + texts[i]);
        EXPECT_STREQ(TK_ZLookupLStrCache(QX_G_zref, i), texts[i]);
    }
    EXPECT_EQ(TK_ZLookupLStrCache(QX_G_zref, 20), nullptr);
}

}  // namespace
