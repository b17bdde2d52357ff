// SPDX-License-Identifier: Apache-2.0
// The thread pool. A thread that the system does not give is done without: the caller of a run takes every index that
// no other thread takes, so that work ends wherever its caller can go on.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

/// One call of RunOnPool, on its caller's stack.
struct Job {
    const int count, most_helpers;
    void (*const body)(void*, int);
    void* const context;
    std::atomic<std::int64_t> next{1};  ///< wider than an index, since every thread counts once beyond the end
    int helpers = 0;                    ///< threads of the pool at work on it; guarded by the pool's mutex
    std::condition_variable alone{};    ///< told when the last helper leaves
    Job* below = nullptr;

    bool wants_help() const { return helpers < most_helpers && next.load(std::memory_order_relaxed) < count; }
    /// From the last index on: what is cut into parts has its remainder in the last one, and what takes longest is to
    /// begin first.
    void work() {
        for (std::int64_t i; (i = next.fetch_add(1, std::memory_order_relaxed)) < count;) {
            body(context, static_cast<int>(count - i));
        }
    }
};

class Pool {
public:
    /// At the end of the process: nothing runs any more, so the threads sleep and end at once. In a process that was
    /// forked off there are none of them, and who joined one would wait for ever.
    void end() {
        if (::getpid() != process_) return;
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        work_.notify_all();
        for (std::thread& thread : threads_) thread.join();
    }

    void run(Job& job) {
        if (::getpid() != process_) {  // one of the threads may have held the mutex when the process was forked off
            job.body(job.context, 0);
            return job.work();
        }
        {
            const std::lock_guard lock(mutex_);
            start_threads(std::min(job.most_helpers, job.count - 1));
            job.below = newest_;
            newest_ = &job;
        }
        if (job.count > 1) work_.notify_all();
        job.body(job.context, 0);  // the caller's own, for whose thread callbacks and their answers may wait
        job.work();
        std::unique_lock lock(mutex_);
        take_out(job);
        // A thread that waits here takes up no index of another run, whose locks it may hold.
        job.alone.wait(lock, [&] { return job.helpers == 0; });
    }

private:
    void start_threads(int wanted) {
        try {
            while (static_cast<int>(threads_.size()) < wanted) threads_.emplace_back([this] { help(); });
        } catch (const std::exception&) {  // no memory or no thread: those that are there do the work
        }
    }
    void help() {
        std::unique_lock lock(mutex_);
        for (;;) {
            Job* job = nullptr;
            work_.wait(lock, [&] { return ending_ || (job = unfinished()) != nullptr; });
            if (job == nullptr) return;
            ++job->helpers;
            lock.unlock();
            job->work();
            lock.lock();
            if (--job->helpers == 0) job->alone.notify_one();
        }
    }
    Job* unfinished() const {
        Job* job = newest_;
        while (job != nullptr && !job->wants_help()) job = job->below;
        return job;
    }
    void take_out(const Job& job) {
        Job** link = &newest_;
        while (*link != &job) link = &(*link)->below;
        *link = job.below;
    }

    const pid_t process_ = ::getpid();
    std::mutex mutex_;
    std::condition_variable work_;
    std::vector<std::thread> threads_;
    Job* newest_ = nullptr;
    bool ending_ = false;
};

}  // namespace

int CoreCount() {
    static const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    return cores;
}

void RunOnPool(int limit, int count, void (*body)(void*, int), void* context) {
    // Never destroyed, since its parts would wait for threads that a forked process does not have.
    alignas(Pool) static std::byte place[sizeof(Pool)];
    static Pool& pool = *new (place) Pool;
    static const struct AtExit {
        ~AtExit() { pool.end(); }
    } at_exit;
    Job job{count, (limit == 0 ? CoreCount() : limit) - 1, body, context};
    pool.run(job);
}

}  // namespace standalone
