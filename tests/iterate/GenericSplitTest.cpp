// SPDX-License-Identifier: Apache-2.0
#include "tests/iterate/IterateSupport.h"

namespace {

using namespace qx::test;

using Parts = std::vector<std::pair<int, int>>;  // start and count
struct Call {
    int thread_index, i, total;
    std::thread::id on;
};

/// Notes the calls of one generic iteration.
struct Recorder {
    std::mutex lock{};
    std::vector<Call> calls{};
    int fail_at = -1, code = 0;
    bool throws = false;

    static int note(void* refcon, std::int32_t thread_index, std::int32_t i, std::int32_t total) {
        auto& self = *static_cast<Recorder*>(refcon);
        const std::scoped_lock hold(self.lock);
        self.calls.push_back({thread_index, i, total, std::this_thread::get_id()});
        if (i == self.fail_at && self.throws) throw self.code;
        return i == self.fail_at ? self.code : 0;
    }
    /// Once each index was seen to be called once.
    Parts parts() {
        std::sort(calls.begin(), calls.end(), [](const Call& a, const Call& b) { return a.i < b.i; });
        Parts result;
        for (std::size_t k = 0; k < calls.size(); ++k) {
            EXPECT_EQ(calls[k].i, static_cast<int>(k));
            if (k == 0 || calls[k].thread_index != calls[k - 1].thread_index) {
                EXPECT_EQ(calls[k].thread_index, static_cast<int>(result.size()));
                result.emplace_back(calls[k].i, 0);
            }
            ++result.back().second;
        }
        return result;
    }
};

/// Columns: iterations, parts, total
const Cases<int, Parts, int> kShapesOfFour = {
    {-1, {{0, 1}, {1, 1}, {2, 1}, {3, 1}}, 4}, {10, {{0, 2}, {2, 2}, {4, 2}, {6, 4}}, 10}, {2, {{0, 1}, {1, 1}}, 2},
    {4, {{0, 1}, {1, 1}, {2, 1}, {3, 1}}, 4},  {7, {{0, 1}, {1, 1}, {2, 1}, {3, 4}}, 7},   {1, {{0, 1}}, 1},
};

TEST(GenericSplit, EveryPartOnceAndPartZeroOnTheCallingThread) {
    const std::pair<const char*, ChosenOrder> orders[] = {
        {"all on the caller", {{}, {}, true}},
        {"all on the caller, backwards", {{4, 3, 2, 1, 0}, {}, true}},
        {"the caller draws nothing", {}},
        {"the caller draws nothing, backwards", {{4, 3, 2, 1, 0}, {}}},
        {"the caller draws only 3", {{0, 1, 2, 3}, {3}}},
        {"the caller draws 0 first", {{0, 1, 2}, {0, 2}}},
        {"the caller draws 0 after it parked 2", {{2, 1, 0, 3}, {2, 0}}},
        {"the caller draws 0 after the parked part was taken", {{2, 4, 0, 3}, {2, 0}}},
        {"the extra task before the caller draws", {{4, 2, 1, 0}, {1, 2}}},
        {"the caller parks the extra task", {{4, 1, 0}, {4, 0, 3}}},
        {"the caller parks the extra task and draws no more", {{4, 3, 2, 1, 0}, {4}}},
        {"the caller takes back its own", {{1, 4, 2, 0}, {1, 4}}},
    };
    const Born born(4);
    for (const auto& [named, shape] : each(orders, kShapesOfFour)) {
        const auto& [iterations, parts, total] = shape;
        SCOPED_TRACE(testing::Message() << named.first << ", " << iterations << " iterations");
        const WithExecutor executor(named.second);
        Recorder recorder;
        EXPECT_EQ(QX_IterateGeneric(iterations, &recorder, &Recorder::note), 0);
        EXPECT_EQ(recorder.parts(), parts);
        for (const Call& call : recorder.calls) {
            EXPECT_EQ(call.total, total);
            EXPECT_TRUE(call.thread_index != 0 || call.on == std::this_thread::get_id());
        }
    }
}

TEST(GenericSplit, TheExtraTaskTakesTheParkedPartToItsOwnThread) {
    const Born born(4);
    const WithExecutor executor(ChosenOrder{{2, 4, 1, 3}, {2}});
    Recorder recorder;
    EXPECT_EQ(QX_IterateGeneric(4, &recorder, &Recorder::note), 0);
    ASSERT_EQ(recorder.parts().size(), 4u);
    EXPECT_EQ(recorder.calls[0].on, std::this_thread::get_id());
    EXPECT_NE(recorder.calls[2].on, std::this_thread::get_id());
}

TEST(GenericSplit, OnThePool) {
    for (const int bands : {2, 7, 32}) {
        const Born born(bands);
        for (int iterations = 2; iterations < 100; iterations += 3) {
            SCOPED_TRACE(testing::Message() << iterations << " in " << bands);
            Recorder recorder;
            EXPECT_EQ(QX_IterateGeneric(iterations, &recorder, &Recorder::note), 0);
            EXPECT_EQ(recorder.parts().size(), static_cast<std::size_t>(std::min(bands, iterations)));
            EXPECT_EQ(recorder.calls.size(), static_cast<std::size_t>(iterations));
            EXPECT_EQ(recorder.calls.front().on, std::this_thread::get_id());
        }
    }
}

TEST(GenericSplit, AFailureEndsItAndNothingRemainingRuns) {
    const Born born(4);
    const WithExecutor executor(ChosenOrder{{1, 2, 3, 4, 0}, {}});
    for (const bool throws : {false, true}) {
        Recorder recorder;
        recorder.fail_at = 5, recorder.code = 517, recorder.throws = throws;
        EXPECT_EQ(QX_IterateGeneric(12, &recorder, &Recorder::note), 517);
        const auto& calls = recorder.calls;  // one share fails at its last; later ones and the remainder stay out
        EXPECT_TRUE(calls.size() == 3 && calls[0].i == 3 && calls[1].i == 4 && calls[2].i == 5);
    }
}

TEST(Generic, CountsAndCodesOfBothForms) {
    for (const int bands : {1, 4}) {
        SCOPED_TRACE(bands);
        const Born born(bands);
        Recorder recorder;
        for (const int iterations : {0, -2, INT32_MIN}) {
            EXPECT_EQ(QX_IterateGeneric(iterations, &recorder, &Recorder::note), 0);
        }
        EXPECT_TRUE(recorder.calls.empty());
        Reports reports;
        for (const int iterations : {-1, 0, 1, 9}) EXPECT_EQ(QX_IterateGeneric(iterations, nullptr, nullptr), 3);
        ASSERT_EQ(reports.all().size(), 4u);
        EXPECT_EQ(reports.all()[0].site, 0x250000 | 70);
        recorder.fail_at = 0, recorder.code = 21;
        EXPECT_EQ(QX_IterateGeneric(1, &recorder, &Recorder::note), 21);
        recorder.throws = true;
        EXPECT_EQ(QX_IterateGeneric(1, &recorder, &Recorder::note), 21);
    }
}

TEST(Generic, PlainRunsInOrderOnThisThread) {
    Recorder recorder;
    recorder.fail_at = 3, recorder.code = 9;
    EXPECT_EQ(QX_IterateGeneric_Static(6, &recorder, &Recorder::note), 9);
    EXPECT_EQ(recorder.parts(), (Parts{{0, 4}}));
    Recorder once;
    EXPECT_EQ(QX_IterateGeneric_Static(-1, &once, &Recorder::note), 0);
    ASSERT_EQ(once.calls.size(), 1u);
    EXPECT_EQ(once.calls[0].total, 1);
}

}  // namespace
