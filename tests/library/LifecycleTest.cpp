// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_Slots.h"
#include "tests/support/Test.h"

#include <optional>

namespace {

using namespace qx::test;

std::vector<void*> table() { return std::vector<void*>(QXp_G_OverFuncs, QXp_G_OverFuncs + kQX_SlotCount); }

TEST(Slots, AreFilledAsTheListSays) {
    bool has_routine[kQX_SlotCount] = {};
    using namespace qx;
#define X(number, name, type) has_routine[number] = !std::is_same_v<type, NoRoutine>;
    QX_SLOTS(X)
#undef X
    for (const auto& [bands, level] : each(std::array{1, 32}, kLevels)) {
        const Born born(bands, level);
        ASSERT_EQ(born.code(), 0);
        for (int i = 0; i < kQX_SlotCount; ++i) {
            EXPECT_EQ(QXp_G_OverFuncs[i] != nullptr, has_routine[i]) << "slot " << i << ", " << bands << " bands";
        }
    }
}

/// Exported names that go through a slot, called with nothing.
template <auto Routine>
constexpr auto kWithNothing =
    []<class R, class... Args>(R (*)(Args...)) { return +[] { return int{Routine(Args{}...)}; }; }(Routine);
const Cases<Text, int (*)()> kForwarders = {{"transfer", kWithNothing<&QX_TransferRect>},
                                            {"premultiply", kWithNothing<&QX_PremulRect>},
                                            {"iterate", kWithNothing<&QX_Iterate>},
                                            {"iterate from an origin", kWithNothing<&QX_IterateOrigin>},
                                            {"iterate a table", kWithNothing<&QX_IterateLUT>},
                                            {"iterate anything", kWithNothing<&QX_IterateGeneric>},
                                            {"draft copy", kWithNothing<&QX_CopyBits_Draft>},
                                            {"copy", kWithNothing<&QX_CopyBits_HQ_Straight>},
                                            {"premultiplied copy", kWithNothing<&QX_CopyBits_HQ_Premul>},
                                            {"sample", kWithNothing<&QX_SubpixelSampleNoClip_Straight>},
                                            {"area", kWithNothing<&QX_AreaSample_Straight>},
                                            {"deep area", kWithNothing<&QX_AreaSample_Straight16>},
                                            {"row matte", kWithNothing<&QX_BlackMatte>},
                                            {"open", kWithNothing<&QX_OpenDestination>},
                                            {"close", kWithNothing<&QX_CloseDestination>}};

TEST(Slots, AreToldAndNotCalledWhereTheyAreEmpty) {
    for (const bool born : {false, true}) {  // a table that nobody has filled, and one that a host has emptied
        const std::optional<Born> library = born ? std::optional<Born>(std::in_place, 4) : std::nullopt;
        std::fill_n(QXp_G_OverFuncs, kQX_SlotCount, nullptr);
        for (const auto& [name, call] : kForwarders) {
            Reports reports;
            EXPECT_EQ(call(), 3) << name;
            EXPECT_EQ(reports.all().size(), 1u) << name;
        }
    }
}

TEST(Slots, BandsReplaceTheirRoutinesOnlyAndNoneWithoutACount) {
    const auto table_of = [](int bands, int code) {
        const Born born(bands);
        EXPECT_EQ(born.code(), code);
        return table();
    };
    const std::vector<void*> plain = table_of(1, 0), banded = table_of(2, 0);
    for (std::size_t i = 0; i < kQX_SlotCount; ++i) {
        EXPECT_EQ(banded[i] != plain[i], listed(std::array{32, 42, 43, 51, 52, 53}, static_cast<int>(i))) << i;
    }
    standalone::SetThreadCountError(44);
    EXPECT_EQ(table_of(8, 44), plain);
    standalone::SetThreadCountError(0);
}

TEST(Slots, OverrideReachesOneTo117) {
    const Born born;
    const std::vector<void*> before = table();
    int mark = 0;
    for (const int bad : {-1, 0, 118, 1000}) EXPECT_EQ(QX_SetOverrideFunc(bad, &mark), 3);
    EXPECT_EQ(table(), before);
    for (const int good : {1, 42, 117}) {
        EXPECT_EQ(QX_SetOverrideFunc(good, &mark), 0);
        EXPECT_EQ(QXp_G_OverFuncs[good], &mark);
        EXPECT_EQ(QX_SetOverrideFunc(good, nullptr), 0);
        EXPECT_EQ(QXp_G_OverFuncs[good], nullptr);
    }
}

TEST(Birth, ARegistryErrorIsTheResult) {
    standalone::SetRegistryError(77);
    const Born born(8);
    standalone::SetRegistryError(0);
    EXPECT_EQ(born.code(), 77);
    EXPECT_NE(QXp_G_OverFuncs[53], nullptr) << "the steps before it are done";
}

/// Every allocation of a start fails once, the host's and the runtime's; nothing is left behind.
TEST(Birth, AFailedStartLeaksNothing) {
    { const Born settled(4); }  // what the host keeps for good is there now
    const Reports reports;
    const std::int64_t blocks = blocks_in_use();
    int failures = 0;
    for (const auto& [in_host, nth] : places(2, 60)) {
        SCOPED_TRACE(testing::Message() << nth + 1 << (in_host != 0 ? " of the host" : " of the runtime"));
        in_host != 0 ? standalone::FailAllocation(nth + 1) : NewCounter::fail(nth + 1);
        standalone::SetBandCount(4);
        const int code = QX_Birth();
        standalone::FailAllocation(0);
        NewCounter::fail(0);
        EXPECT_TRUE(code == 0 || code == 4) << code;
        failures += code == 4 ? 1 : 0;
        QX_Death();
        EXPECT_EQ(blocks_in_use(), blocks);
    }
    standalone::SetBandCount(32);
    EXPECT_GE(failures, 10) << "three rows and seven buffers";
}

TEST(Life, LogsItsMilestonesAndKeepsTheTableOfRoutines) {
    std::string lines;
    std::vector<void*> born_table;
    standalone::SetLogSink([&](int level, const std::string& line) { lines += level == 10 ? line + '\n' : ""; });
    {
        const Born born(4);
        born_table = table();
    }
    standalone::SetLogSink({});
    EXPECT_EQ(table(), born_table);
    const auto birth = lines.find("QX Birth"), death = lines.find("QX Death");
    EXPECT_TRUE(birth < death && death < lines.size() && std::count(lines.begin(), lines.end(), '\n') == 2) << lines;
}

TEST(Life, FreeUpSomeMemoryShrinksTheScratch) {
    const Born born;
    QX_ScratchBlock grown{}, again{};
    ASSERT_EQ(QXp_ReallocScratch(5000, 4, false, &grown), 0);
    ASSERT_EQ(QXp_ReallocScratch(4000, 4, false, &again), 0);
    EXPECT_EQ(again.mask_row, grown.mask_row) << "wide enough as it is";
    const std::int64_t blocks = blocks_in_use(), made = standalone::Memory().allocations;
    EXPECT_EQ(QX_FreeUpSomeMemory(), 0);
    EXPECT_EQ(standalone::Memory().allocations, made + 3) << "new rows whatever their size was";
    EXPECT_EQ(blocks_in_use(), blocks);
    EXPECT_EQ(QXp_ReallocScratch(1025, 1, false, &again), 0);
    EXPECT_EQ(standalone::Memory().allocations, made + 6) << "grows from 1024 pixels again";

    const Reports reports;
    for (int nth = 1; nth <= 3; ++nth) EXPECT_EQ(short_of_memory(nth, QX_FreeUpSomeMemory), 4);
    EXPECT_EQ(blocks_in_use(), blocks);
}

}  // namespace
