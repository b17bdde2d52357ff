// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/multiprocess/MultiProcess.h"

#include <new>

#include "opticalflow/src/MultiProcessor.h"
#include "platform/TK_Suites.h"
#include "tests/support/Test.h"

namespace qx::test {
namespace {

namespace of = solvan_of;

/// A worker that runs out of memory while the host is asked is not forgotten over the host's answer.
TEST(FlowParts, WantOfMemoryOutlivesAPoll) {
    of::InterruptState state;
    state.data = &state;
    state.poll = [](void* self) {
        static_cast<of::InterruptState*>(self)->stop(4);
        return 0;
    };
    EXPECT_EQ(of::checkInterrupt(state, 0), 4);
    EXPECT_TRUE(state.is_stopped());
}

/// Whatever tells of it, want of memory in a part is code 4.
TEST(FlowParts, WorkersTellWantOfMemory) {
    const Reports reports;
    const auto code_after = [](of::PartFunction work) {
        of::InterruptState state;
        EXPECT_TRUE(of::runOnAllProcessors(state, work, 0, nullptr));
        return state.current_code();
    };
    EXPECT_EQ(code_after(reinterpret_cast<of::PartFunction>(+[](int) { throw 4; })), 4);
    EXPECT_EQ(code_after(reinterpret_cast<of::PartFunction>(+[](int) { throw std::bad_alloc(); })), 4);
}

TEST(FlowParts, RowsAreSharedOut) {
    for (const int parts : {1, 2, 7, 32}) {
        for (int rows = 0; rows < 70; ++rows) {
            int at = 0;
            for (int part = 0; part < parts; ++part) {
                const of::PartRows mine = of::rows_of_part(rows, part, parts);
                EXPECT_EQ(mine.begin, at);
                EXPECT_LE(mine.end - mine.begin, (rows + parts - 1) / parts);
                at = mine.end;
            }
            EXPECT_EQ(at, rows);
        }
    }
    for (const auto& [part, parts] : {std::pair{-1, 4}, {2, 0}}) EXPECT_EQ(of::rows_of_part(9, part, parts).end, 9);
}

/// The index comes behind the arguments, of which there are six at most; a negative number is none.
TEST(FlowParts, ArgumentsComeBeforeTheIndex) {
    static std::atomic<std::intptr_t> sum;
    using I = std::intptr_t;
    const Cases<int, of::PartFunction> cases = {
        {-1, reinterpret_cast<of::PartFunction>(+[](int) { sum += 1; })},
        {0, reinterpret_cast<of::PartFunction>(+[](int) { sum += 1; })},
        {2, reinterpret_cast<of::PartFunction>(+[](I a, I b, int) { sum += a + b; })},
        {6,
         reinterpret_cast<of::PartFunction>(+[](I a, I b, I c, I d, I e, I f, int) { sum += a + b + c + d + e + f; })},
        {7,
         reinterpret_cast<of::PartFunction>(+[](I a, I b, I c, I d, I e, I f, int) { sum += a + b + c + d + e + f; })}};
    const I arguments[] = {1, 2, 4, 8, 16, 32, 64}, sums[] = {1, 1, 3, 63, 63};
    for (const int bands : {1, 5}) {
        standalone::SetBandCount(bands);
        of::forgetProcessorCount();
        for (std::size_t i = 0; i < cases.size(); ++i) {
            of::InterruptState state;
            sum = 0;
            EXPECT_TRUE(of::runOnAllProcessors(state, std::get<1>(cases[i]), std::get<0>(cases[i]), arguments));
            EXPECT_EQ(sum, bands * sums[i]) << i;
        }
    }
    standalone::SetBandCount(32);
    of::forgetProcessorCount();
}

TEST(FlowParts, MessagesAreShownOnce) {
    of::forgetShownMessages();
    const Reports reports;
    for (int round = 0; round < 2; ++round) {
        of::InterruptState state;
        of::runOnAllProcessors(state, reinterpret_cast<of::PartFunction>(+[](int) { throw 4; }), 0, nullptr);
        of::keepBasicSuite(nullptr);
        EXPECT_EQ(code_of([] { of::iterateSuite(); }), 516);
    }
    ASSERT_EQ(reports.all().size(), 2u);
    for (const auto& [i, text] : {std::pair{0u, "Out of memory in Solvan optical flow library."},
                                  {1u, "Missing suite in Solvan-related code."}}) {
        EXPECT_EQ(reports.all()[i].kind, standalone::ReportKind::assertion);
        EXPECT_EQ(reports.all()[i].text.find(text), 0u) << reports.all()[i].text;
        EXPECT_NE(reports.all()[i].text.find("opticalflow/src/multiprocess"), std::string::npos);
    }
    EXPECT_NE(reports.all()[0].text.find("RunThread"), std::string::npos);
    EXPECT_NE(reports.all()[1].text.find(":134"), std::string::npos);
}

TEST(FlowParts, SuitesAreAskedForByName) {
    static std::string asked;
    static const int iterates = 0;
    QSBasicSuite basic{};
    basic.AcquireSuite = [](const char* name, int version, const void** suite) {
        asked = name + std::to_string(version);
        *suite = &iterates;
        return 0;
    };
    of::keepBasicSuite(&basic);
    EXPECT_EQ(static_cast<const void*>(of::iterateSuite()), &iterates);
    EXPECT_EQ(asked, "QX Iterate8 Suite1");
    const Reports reports;
    of::forgetShownMessages();
    basic.AcquireSuite = [](const char*, int, const void**) { return 9; };
    EXPECT_EQ(code_of([] { of::iterateSuite(); }), 9);
    of::keepBasicSuite(nullptr);
}

/// Its slots in their order, parts on all processors or one alone.
TEST(FlowParts, ProcessorsShareOutPasses) {
    struct Counter : of::FnMultiProcessor {
        using FnMultiProcessor::FnMultiProcessor;
        void initialise() override { slots += 'i'; }
        void processPart(int) override { ++parts; }
        void finish() override { slots += 'f'; }
        void prePass() override { slots += '('; }
        void postPass() override { slots += ')'; }
        std::string slots;
        std::atomic<int> parts{0};
    };
    for (const bool parallel : {false, true}) {
        of::InterruptState state;
        Counter counter(state);
        counter.set_parallel(parallel);
        counter.set_pass_count(3);
        counter.process();
        EXPECT_EQ(counter.slots, "i()()()f");
        EXPECT_EQ(counter.parts, 3 * (parallel ? of::processorCount() : 1));
    }
}

/// Both polls, of which the thread-safe one goes first; none from another part, or once stopped.
TEST(FlowParts, PollsAreAskedFromTheFirstPart) {
    of::InterruptState state;
    static int asked;
    asked = 0;
    state.poll = [](void*) { return ++asked == 2 ? 77 : 0; };
    for (const int part : {1, 31, -1}) EXPECT_EQ(of::checkInterrupt(state, part), 0);
    EXPECT_EQ(asked, 0);
    for (const int code : {0, 77, 77, 77}) EXPECT_EQ(of::checkInterrupt(state, 0), code);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(of::checkInterrupt(state, 5), 77);
    of::InterruptState other;
    other.poll = state.poll;
    other.threadSafePoll = [](void*, std::int32_t* code, int zero) {
        EXPECT_EQ(zero, 0);
        *code = 12;
        return 1;
    };
    EXPECT_EQ(of::checkInterrupt(other, 0), 12);
    EXPECT_EQ(asked, 2);
}

}  // namespace
}  // namespace qx::test
