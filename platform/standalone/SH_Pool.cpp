// SPDX-License-Identifier: Apache-2.0
// The thread pool. A thread that the system does not give is done without: the caller of a run takes every index that
// no other thread takes, so that work ends wherever its caller can go on.
#include <immintrin.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
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

/// Indices that one thread takes from one end, and those that have finished with theirs from the other.
class alignas(64) Range {
public:
    void set(std::uint32_t begin, std::uint32_t end) { ends_.store(packed(begin, end), std::memory_order_relaxed); }
    bool is_empty() const { return is_empty(ends_.load(std::memory_order_relaxed)); }
    /// @return whether there was one
    bool take(bool first, int& index) {
        std::uint64_t seen = ends_.load(std::memory_order_relaxed), left;
        do {
            if (is_empty(seen)) return false;
            index = static_cast<int>(first ? begin_of(seen) : end_of(seen) - 1);
            left = first ? packed(begin_of(seen) + 1, end_of(seen)) : packed(begin_of(seen), end_of(seen) - 1);
        } while (!ends_.compare_exchange_weak(seen, left, std::memory_order_relaxed));
        return true;
    }

private:
    static std::uint64_t packed(std::uint32_t begin, std::uint32_t end) { return std::uint64_t{end} << 32 | begin; }
    static std::uint32_t begin_of(std::uint64_t ends) { return static_cast<std::uint32_t>(ends); }
    static std::uint32_t end_of(std::uint64_t ends) { return static_cast<std::uint32_t>(ends >> 32); }
    static bool is_empty(std::uint64_t ends) { return begin_of(ends) >= end_of(ends); }
    std::atomic<std::uint64_t> ends_{0};
};

/// One call of RunOnPool, on its caller's stack. A thread has a range of neighbouring indices, the same one in each of
/// several runs alike: what it wrote in one of them lies in its caches in the next.
struct Job {
    static constexpr int kMostRanges = 32;

    const int count, most_helpers;
    void (*const body)(void*, int);
    void* const context;
    std::atomic<int> helpers{0};      ///< threads of the pool at work on it; changed under the pool's mutex
    std::condition_variable alone{};  ///< told when the last helper leaves
    Job* below = nullptr;

    Job(int indices, int helpers_at_most, void (*work)(void*, int), void* of_work)
        : count(indices),
          most_helpers(helpers_at_most),
          body(work),
          context(of_work),
          ranges_in_use_(std::clamp(most_helpers + 1, 1, kMostRanges)) {
        const auto begin_of = [&](int i) {
            return static_cast<std::uint32_t>(std::max<std::int64_t>(1, std::int64_t{count} * i / ranges_in_use_));
        };
        for (int i = 0; i < ranges_in_use_; ++i) ranges_[i].set(begin_of(i), begin_of(i + 1));
    }
    bool wants_help() const { return helpers.load(std::memory_order_relaxed) < most_helpers && !all_taken(); }
    /// @param thread  0 is the caller, which begins with its first index; others do with their last one: what is cut
    ///                into parts has its remainder in the last, and what takes longest is to begin first
    void work(int thread) {
        const int own = thread % ranges_in_use_;
        for (int k = 0, index = 0; k < ranges_in_use_; ++k) {
            const int i = (own + k) % ranges_in_use_;
            while (ranges_[i].take((i == 0) == (k == 0), index)) body(context, index);
        }
    }

private:
    bool all_taken() const {
        return std::all_of(ranges_, ranges_ + ranges_in_use_, [](const Range& range) { return range.is_empty(); });
    }
    const int ranges_in_use_;
    Range ranges_[kMostRanges];
};

/// Small runs follow one another closely, and to wake a thread takes longer than one of them does: so who waits looks
/// for this long before it sleeps.
constexpr std::chrono::microseconds kLooksFor{50};

template <class Found> void look_for(const Found& found) {
    const auto until = std::chrono::steady_clock::now() + kLooksFor;
    while (!found() && std::chrono::steady_clock::now() < until) {
        for (int i = 0; i < 16; ++i) _mm_pause();
    }
}

/// What the mutex guards takes less time than to sleep and be woken.
void lock_soon(std::unique_lock<std::mutex>& lock) {
    for (int i = 0; i < 256; ++i) {
        if (lock.try_lock()) return;
        _mm_pause();
    }
    lock.lock();
}

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
            return job.work(0);
        }
        std::unique_lock lock(mutex_, std::defer_lock);
        {
            lock_soon(lock);
            start_threads(std::min(job.most_helpers, job.count - 1));
            job.below = newest_;
            newest_ = &job;
            runs_.fetch_add(1, std::memory_order_relaxed);
            lock.unlock();
        }
        if (job.count > 1) work_.notify_all();
        job.body(job.context, 0);  // the caller's own, for whose thread callbacks and their answers may wait
        job.work(0);
        const auto is_alone = [&] { return job.helpers.load(std::memory_order_relaxed) == 0; };
        look_for(is_alone);
        lock_soon(lock);
        take_out(job);
        // A thread that waits here takes up no index of another run, whose locks it may hold.
        job.alone.wait(lock, is_alone);
    }

private:
    void start_threads(int wanted) {
        try {
            while (static_cast<int>(threads_.size()) < wanted)
                threads_.emplace_back([this, thread = static_cast<int>(threads_.size()) + 1] { help(thread); });
        } catch (const std::exception&) {  // no memory or no thread: those that are there do the work
        }
    }
    void help(int thread) {
        std::unique_lock lock(mutex_);
        for (;;) {
            Job* job = unfinished();
            if (job == nullptr && !ending_ && thread < CoreCount()) {
                const std::uint32_t seen = runs_.load(std::memory_order_relaxed);
                lock.unlock();
                look_for([&] { return runs_.load(std::memory_order_relaxed) != seen; });
                lock_soon(lock);
            }
            work_.wait(lock, [&] { return ending_ || (job = unfinished()) != nullptr; });
            if (job == nullptr) return;
            ++job->helpers;
            lock.unlock();
            job->work(thread);
            lock_soon(lock);
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
    std::atomic<std::uint32_t> runs_{0};  ///< changed under the mutex
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
    Job job(count, (limit == 0 ? CoreCount() : limit) - 1, body, context);
    pool.run(job);
}

}  // namespace standalone
