// SPDX-License-Identifier: Apache-2.0
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <numeric>
#include <system_error>

#include "platform/TK_CPU.h"
#include "platform/tesselcore_Threads.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;
using tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors;
using tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessorsWithProcessorIndex;

TEST(Threads, BandsAreFixedAndCanBeSet) {
    std::int32_t n = 0;
    EXPECT_TRUE(TK_GetNumThreads(&n) == 0 && n == 32);
    standalone::SetBandCount(0);
    EXPECT_EQ(standalone::BandCount(), 1);
    standalone::SetBandCount(7);
    EXPECT_TRUE(TK_GetNumThreads(&n) == 0 && n == 7);
    const auto executor = tesselcore::threads::GetCPUBoundExecutor();
    standalone::SetBandCount(32);
    EXPECT_EQ(executor->NumberOfProcessors(), 7);
    EXPECT_EQ(tesselcore::threads::GetCPUBoundExecutor()->NumberOfProcessors(), 32);
    standalone::SetThreadCountError(44);
    EXPECT_TRUE(TK_GetNumThreads(&n) == 44 && n == 7);
    standalone::SetThreadCountError(0);
}

/// Plain memory, so that a missing hand-over between threads shows under ThreadSanitizer.
TEST(Threads, EveryIndexRunsOnceAndItsWritesAreSeen) {
    for (const auto& [limit, count] : each(std::array{1, 2, 7, 0}, std::array{0, 1, 2, 32, 1000})) {
        standalone::SetPoolLimit(limit);
        std::vector<int> runs(static_cast<std::size_t>(count)), before(runs.size(), 1);
        ExecuteCPUBoundTaskOnAllProcessors([&](int i) { runs.data()[i] += before.data()[i]; }, count);
        EXPECT_EQ(runs, before) << limit << " threads, " << count << " tasks";
    }
    ExecuteCPUBoundTaskOnAllProcessors([](int) { FAIL(); }, -1);
}

TEST(Threads, LimitHoldsAndIsReached) {
    for (const int limit : {1, 3}) {
        standalone::SetPoolLimit(limit);
        EXPECT_EQ(standalone::PoolThreads(), limit);
        std::atomic<int> inside{0}, most{0};
        const auto task = [&](int) {
            const int now = ++inside;
            for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) continue;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            --inside;
        };
        ExecuteCPUBoundTaskOnAllProcessors(task, 24);
        EXPECT_EQ(most, limit);
    }
    standalone::SetPoolLimit(0);
    EXPECT_GE(standalone::PoolThreads(), 1);
}

/// However fast the others are: a host's callbacks are asked on the thread of the call alone.
TEST(Threads, TheCallerTakesPart) {
    const auto caller = std::this_thread::get_id();
    for (int round = 0; round < 2000; ++round) {
        std::atomic<int> own{0};
        ExecuteCPUBoundTaskOnAllProcessors([&](int) { own += std::this_thread::get_id() == caller ? 1 : 0; }, 3);
        ASSERT_GT(own, 0) << "round " << round;
    }
}

TEST(Threads, OneOfTheExceptionsReachesTheCaller) {
    const auto throws_odd = [](int i) {
        if (i % 2 == 1) throw i;
    };
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(code_of([&] { ExecuteCPUBoundTaskOnAllProcessors(throws_odd, 32); }) % 2, 1);
    }
}

TEST(Threads, TasksMayRunTasks) {
    std::vector<int> runs(64);
    const auto outer = [&](int i) {
        ExecuteCPUBoundTaskOnAllProcessors([&, i](int j) { ++runs.data()[8 * i + j]; }, 8);
    };
    ExecuteCPUBoundTaskOnAllProcessors(outer, 8);
    EXPECT_EQ(runs, std::vector<int>(64, 1));
}

/// No address space holds a stack of this size, so that no thread can be started; those that run do all.
TEST(Threads, WorkEndsWithoutThreads) {
    pthread_attr_t usual, huge;
    ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 50);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    EXPECT_THROW(std::thread([] {}).join(), std::system_error);
    standalone::SetPoolLimit(20);  // more than there were threads before
    std::vector<int> runs(32);
    ExecuteCPUBoundTaskOnAllProcessors([&](int i) { ++runs.data()[i]; }, 32);
    pthread_setattr_default_np(&usual);
    EXPECT_EQ(runs, std::vector<int>(32, 1));
    ExecuteCPUBoundTaskOnAllProcessors([](int) {}, 9);  // threads are there again, and are asked for
    standalone::SetPoolLimit(0);
}

