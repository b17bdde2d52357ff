// SPDX-License-Identifier: Apache-2.0
// The thread pool, oneTBB's. This file alone calls it and is built without ThreadSanitizer, which does not see into
// that library: the hand-over of memory between threads is spelt out where the tasks are run.
#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/partitioner.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>

#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

/// Threads that work at once. The control lets more run than there are cores when that is asked for.
struct Pool {
    explicit Pool(int threads)
        : limit(threads),
          control(tbb::global_control::max_allowed_parallelism,
                  static_cast<std::size_t>(std::max(threads, CoreCount()))),
          arena(std::make_unique<tbb::task_arena>(threads)) {}
    int limit;
    tbb::global_control control;
    std::unique_ptr<tbb::task_arena> arena;
};

/// Ends the pool's threads before the program ends, so that none of them outlives what it works on.
struct Scheduler {
    std::mutex mutex;
    tbb::task_scheduler_handle handle{tbb::attach{}};
    std::unique_ptr<Pool> pool;
    ~Scheduler() {
        // The control goes last: without it threads beyond the cores sleep for good, and their end is waited for.
        if (pool) pool->arena.reset();
        tbb::finalize(handle, std::nothrow);
    }
};

/// Made on first use and again after the limit has changed, which happens only while nothing runs.
tbb::task_arena& Arena(int threads) {
    static Scheduler scheduler;
    const std::lock_guard lock(scheduler.mutex);
    if (!scheduler.pool || scheduler.pool->limit != threads) {
        scheduler.pool.reset();
        scheduler.pool = std::make_unique<Pool>(threads);
    }
    return *scheduler.pool->arena;
}

}  // namespace

int CoreCount() { return tbb::info::default_concurrency(); }

void RunOnPool(int limit, int count, void (*body)(void*, int), void* context) {
    const auto range = [=](const tbb::blocked_range<int>& part) {
        for (int i = part.begin(); i != part.end(); ++i) body(context, i);
    };
    const auto run = [&] { tbb::parallel_for(tbb::blocked_range<int>(0, count, 1), range, tbb::simple_partitioner()); };
    // Isolated: a thread that waits for this run takes up no task of another one, whose locks it may hold.
    Arena(limit == 0 ? CoreCount() : limit).execute([&] { tbb::this_task_arena::isolate(run); });
}

}  // namespace standalone
