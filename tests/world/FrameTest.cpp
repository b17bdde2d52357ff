// SPDX-License-Identifier: Apache-2.0
// Where frames come from and go back to, what can be allocated, and what the user is told.
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

std::string narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

std::string above_limit(const std::string& frame) {
    return "Image buffers of size " + frame +
           " exceed internal limits. Decrease the memory requirements for the rendering of this frame. (12804).";
}

std::string no_memory(const std::string& frame) {
    return "Unable to allocate enough memory to render the current frame (" + frame +
           "). Either decrease the memory requirements for the rendering of this frame, or install more RAM. (12805).";
}

/// Width, height, depth, alignment, and the report: none when the frame is possible.
using Limits = Cases<int, int, short, std::size_t, std::string>;

TEST(FrameLimits, OfBothProcessors) {
    // A float frame takes 16 * width * (height + 1) - 8 bytes: 2^31 - 8 of them in the first case.
    const Limits processor{{16384, 8191, 32, 16, ""},
                           {16384, 8192, 32, 16, above_limit("16384 x 8192 @ 32 bpc (2.0 GB)")},
                           {16384, 16382, 16, 16, ""},  // and 2^31 in the next one
                           {16384, 16383, 16, 16, above_limit("16384 x 16383 @ 16 bpc (2.0 GB)")},
                           {30000, 30000, 8, 16, above_limit("30000 x 30000 @ 8 bpc (3.4 GB)")},
                           {1, 30000, 8, 65536, ""},
                           {1, 30000, 8, 131072, above_limit("1 x 30000 @ 8 bpc (3.7 GB)")},
                           {30000, 1, 16, 16, ""},
                           {30001, 1, 8, 16, "invalid image buffer size (30001x1)."},
                           {1, 30001, 8, 16, "invalid image buffer size (1x30001)."},
                           {0, -7, 8, 16, "invalid image buffer size (0x-7)."}};
    // Of a GPU 16 bytes a pixel whatever the depth asked for; 2^32 bytes in the second case.
    const Limits gpu{{16384, 16383, 8, 16, ""},
                     {16384, 16384, 8, 16, above_limit("16384 x 16384 @ 32 bpc (4.0 GB)")},
                     {1, 30000, 16, 131072, ""},
                     {1, 30000, 16, 262144, above_limit("1 x 30000 @ 32 bpc (7.3 GB)")},
                     {30001, 5, 32, 16, "invalid image buffer size (30001x5)."}};
    const auto expect = [](const Limits& cases, const auto& can_allocate) {
        for (const auto& [width, height, depth, alignment, report] : cases) {
            const auto [possible, text] = can_allocate(width, height, depth, alignment);
            EXPECT_EQ(narrow(text), report);
            EXPECT_EQ(possible, report.empty()) << width << "x" << height;
        }
    };
    expect(processor, qx::numeric_limits::CanAllocateCPUFrame);
    expect(gpu, qx::numeric_limits::CanAllocateGPUFrame);
}

TEST(FrameReport, TextsAndSites) {
    const auto of_world = [](int error, int rowbytes, short width, short height, short bits) {
        return [=] { return BM_ReportWorldAllocationFailure(error, rowbytes, width, height, bits); };
    };
    const auto of_rectangle = [](int error, int rowbytes, std::size_t size) {
        return [=] {
            const M_Rect rect{10, 20, 40, 70};  // top, left, bottom, right
            BMp_ReportWorldAllocFail(7, error, rowbytes, &rect, 64, size);
            return 0;
        };
    };
    expect_refused({{of_world(4, 112, 25, 10, 32), no_memory("25 x 10 @ 8 bpc"), 0, 0x250042},
                    {of_world(-108, 0, 25, 10, 64), no_memory("25 x 10 @ 16 bpc"), 0, 0x250042},
                    {of_world(4, 0, 30000, 30000, 128), above_limit("30000 x 30000 @ 32 bpc (13.4 GB)"), 0, 0x250042},
                    {of_world(4, 100000, 8, 30000, 32), above_limit("8 x 30000 @ 8 bpc (2.8 GB)"), 0, 0x250042},
                    {of_world(4, 65536, 8, 32767, 32), no_memory("8 x 32767 @ 8 bpc"), 0, 0x250042},
                    {of_world(7, 112, 25, 10, 32), "changing pixel buffer.", 0, 66},
                    {of_world(0, 112, 25, 10, 32), "", 0, 0, 0},
                    {of_rectangle(4, 0, 0), no_memory("50 x 30 @ 16 bpc"), 0, 0x250007},
                    {of_rectangle(4, 100, 3000000000u), above_limit("50 x 30 @ 16 bpc (2.8 GB)"), 0, 0x250007},
                    {of_rectangle(0, 100, 3000000000u), "", 0, 0, 0}});
    const Reports reports;
    for (const int error : {4, 7}) of_world(error, 112, 25, 10, 32)();
    for (const auto& report : reports.all()) {
        EXPECT_TRUE(report.severity == 8 && report.kind == standalone::ReportKind::error);
    }
}

