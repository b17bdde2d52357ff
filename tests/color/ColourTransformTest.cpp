// SPDX-License-Identifier: Apache-2.0
#include "QX/color/QX_ColourTransform.h"

#include "tests/color/RecordingEngine.h"

namespace qx::test {
namespace {

using Calls = std::vector<std::string>;

/// A world that begins at some byte of its own memory, with bytes behind each row.
struct Canvas {
    std::vector<std::byte> memory;
    std::unique_ptr<QX_World> world;

    Canvas(int depth, int width, int height, int gap = 0) {
        const int row = width * depth / 2 + gap;
        memory.resize(static_cast<std::size_t>(row * height));
        for (std::size_t i = 0; i < memory.size(); ++i) memory[i] = static_cast<std::byte>(i * 37 + i / 256);
        world.reset(QX_World::NewReference(memory.data(), width, height, static_cast<short>(depth), row));
    }
    std::size_t channel() const { return static_cast<std::size_t>(world->Depth()) / 8; }
    std::vector<std::byte> alpha(int x, int y) const {
        const std::byte* const at = memory.data() + y * world->rowbytes + x * 4 * static_cast<int>(channel());
        return {at, at + channel()};
    }
};

/// Everything that the engine writes, alpha too.
void all_ones(const void*, void* dst, std::int64_t count, std::size_t channel) {
    std::memset(dst, 1, static_cast<std::size_t>(count) * 4 * channel);
}

TEST(ColourTransform, GivesTheEngineWholeWorldsOrRows) {
    const Born born;
    RecordingEngine engine;
    const auto transform = engine.transform("t");
    const char* const formats[] = {"prgb", "PRGB", "fRGB"};
    for (const auto& [from, to, src_gap, dst_gap] :
         each(std::array{8, 16, 32}, std::array{8, 16, 32}, std::array{0, 16}, std::array{0, 16})) {
        const Canvas src(from, 5, 3, src_gap);
        Canvas dst(to, 5, 3, dst_gap);
        engine.calls.clear();
        bool flag = true;
        QX_CMXApplyTransform(transform, src.world.get(), dst.world.get(), false, nullptr, &flag);
        EXPECT_FALSE(flag);
        const std::string format = std::string(formats[from / 16]) + ">" + formats[to / 16];
        const bool whole = src_gap + dst_gap == 0;
        const Calls want(whole ? 1 : 3, "ApplyTransform t ctpk " + format + (whole ? " 15" : " 5") + "{optL0}");
        EXPECT_EQ(engine.calls, want);
    }
    for (const auto& [depth, format] : Cases<int, Text>{{8, "cmyw>fRGB"}, {16, "CMYK>fRGB"}}) {
        const Canvas src(depth, 5, 3);
        Canvas dst(32, 6, 4);  // its left top part is written
        engine.calls.clear();
        QX_CMXApplyTransformSrcCMYK(transform, src.world.get(), dst.world.get(), false, nullptr);
        EXPECT_EQ(engine.calls, Calls(3, "ApplyTransform t ctpk " + std::string(format) + " 5{optL0}"));
    }
    Canvas none(8, 0, 0);
    std::byte some{};
    none.world->data = &some;
    engine.calls.clear();
    QX_CMXApplyTransform(transform, none.world.get(), none.world.get(), true, nullptr, nullptr);
    EXPECT_TRUE(engine.calls.empty());
}

TEST(ColourTransform, AlphaIsTheSourcesWhereItIsCopiedElseTheEngines) {
    const Born born;
    RecordingEngine engine;
    const auto transform = engine.transform("t");
    for (const auto& [depth, gap, copies, in_place, cmyk] :
         each(std::array{8, 16, 32}, std::array{0, 16}, std::array{false, true}, std::array{false, true},
              std::array{false, true})) {
        if (cmyk && depth == 32) continue;
        const Canvas before(depth, 7, 5, gap);
        Canvas src(depth, 7, 5, gap), other(depth, 7, 5, gap);
        Canvas& dst = in_place ? src : other;
        engine.pixels = [&](const void* from, void* to, std::int64_t count) {
            all_ones(from, to, count, src.channel());
        };
        if (cmyk) {
            QX_CMXApplyTransformSrcCMYK(transform, src.world.get(), dst.world.get(), copies, nullptr);
        } else {
            QX_CMXApplyTransform(transform, src.world.get(), dst.world.get(), copies, nullptr, nullptr);
        }
        const std::vector<std::byte> ones(src.channel(), std::byte{1});
        for (const auto& [x, y] : places(7, 5)) ASSERT_EQ(dst.alpha(x, y), copies ? before.alpha(x, y) : ones);
        for (std::size_t i = 0; gap > 0 && i < 16; ++i) {  // what lies behind a row stays
            const auto row = static_cast<std::size_t>(src.world->rowbytes);
            ASSERT_EQ(dst.memory[row - 1 - i], before.memory[row - 1 - i]);
        }
    }
}

struct Answer {
    int stops_at;  ///< row
    std::vector<int> rows{};
};

TEST(ColourTransform, AsksForProgressBetweenRowsAndFreesItsPlane) {
    const Born born;
    RecordingEngine engine;
    const auto transform = engine.transform("t");
    Canvas src(8, 4, 200, 4);
    const auto apply = [&](QX_ProgressInfo* progress) {
        return code_of(
            [&] { QX_CMXApplyTransform(transform, src.world.get(), src.world.get(), true, progress, nullptr); });
    };
    Answer answer{127};
    QX_ProgressInfo progress{&answer, nullptr, [](void* refcon, int row, int rows) {
                                 auto& a = *static_cast<Answer*>(refcon);
                                 a.rows.push_back(row);
                                 return rows == 200 && row == a.stops_at ? 516 : 0;
                             }};
    const std::int64_t blocks = blocks_in_use();
    EXPECT_EQ(apply(&progress), 516);
    EXPECT_EQ(answer.rows, (std::vector{63, 127}));
    EXPECT_EQ(engine.calls.size(), 128u);
    progress = {&answer, [](void*) { return 7; }, nullptr};
    engine.calls.clear();
    EXPECT_EQ(apply(&progress), 7);
    EXPECT_EQ(engine.calls.size(), 64u);
    engine.failing = "ApplyTransform";
    EXPECT_EQ(apply(nullptr), RecordingEngine::kFault);
    EXPECT_EQ(blocks_in_use(), blocks);

    engine.failing.clear(), engine.calls.clear();
    const Reports reports;
    EXPECT_EQ(short_of_memory(1, [&] { return apply(nullptr); }), 4);
    EXPECT_EQ(out_of_memory_from(1, [&] { return apply(nullptr); }), 4);
    EXPECT_EQ(reports.last_text(), "out of memory: image plane buffer");
    EXPECT_TRUE(engine.calls.empty());
}

TEST(ColourTransform, RefusesBeforeAnythingIsWritten) {
    const Born born;
    RecordingEngine engine;
    const auto transform = engine.transform("t");
    Canvas a(8, 4, 4), deep(16, 4, 4), real(32, 4, 4), narrow(8, 3, 4), low(8, 4, 3), empty(8, 4, 4);
    BadWorlds bad;
    Canvas gpu(8, 4, 4);
    gpu.world->data = nullptr, gpu.world->platform_ref = bad.gpu.platform_ref;
    empty.world->data = nullptr;
    const auto call = [&](Canvas* src, Canvas* dst, bool copies = false, bool cmyk = false) {
        return thrown([=, &transform] {
            const QX_World* const from = src != nullptr ? src->world.get() : nullptr;
            QX_World* const to = dst != nullptr ? dst->world.get() : nullptr;
            if (cmyk) {
                QX_CMXApplyTransformSrcCMYK(transform, from, to, copies, nullptr);
            } else {
                QX_CMXApplyTransform(transform, from, to, copies, nullptr, nullptr);
            }
        });
    };
    const std::string small = "the destination is smaller than the source";
    expect_refused({{call(&gpu, nullptr), kOnGpu},
                    {call(&empty, &gpu), kOnGpu},
                    {call(nullptr, &a), kBadParameter},
                    {call(&a, nullptr), kBadParameter},
                    {call(&a, &empty), kBadParameter},
                    {call(&real, &narrow, true, true), "QXp_CMXApplyTransform only works on 8 and 16 bit CMYK data"},
                    {call(&deep, &narrow, true), "Can't copy alpha if src and dst have different depth."},
                    {call(&a, &narrow), small},
                    {call(&a, &low), small}});
    EXPECT_TRUE(engine.calls.empty());
    gpu.world->platform_ref = nullptr;
}

TEST(ColourTransform, ProfileToProfileGivesAllBack) {
    const Born born;
    RecordingEngine engine;
    Canvas world(8, 2, 2);
    const auto convert = [&] {
        return code_of([&] {
            QX_ConvertProfileToProfile(CMX_Code("sRGB"), CMX_Code("r7hf"), world.world.get(), world.world.get(), true,
                                       nullptr);
        });
    };
    const Calls steps{"ProfileFromCode sRGB", "ProfileFromCode r7hf", "MakeColorTransform sRGB>r7hf 1{optL0}",
                      "ApplyTransform sRGB>r7hf 1{optL0} ctpk prgb>prgb 4{optL0}", "UnReferenceTransform"};
    EXPECT_EQ(convert(), 0);
    EXPECT_EQ(engine.calls, steps);
    EXPECT_EQ(engine.live, 0);
    for (const char* failing : {"ProfileFromCode", "MakeColorTransform", "ApplyTransform"}) {
        engine.failing = failing;
        EXPECT_EQ(convert(), RecordingEngine::kFault);
        EXPECT_EQ(engine.live, 0) << failing;
    }
}

}  // namespace
}  // namespace qx::test
