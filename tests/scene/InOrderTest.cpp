// SPDX-License-Identifier: Apache-2.0
// Things that are made at once and taken in order end as if they were made one after the other.
#include "scene/InOrder.h"

#include <thread>

#include "platform/standalone/Host.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::Stopped;
using qx::pictures::Watch;

constexpr int kCount = 60;

/// Makes the things and takes them. Thing `bad` fails while it is made, or in its turn; `later` fails while it is made.
struct Things {
    int bad = -1, later = -1;
    bool in_turn = false;
    List taken{};
    std::atomic<int> at_work{0}, most_at_work{0}, most_ahead{0}, turns{0};

    void go(int at_once, Watch& watch) {
        in_order(kCount, at_once, watch, [&](int index, Watch& own) -> InTurn {
            most_at_work = std::max<int>(most_at_work, ++at_work);
            most_ahead = std::max<int>(most_ahead, index - turns);
            for (int row = 0; row < index * 7 % 13; ++row, std::this_thread::yield()) own.rows(row, 13);
            --at_work;
            own.must_go_on();
            if (index == later || (index == bad && !in_turn)) throw index;
            return [this, index] {
                if (index == bad) throw index;
                taken.push_back(index);
                ++turns;
            };
        });
    }
};

TEST(InOrder, TakesAllBeforeTheFirstFaultAndNoneBehindIt) {
    for (const int threads : {1, 2, 7}) {
        standalone::SetPoolLimit(threads);
        for (const auto& [bad, later, in_turn] : {std::tuple{-1, -1, false},
                                                  {0, 1, false},
                                                  {0, 3, true},
                                                  {29, 30, false},
                                                  {29, 33, true},
                                                  {59, -1, true}}) {
            Things run{bad, later, in_turn};
            int fault = -1;
            try {
                run.go(threads, qx::pictures::unwatched());
            } catch (int index) {
                fault = index;
            }
            EXPECT_EQ(fault, bad);
            List expected;
            for (int i = 0; i < (bad < 0 ? kCount : bad); ++i) expected.push_back(i);
            EXPECT_EQ(run.taken, expected) << threads << " threads, bad " << bad;
            EXPECT_LE(run.most_at_work, threads);
            EXPECT_LT(run.most_ahead, 2 * threads);
        }
    }
    standalone::SetPoolLimit(0);
}

TEST(InOrder, ThingsOfAGroupAreMadeOneByOneAndDoNotWaitForEachOther) {
    std::vector<int> ends;
    for (int size = 1, end = 1; end <= kCount; end += size++) ends.push_back(end);
    const int count = ends.back();
    for (const int threads : {1, 3, 7}) {
        standalone::SetPoolLimit(threads);
        for (const int bad : {-1, 0, 13, count - 1}) {
            std::vector<std::atomic<int>> begun(ends.size());
            List taken;
            int fault = -1;
            try {
                in_order(ends, threads, qx::pictures::unwatched(), [&](int index, Watch&) -> InTurn {
                    const auto group = static_cast<std::size_t>(std::ranges::upper_bound(ends, index) - ends.begin());
                    const int first = group == 0 ? 0 : ends[group - 1];
                    EXPECT_TRUE(bad >= 0 || begun[group]++ == index - first) << index;
                    EXPECT_TRUE(threads > 1 || taken.size() == static_cast<std::size_t>(index)) << index;
                    std::this_thread::yield();
                    if (index == bad) throw index;
                    return [&taken, index] { taken.push_back(index); };
                });
            } catch (int index) {
                fault = index;
            }
            EXPECT_EQ(fault, bad);
            List expected;
            for (int i = 0; i < (bad < 0 ? count : bad); ++i) expected.push_back(i);
            EXPECT_EQ(taken, expected) << threads << " threads, bad " << bad;
        }
    }
    standalone::SetPoolLimit(0);
}

/// As with a disk that has room for one of them only.
TEST(InOrder, WhatCannotBeMadeBesideOthersIsMadeAlone) {
    standalone::SetPoolLimit(4);
    std::atomic<int> held{0};
    List taken, expected;
    in_order(kCount, 4, qx::pictures::unwatched(), [&](int index, Watch&) -> InTurn {
        auto one = std::shared_ptr<int>(new int(++held), [&](int* p) { --held, delete p; });
        std::this_thread::yield();
        if (*one > 1 && index % 3 == 0) throw index;
        return [&taken, index, one] { taken.push_back(index); };
    });
    for (int i = 0; i < kCount; ++i) expected.push_back(i);
    EXPECT_EQ(taken, expected);
    EXPECT_EQ(held, 0);
    standalone::SetPoolLimit(0);
}

TEST(InOrder, AStopReachesAllThatIsAtWork) {
    for (const int rows : {0, 1, 20, 200}) {
        CountingWatch watch(rows);
        Things run;
        EXPECT_THROW(run.go(4, watch), Stopped) << rows;
        for (std::size_t i = 0; i < run.taken.size(); ++i) EXPECT_EQ(run.taken[i], static_cast<double>(i));
    }
}

}  // namespace