TEST(FrameReport, AFailureInsideTheReportIsDropped) {
    const Reports reports;
    NewCounter::fail(1);
    EXPECT_EQ(BM_ReportWorldAllocationFailure(4, 112, 25, 10, 32), 0);
    NewCounter::fail(0);
    EXPECT_TRUE(reports.all().empty());
}

TEST(FrameMemory, LargeBlocksAreRecycled) {
    standalone::PurgeRecycled();
    for (const auto& [size, turn] : each(std::array{300u * 1024, 300u * 1024 + 1}, std::array{1, 2})) {
        const bool recycled = size > 300u * 1024;
        const auto before = standalone::Memory();
        void* block = nullptr;
        ASSERT_EQ(BM_AllocateFrameQuiet(size, 0, &block), 0);
        std::memset(block, turn, size);
        EXPECT_EQ(standalone::Memory().recycled_hits - before.recycled_hits, recycled && turn == 2 ? 1 : 0);
        BM_FreeFrame(block, size);
        EXPECT_EQ(blocks_in_use(), before.blocks_in_use);
        EXPECT_EQ(standalone::Memory().recycled_bytes, recycled ? static_cast<std::int64_t>(size) : 0);
    }
}

TEST(FrameMemory, PurgesBeforeItGivesUpQuietly) {
    Reports reports;
    void* block = nullptr;
    for (const std::size_t size : {std::size_t{1000}, std::size_t{400} * 1024}) {
        ASSERT_EQ(BM_AllocateFrameQuiet(500u * 1024, 0, &block), 0);
        BM_FreeFrame(block, 500u * 1024);  // waits, and can be purged
        const auto allocate = [&] { return BM_AllocateFrameQuiet(size, 0, &block); };
        EXPECT_EQ(short_of_memory(1, allocate), 0);
        EXPECT_EQ(standalone::Memory().recycled_bytes, 0);
        BM_FreeFrame(block, size);
        standalone::PurgeRecycled();
        EXPECT_EQ(short_of_memory(1, allocate), 4);
        EXPECT_EQ(block, nullptr);
    }
    EXPECT_EQ(BM_AllocateFrameQuiet(~std::size_t{0}, 0, &block), 4);
    EXPECT_TRUE(reports.all().empty());
}

TEST(WorldMemory, AWorldThatCannotBeHadIsReportedOnceAndLeaksNothing) {
    Reports reports;
    const auto before = blocks_in_use();
    const std::int32_t live = qx::live_world_count();
    for (const auto& [width, depth, nth] : each(std::array{12, 30000}, kDepths, std::array{1, 2})) {
        standalone::PurgeRecycled();
        reports.clear();
        QX_LayerDef record{};
        record.width = 77;
        const auto create = [&, w = width, d = depth] { return QX_NewEffectWorld(w, 9, d, 0, 1, &record); };
        EXPECT_EQ(short_of_memory(nth, create), 4);
        ASSERT_EQ(reports.all().size(), 1u);
        const std::string frame = std::to_string(width) + " x 9 @ " + std::to_string(depth) + " bpc";
        EXPECT_EQ(reports.last_text(), nth == 1 ? "out of memory" : no_memory(frame))
            << "the first allocation is the object";
        EXPECT_EQ(record.width, 77) << "the record stays as it was";
        EXPECT_TRUE(blocks_in_use() == before && qx::live_world_count() == live);
    }
}