/// A forked process has none of the pool's threads, and may find its lock taken; it does its work alone and ends.
TEST(ThreadsDeathTest, ForkedProcessesWorkAndEnd) {
    GTEST_FLAG_SET(death_test_style, "fast");
    standalone::SetPoolLimit(3);
    std::atomic<bool> over{false};
    const auto work = [&] {
        while (!over) ExecuteCPUBoundTaskOnAllProcessors([](int) {}, 2);
    };
    std::jthread one(work), other(work);
    const auto work_and_end = [] {
        std::atomic<int> sum{0};
        ::alarm(5);
        ExecuteCPUBoundTaskOnAllProcessors([&](int i) { sum += i; }, 8);
        std::exit(sum);
    };
    for (int round = 0; round < 30; ++round) EXPECT_EXIT(work_and_end(), testing::ExitedWithCode(28), "") << round;
    over = true;
    one.join(), other.join();
    standalone::SetPoolLimit(0);
}

/// Several callers share the pool's threads, each with runs of its own.
TEST(Threads, CallersAtOnceEachGetTheirOwnWork) {
    standalone::SetPoolLimit(4);
    std::vector<int> sums(4);
    in_threads(4, [&](int caller) {
        for (int round = 0; round < 200; ++round) {
            int seen[17] = {};
            ExecuteCPUBoundTaskOnAllProcessors([&](int i) { seen[i] += i; }, 17);
            sums.data()[caller] += std::accumulate(seen, seen + 17, 0);
        }
    });
    EXPECT_EQ(sums, std::vector<int>(4, 200 * 136));
    standalone::SetPoolLimit(0);
}

TEST(Threads, ExecutorTakesThePoolsPlace) {
    std::vector<int> order;
    standalone::SetExecutor([](const boost::function<void(int)>& task, int count) {
        for (int i = count; i-- > 0;) task(i);
    });
    ExecuteCPUBoundTaskOnAllProcessors([&](int i) { order.push_back(i); }, 4);
    EXPECT_EQ(order, (std::vector<int>{3, 2, 1, 0}));
    standalone::SetExecutor({});
    ExecuteCPUBoundTaskOnAllProcessors([&](int i) { order.push_back(i); }, 1);
    EXPECT_EQ(order.back(), 0);
}

/// Whoever runs the others, and in whatever order.
TEST(Threads, IndexZeroStaysOnTheCallersThread) {
    const auto backwards = [](const boost::function<void(int)>& task, int count) {
        for (int i = count; i-- > 0;) task(i);
    };
    const auto elsewhere = [&](const boost::function<void(int)>& task, int count) {
        in_threads(count, [&](int i) { task(i); });
    };
    const auto caller = std::this_thread::get_id();
    for (const standalone::Executor& executor : {standalone::Executor(), {backwards}, {elsewhere}}) {
        standalone::SetExecutor(executor);
        for (const int count : {-1, 0, 1, 2, 32}) {
            std::vector<int> runs(static_cast<std::size_t>(std::max(count, 0)));
            std::thread::id of_zero = caller;
            const auto task = [&](int i) {
                ++runs.data()[i];
                if (i == 0) of_zero = std::this_thread::get_id();
            };
            ExecuteCPUBoundTaskOnAllProcessorsWithProcessorIndex(task, count);
            EXPECT_EQ(runs, std::vector<int>(runs.size(), 1));
            EXPECT_EQ(of_zero, caller);
        }
    }
    standalone::SetExecutor({});
    for (const int thrower : {0, 3}) {
        const auto task = [&](int i) {
            if (i == thrower) throw 44;
        };
        EXPECT_EQ(code_of([&] { ExecuteCPUBoundTaskOnAllProcessorsWithProcessorIndex(task, 8); }), 44);
    }
}

TEST(Threads, LivingThreadsHaveDifferentNumbers) {
    const auto own = tesselcore::threads::GetCurrentThreadID();
    EXPECT_EQ(tesselcore::threads::GetCurrentThreadID(), own);
    std::mutex mutex;
    std::set<std::uint32_t> ids{own};
    in_threads(8, [&](int) {
        const std::lock_guard lock(mutex);
        ids.insert(tesselcore::threads::GetCurrentThreadID());
    });
    EXPECT_EQ(ids.size(), 9u);
}

}  // namespace
