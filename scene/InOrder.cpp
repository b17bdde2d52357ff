// SPDX-License-Identifier: Apache-2.0
#include "scene/InOrder.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>

#include "platform/tesselcore_Threads.h"

namespace qx::scene {
namespace {

using Make = std::function<InTurn(int index, pictures::Watch& watch)>;

class Line {
public:
    Line(int first, int count, int ahead, pictures::Watch& watch, const Make& make)
        : count_(count), ahead_(ahead), watch_(watch), make_(make), failed_(count), next_(first), turn_(first) {}

    /// One worker of several.
    void work() {
        for (int i = begin(); i < failed_; i = begin()) {
            try {
                ItemWatch watch(*this, i);
                hand_over(i, make_(i, watch));
            } catch (...) {
                fail(i, std::current_exception());
            }
        }
    }

    // When all workers have ended:
    int failed() const { return failed_; }
    const std::exception_ptr& fault() const { return fault_; }
    bool failed_in_turn() const { return turn_fault_; }

private:
    class ItemWatch : public pictures::Watch {
    public:
        ItemWatch(Line& line, int index) : line_(line), index_(index) {}
        bool stops() const noexcept override { return line_.failed_ < index_ || line_.watch_.stops(); }
        void rows(std::int64_t done, std::int64_t total) noexcept override { line_.watch_.rows(done, total); }

    private:
        Line& line_;
        const int index_;
    };

    /// The next one to make, `count` or more when there is none. What waits for its turn does not grow without end:
    /// whoever is far ahead waits for the one whose turn it is, which is at work then.
    int begin() {
        std::unique_lock lock(mutex_);
        turned_.wait(lock, [&] { return next_ - turn_ < ahead_ || next_ >= failed_; });
        return next_ < failed_ ? next_++ : count_;
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
    const int workers = std::clamp(at_once, 1, std::max(count, 1));
    for (int first = 0; first < count; ++first) {
        std::exception_ptr fault;
        {
            Line line(first, count, 2 * workers, watch, make);
            tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors([&](int) { line.work(); }, workers);
            first = line.failed();
            fault = line.fault();
            if (fault && (workers == 1 || line.failed_in_turn())) std::rethrow_exception(fault);
        }
        if (first < count) made_alone(first, fault, watch, make)();
    }
}

}  // namespace qx::scene
