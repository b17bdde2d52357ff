// SPDX-License-Identifier: Apache-2.0
#include "tests/iterate/IterateSupport.h"

namespace {

using namespace qx::test;

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
    /// Each index was called once, in parts of equal size, of which the last has the rest too and the first ran here.
    void expect_parts(int bands, int total) {
        const int parts = std::min(bands, total), size = std::max(1, total / bands);
        std::sort(calls.begin(), calls.end(), [](const Call& a, const Call& b) { return a.i < b.i; });
        ASSERT_EQ(calls.size(), static_cast<std::size_t>(total));
        for (int i = 0; i < total; ++i) {
            const Call& call = calls[static_cast<std::size_t>(i)];
            EXPECT_TRUE(call.i == i && call.total == total && call.thread_index == std::min(i / size, parts - 1)) << i;
            EXPECT_TRUE(call.thread_index != 0 || call.on == std::this_thread::get_id());
        }
    }
};

/// Any order of the tasks, and any of them on the calling thread.
TEST(GenericSplit, EveryPartOnceAndPartZeroOnTheCallingThread) {
    const Born born(4);
    std::mt19937 random(3);
    for (int round = 0; round < 1200; ++round) {
        const int iterations = std::array{-1, 1, 2, 4, 7, 10}[round % 6];
        ChosenOrder chosen{{0, 1, 2, 3, 4}, {}};
        std::shuffle(chosen.order.begin(), chosen.order.end(), random);
        const auto share = random() % 4;  // from none to all of them
        for (int i = 0; i < 5; ++i) {
            if (random() % 3 < share) chosen.on_caller.insert(i);
        }
        const WithExecutor executor(chosen);
        Recorder recorder;
        EXPECT_EQ(QX_IterateGeneric(iterations, &recorder, &Recorder::note), 0);
        recorder.expect_parts(4, iterations == -1 ? 4 : iterations);
        if (HasFailure())
            FAIL() << iterations << " in the order " << testing::PrintToString(chosen.order) << ", on the caller "
                   << testing::PrintToString(chosen.on_caller);
    }
}

TEST(GenericSplit, TheExtraTaskTakesTheParkedPartToItsOwnThread) {
    const Born born(4);
    const WithExecutor executor(ChosenOrder{{2, 4, 1, 3}, {2}});
    Recorder recorder;
    EXPECT_EQ(QX_IterateGeneric(4, &recorder, &Recorder::note), 0);
    recorder.expect_parts(4, 4);
    EXPECT_NE(recorder.calls[2].on, std::this_thread::get_id());
}

TEST(GenericSplit, OnThePool) {
    for (const int bands : {2, 7, 32}) {
        const Born born(bands);
        for (int iterations = 2; iterations < 100; iterations += 3) {
            SCOPED_TRACE(testing::Message() << iterations << " in " << bands);
            Recorder recorder;
            EXPECT_EQ(QX_IterateGeneric(iterations, &recorder, &Recorder::note), 0);
            recorder.expect_parts(bands, iterations);
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
        for (const int iterations : {-1, 0, 1, 9}) {
            expect_refused(
                {{[=] { return QX_IterateGeneric(iterations, nullptr, nullptr); }, kBadParameter, 3, 0x250000 | 70}});
        }
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
    ASSERT_EQ(recorder.calls.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(recorder.calls[static_cast<std::size_t>(i)].i, i);
    Recorder once;
    EXPECT_EQ(QX_IterateGeneric_Static(-1, &once, &Recorder::note), 0);
    once.expect_parts(1, 1);
}

}  // namespace
