// SPDX-License-Identifier: Apache-2.0
#include "scene/InOrder.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <numeric>
#include <vector>

#include "platform/tesselcore_Threads.h"

namespace qx::scene {
namespace {

using Make = std::function<InTurn(int index, pictures::Watch& watch)>;

class Queue {
public:
    Queue(int first, std::span<const int> ends, int ahead, pictures::Watch& watch, const Make& make)
        : ends_(ends),
          count_(ends.back()),
          ahead_(ahead),
          watch_(watch),
          make_(make),
          failed_(count_),
          next_(first),
          turn_(first) {}

    /// One worker of several.
    void work() {
        for (Group group = begin(); group.first < failed_; group = begin()) {
            for (int i = group.first; i < group.end && i < failed_; ++i) make(i);
        }
    }

    // When all workers have ended:
    int failed() const { return failed_; }
    const std::exception_ptr& fault() const { return fault_; }
    bool failed_in_turn() const { return turn_fault_; }

private:
    class ItemWatch : public pictures::Watch {
    public:
        ItemWatch(Queue& line, int index) : line_(line), index_(index) {}
        bool stops() const noexcept override { return line_.failed_ < index_ || line_.watch_.stops(); }
        void rows(std::int64_t done, std::int64_t total) noexcept override { line_.watch_.rows(done, total); }

    private:
        Queue& line_;
        const int index_;
    };

    struct Group {
        int first, end;
    };
    std::ptrdiff_t group_of(int index) const { return std::ranges::upper_bound(ends_, index) - ends_.begin(); }

    /// The next ones to make, from `count` on when there are none. What waits for its turn does not grow without end:
    /// whoever is far ahead waits for the group whose turn it is, which is at work then.
    Group begin() {
        std::unique_lock lock(mutex_);
        turned_.wait(lock, [&] { return group_of(next_) - group_of(turn_) < ahead_ || next_ >= failed_; });
        if (next_ >= failed_) return {count_, count_};
        const Group group{next_, ends_[static_cast<std::size_t>(group_of(next_))]};
        next_ = group.end;
        return group;
    }

    void make(int index) {
        try {
            ItemWatch watch(*this, index);
            hand_over(index, make_(index, watch));
        } catch (...) {
            fail(index, std::current_exception());
        }
    }

    /// Whose turn it is runs, and all that wait behind it.
    void hand_over(int index, InTurn rest) {
        std::unique_lock lock(mutex_);
        waiting_.emplace(index, std::move(rest));
        while (!running_ && turn_ < failed_ && !waiting_.empty() && waiting_.begin()->first == turn_) {
            const InTurn now = std::move(waiting_.extract(waiting_.begin()).mapped());
            running_ = true;
            lock.unlock();
            std::exception_ptr fault;
            try {
                now();
            } catch (...) {
                fault = std::current_exception();
            }
            if (fault) fail(turn_, fault);
            lock.lock();
            running_ = false;
            turn_fault_ = turn_fault_ || fault;
            if (!fault) ++turn_;
            turned_.notify_all();
        }
    }

    void fail(int index, std::exception_ptr fault) {
        const std::lock_guard lock(mutex_);
        if (index < failed_) {
            failed_ = index;
            fault_ = std::move(fault);
        }
        turned_.notify_all();
    }

    const std::span<const int> ends_;
    const int count_, ahead_;
    pictures::Watch& watch_;
    const Make& make_;
    std::atomic<int> failed_;  ///< the first that failed, `count` when none has
    std::mutex mutex_;         // of what follows, and of writing `failed_`
    std::condition_variable turned_;
    int next_, turn_;
    bool running_ = false, turn_fault_ = false;
    std::map<int, InTurn> waiting_;
    std::exception_ptr fault_;
};

/// Makes a thing once more: those behind it are gone, and with them the disk and the memory that they took. Throws its
/// first fault if that was not the reason.
InTurn made_alone(int index, const std::exception_ptr& fault, pictures::Watch& watch, const Make& make) {
    watch.must_go_on();
    try {
        return make(index, watch);
    } catch (const pictures::Stopped&) {
        throw;
    } catch (...) {
        std::rethrow_exception(fault);
    }
}

}  // namespace

void in_order(int count, int at_once, pictures::Watch& watch, const Make& make) {
    std::vector<int> ends(static_cast<std::size_t>(count));
    std::iota(ends.begin(), ends.end(), 1);
    in_order(ends, at_once, watch, make);
}

void in_order(std::span<const int> ends, int at_once, pictures::Watch& watch, const Make& make) {
    const int groups = static_cast<int>(ends.size()), count = groups > 0 ? ends.back() : 0;
    const int workers = std::clamp(at_once, 1, std::max(groups, 1));
    for (int first = 0; first < count; ++first) {
        std::exception_ptr fault;
        {
            Queue line(first, ends, 2 * workers, watch, make);
            tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors([&](int) { line.work(); }, workers);
            first = line.failed();
            fault = line.fault();
            if (fault && (workers == 1 || line.failed_in_turn())) std::rethrow_exception(fault);
        }
        if (first < count) made_alone(first, fault, watch, make)();
    }
}

}  // namespace qx::scene
