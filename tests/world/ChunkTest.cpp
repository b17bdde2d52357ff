// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

constexpr const char* kInvalid = "invalid parameter";
constexpr const char* kNoBlock = "out of memory: out of memory for channel chunk";
constexpr std::uint32_t kTypes[] = {kQX_ChunkDouble, kQX_ChunkFixed,      kQX_ChunkFloat, kQX_ChunkLong,
                                    kQX_ChunkRGB,    kQX_ChunkRGBSwapped, kQX_ChunkShort, 0x12345678};

/// A record whose bytes are none that a routine would write.
QX_ChannelChunk scribbled() {
    QX_ChannelChunk chunk;
    std::memset(&chunk, 0x5A, sizeof chunk);
    return chunk;
}
bool same(const QX_ChannelChunk& a, const QX_ChannelChunk& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
auto fields(const QX_ChannelChunk& c) {
    return std::tuple(c.width, c.height, c.dimension, c.row_bytes, c.data_type, c.handle, c.data);
}

class Chunks : public testing::Test {
protected:
    Born born;
    Reports reports;
    std::int64_t blocks = blocks_in_use();

    ~Chunks() override {
        EXPECT_EQ(blocks_in_use(), blocks);
        EXPECT_EQ(qx::live_chunk_count(), 0);
    }
};

TEST_F(Chunks, AreBornClearedAndLocked) {
    for (const auto& [type, bytes] : {std::pair{kQX_ChunkFloat, 4}, {kQX_ChunkRGB, 3}, {kQX_ChunkUnsignedShort, 2}}) {
        QX_ChannelChunk chunk = scribbled();
        ASSERT_EQ(QX_NewChunk(10, 5, 3, type, &chunk), 0);
        EXPECT_TRUE(chunk.width == 10 && chunk.height == 5 && chunk.dimension == 3 && chunk.data_type == type);
        EXPECT_EQ(chunk.row_bytes, 30 * bytes);
        EXPECT_EQ(TK_GetHandleSize(chunk.handle), static_cast<std::size_t>(150 * bytes));
        EXPECT_TRUE(chunk.data != nullptr && chunk.data == *chunk.handle);
        const auto* first = static_cast<const std::uint8_t*>(chunk.data);
        EXPECT_EQ(std::count(first, first + 150 * bytes, 0), 150 * bytes);
        EXPECT_EQ(qx::live_chunk_count(), 1);
        EXPECT_EQ(QX_DisposeChunk(&chunk), 0) << "while it is locked";
        EXPECT_TRUE(same(chunk, {}));
        EXPECT_TRUE(QX_DisposeChunk(&chunk) == 0 && qx::live_chunk_count() == 0) << "of nothing";
    }
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(Chunks, LockingTwiceIsFineUnlockingTwiceIsNot) {
    QX_ChannelChunk chunk{};
    ASSERT_EQ(QX_NewChunk(4, 4, 1, kQX_ChunkDouble, &chunk), 0);
    const TK_Handle handle = chunk.handle;
    EXPECT_EQ(QX_UnlockChunk(&chunk), 0);
    EXPECT_TRUE(chunk.data == nullptr && chunk.handle == handle);
    expect_refused({{[&] { return QX_UnlockChunk(&chunk); }, kInvalid, 516}});
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(QX_LockChunk(&chunk), 0);
        EXPECT_EQ(chunk.data, *handle);
        chunk.data = &chunk;  // taken from the handle again
    }
    EXPECT_EQ(standalone::Memory().handle_locks, 0);
    EXPECT_EQ(QX_DisposeChunk(&chunk), 0);
}

TEST_F(Chunks, RefusalsChangeNothing) {
    QX_ChannelChunk chunk = scribbled(), none{};
    for (const auto& [width, height, dimension] :
         {std::array{0, 5, 3}, {10, 0, 3}, {10, 5, 0}, {-1, 5, 3}, {1, 1, INT_MIN}}) {
        expect_refused(
            {{[&, w = width, h = height, d = dimension] { return QX_NewChunk(w, h, d, 0, &chunk); }, kInvalid, 516}});
    }
    EXPECT_TRUE(same(chunk, scribbled()));
    expect_refused({{[] { return QX_NewChunk(1, 1, 1, 0, nullptr); }, kInvalid, 516},
                    {[] { return QX_LockChunk(nullptr); }, kInvalid, 516},
                    {[&] { return QX_LockChunk(&none); }, kInvalid, 516},
                    {[] { return QX_UnlockChunk(nullptr); }, kInvalid, 516},
                    {[&] { return QX_UnlockChunk(&none); }, kInvalid, 516},
                    {[] { return QX_DisposeChunk(nullptr); }, kInvalid, 516},
                    {[] { return QX_ChunkDataSize(kQX_ChunkRGB, nullptr); }, kInvalid, 516}});
    EXPECT_TRUE(same(none, {}));
}

/// A row fits 31 bits, or it is out of memory; sizes do not wrap, though three of them pass 64 bits.
TEST_F(Chunks, WhatCannotBeHadIsOutOfMemory) {
    const Cases<int, int, int, std::uint32_t, int> sizes = {{INT_MAX, INT_MAX, INT_MAX, kQX_ChunkDouble, 0},
                                                            {INT_MAX, INT_MAX, 1, 0, INT_MAX},
                                                            {INT_MAX / 8 + 1, 1, 1, kQX_ChunkDouble, 0},
                                                            {1 << 16, 1, 1 << 16, kQX_ChunkDouble, 0},
                                                            {INT_MAX / 3 + 1, 1, 1, kQX_ChunkRGB, 0},
                                                            {1 << 30, INT_MAX, 1, kQX_ChunkFloat, 0},
                                                            {INT_MAX / 8, INT_MAX, 1, kQX_ChunkDouble, INT_MAX - 7}};
    for (const auto& [width, height, dimension, type, row_bytes] : sizes) {
        standalone::FailAllocation(1);  // a machine may have what passes
        QX_ChannelChunk chunk = scribbled();
        reports.clear();
        EXPECT_EQ(QX_NewChunk(width, height, dimension, type, &chunk), 4);
        standalone::FailAllocation(0);
        const QX_ChannelChunk left{width, height, dimension, row_bytes, type, nullptr, nullptr};
        EXPECT_EQ(fields(chunk), fields(left));
        ASSERT_EQ(reports.all().size(), 1u);
        EXPECT_EQ(reports.last_text(), kNoBlock);
        EXPECT_EQ(QX_DisposeChunk(&chunk), 0);
    }
    QX_ChannelChunk wide{};
    EXPECT_EQ(QX_NewChunk(INT_MAX, 1, 1, kQX_ChunkShort, &wide), 4) << "without a failing allocation";
}

/// Each handle's bytes stay, some calls fail for memory, some chunks go while they are locked.
TEST_F(Chunks, TenThousandRandomCalls) {
    for (const std::uint64_t seed : seeds(2)) {
        SCOPED_TRACE(testing::Message() << "QX_SEEDS=" << seed);
        std::mt19937_64 random(seed);
        std::array<QX_ChannelChunk, 10> chunks{};
        std::array<bool, 10> locked{};
        for (int call = 0; call < 10000; ++call) {
            const std::size_t i = random() % chunks.size();
            QX_ChannelChunk& chunk = chunks[i];
            const bool has = chunk.handle != nullptr;
            switch (random() % 4) {
                case 0: {
                    if (has) break;
                    const bool fails = random() % 4 == 0;
                    const auto side = [&] { return static_cast<int>(1 + random() % 30); };
                    standalone::FailAllocation(fails ? 1 : 0);
                    ASSERT_EQ(QX_NewChunk(side(), side(), side() % 4 + 1, kTypes[random() % 8], &chunk), fails ? 4 : 0);
                    standalone::FailAllocation(0);
                    locked[i] = !fails;
                    if (!fails) std::memset(chunk.data, static_cast<int>(i), TK_GetHandleSize(chunk.handle));
                    break;
                }
                case 1:
                    ASSERT_EQ(QX_LockChunk(&chunk), has ? 0 : 516);
                    locked[i] = has;
                    break;
                case 2:
                    ASSERT_EQ(QX_UnlockChunk(&chunk), locked[i] ? 0 : 516);
                    locked[i] = false;
                    break;
                default:
                    if (has) {
                        const auto* bytes = static_cast<const std::uint8_t*>(*chunk.handle);
                        const auto size = static_cast<std::ptrdiff_t>(TK_GetHandleSize(chunk.handle));
                        ASSERT_EQ(std::count(bytes, bytes + size, i), size);
                    }
                    ASSERT_EQ(QX_DisposeChunk(&chunk), 0);
                    locked[i] = false;
            }
            ASSERT_EQ(chunk.data != nullptr, locked[i]);
            ASSERT_EQ(qx::live_chunk_count(),
                      std::count_if(chunks.begin(), chunks.end(), [](const auto& c) { return c.handle != nullptr; }));
        }
        for (QX_ChannelChunk& chunk : chunks) QX_DisposeChunk(&chunk);
    }
}

TEST(ChunkCount, StartsWithTheLibrary) {
    QX_ChannelChunk chunk{};
    {
        const Born before;
        ASSERT_EQ(QX_NewChunk(1, 1, 1, kQX_ChunkLong, &chunk), 0);
        EXPECT_EQ(qx::live_chunk_count(), 1);
    }
    {
        const Born born;
        EXPECT_EQ(qx::live_chunk_count(), 0);
        EXPECT_EQ(QX_DisposeChunk(&chunk), 0);
        EXPECT_EQ(qx::live_chunk_count(), -1) << "of a chunk from before";
    }
    const Born after;
    EXPECT_EQ(qx::live_chunk_count(), 0);
}

TEST_F(Chunks, DestinationsGoThroughTheirSlots) {
    int here = 0;
    QX_Destination out{&out, {&out, &out, &out}};
    EXPECT_EQ(QX_OpenDestination(&here, this, &out), 0);
    EXPECT_TRUE(out.destination == &here && std::count(out.reserved, out.reserved + 3, nullptr) == 3);
    EXPECT_EQ(QX_CloseDestination(&out), 0);
    EXPECT_EQ(out.destination, nullptr);
    expect_refused({{[&] { return QX_OpenDestination(&here, nullptr, nullptr); }, kInvalid, 516},
                    {[] { return QX_CloseDestination(nullptr); }, kInvalid, 516}});
    qx::set_slot<qx::Slot::OpenDestination>([](auto, auto, auto) { return 45; });
    qx::set_slot<qx::Slot::CloseDestination>([](auto) { return 46; });
    EXPECT_EQ(QX_OpenDestination(&here, nullptr, &out), 45);
    EXPECT_EQ(QX_CloseDestination(&out), 46);
}

}  // namespace