TEST(WorldMemory, BlocksGoHome) {
    const auto before = blocks_in_use();
    const std::int32_t live = qx::live_world_count();
    for (const auto& [own, other] : {std::pair{1000, 4}, {4, 1000}}) {  // frees by too small and too large a size
        World a(QX_World::New(own, 150, 8, 0));
        const World b(QX_World::New(other, 150, 8, 0));
        a->ReReference(b.get(), {0, 0, 2, 2});
        EXPECT_FALSE(a->IsReference());
        EXPECT_EQ(a->rowbytes, b->rowbytes);
        EXPECT_TRUE(own > other || !a->SubWorldSafetyGutterHasBeenOverWritten());  // looks at no memory of others
        a.reset();
    }
    EXPECT_TRUE(blocks_in_use() == before && qx::live_world_count() == live);
    // Of a block that is given up its taker is in charge.
    World w(QX_World::New(8, 2, 32, 0));
    void* block = static_cast<std::byte*>(w->data);
    EXPECT_EQ(qx::live_world_count(), live + 1);
    w->GiveUpAllocation();
    EXPECT_TRUE(w->IsReference());
    EXPECT_EQ(qx::live_world_count(), live);
    w->GiveUpAllocation();  // nothing more to give
    w.reset();
    EXPECT_EQ(qx::live_world_count(), live);
    BM_FreeFrame(block, 1);  // blocks of this host are aligned, so that pixels begin where the block does
    EXPECT_EQ(blocks_in_use(), before);
}

TEST(WorldMemory, ADestroyedWorldIsMarkedDead) {
    using Wrapper = QX_WorldX<QX_Pixel8>;
    alignas(Wrapper) std::byte room[sizeof(Wrapper)];
    std::uint32_t pixel = 0;
    QX_LayerDef record{};
    record.data = &pixel, record.width = record.height = 1, record.rowbytes = 4;
    auto* world = new (static_cast<void*>(room)) Wrapper(&record, false);
    const std::ptrdiff_t at = reinterpret_cast<std::byte*>(&world->ownership_mark) - room;
    EXPECT_EQ(world->ownership_mark, 0u);
    world->~Wrapper();
    std::uint32_t mark = 0;
    std::memcpy(&mark, room + at, sizeof mark);
    EXPECT_EQ(mark, 0xDEADu);
    EXPECT_EQ(record.ownership_mark, 0u) << "the caller's record is not touched";
}

TEST(EffectWorld, IsMadeAndDisposedByItsRecord) {
    expect_refused({{[] { return QX_NewEffectWorld(4, 4, 8, 0, 0, nullptr); }, "invalid parameter", 516, 0x250002},
                    {[] { return QX_DisposeEffectWorld(nullptr); }, "invalid parameter", 516, 0x250003}});
    const Reports reports;
    QX_LayerDef record{};
    for (const int depth : {0, 9, 65536 + 8, -8}) EXPECT_EQ(QX_NewEffectWorld(4, 4, depth, 0, 0, &record), 3) << depth;
    ASSERT_EQ(QX_NewEffectWorld(5, 3, 16, 0, 1, &record), 0);
    EXPECT_EQ(record.world_flags, 0x01000001u);
    EXPECT_EQ(record.rowbytes, 48);
    EXPECT_EQ(static_cast<QX_Pixel16*>(record.data)[2].blue, 0);
    record.ownership_mark = 0;
    EXPECT_EQ(QX_DisposeEffectWorld(&record), 516);
    EXPECT_EQ(reports.last_text(), "effects modules should only dispose worlds they have allocated");
    EXPECT_NE(record.data, nullptr);
    record.ownership_mark = kQX_OwnedMark;
    EXPECT_EQ(QX_DisposeEffectWorld(&record), 0);
    const QX_LayerDef zero{};
    EXPECT_EQ(std::memcmp(&record, &zero, sizeof zero), 0);
    EXPECT_EQ(QX_NewEffectWorld(4, 4, 8, 1, 0, &record), 515);
    BadWorlds bad;
    bad.gpu.ownership_mark = kQX_OwnedMark;
    EXPECT_EQ(QX_DisposeEffectWorld(&bad.gpu), 0);
}

TEST(World, UncheckedRectanglesMayHaveAnyEdges) {
    const World w(QX_World::New(4, 4, 8, 1));
    for (const M_LRect& r : {M_LRect{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, {INT32_MAX, 0, INT32_MIN, 1}}) {
        const World part(QX_World::NewReference(w.get(), r));
        const World rest(QX_World::NewReference(part.get(), r));
        const auto wrapped = static_cast<std::int32_t>(std::int64_t{r.right} - r.left);  // modulo 2^32
        EXPECT_EQ(part->width, wrapped);
    }
    QX_LayerDef nothing{};
    const World empty(QX_World::NewReference(&nothing));
    const World part(QX_World::NewReference(empty.get(), M_LRect{1, 1, 2, 2}));
    EXPECT_EQ(part->width, 1);
}

}  // namespace
