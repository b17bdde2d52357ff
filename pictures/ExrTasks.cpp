// SPDX-License-Identifier: Apache-2.0
#include "pictures/ExrTasks.h"

#include <IlmThreadPool.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "pictures/Format.h"
#include "platform/standalone/Host.h"
#include "platform/tesselcore_Threads.h"

namespace qx::pictures {
namespace {

constexpr int kMostThreads = 8;  // more have nothing to do beside one that reads or makes the pixels

using IlmThread::Task;

/// The threads that help with one file. As many tasks are handed over as there are threads that wait for one: so none
/// is ever left to nobody, and whoever hands over is not idle either.
class Helpers {
public:
    /// @return false when no helper is idle
    bool take(Task* task) {
        const std::lock_guard lock(mutex_);
        if (handed_ == idle_) return false;
        tasks_[handed_++] = task;
        changed_.notify_one();
        return true;
    }
    /// Does what is handed over, until the end.
    void help() {
        errno = 0;
        std::unique_lock lock(mutex_);
        for (;;) {
            ++idle_;
            changed_.wait(lock, [&] { return handed_ > 0 || ended_; });
            --idle_;
            if (handed_ == 0) break;
            Task* const task = tasks_[--handed_];
            lock.unlock();
            run(task);
            lock.lock();
        }
    }
    /// Whatever it ends with, its group must hear of the end, or the library would wait for ever.
    void run(Task* task) noexcept {
        IlmThread::TaskGroup* const group = task->group();
        task->execute();  // keeps its faults for the group
        note_memory();
        delete task;
        group->finishOneTask();
    }
    void end() {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        changed_.notify_all();
    }
    void note_memory() {
        if (memory_ran_out()) short_of_memory_ = true;
    }
    bool short_of_memory() const { return short_of_memory_; }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t idle_ = 0, handed_ = 0;
    std::array<Task*, kMostThreads> tasks_{};
    bool ended_ = false;
    std::atomic<bool> short_of_memory_{false};
};

thread_local Helpers* helpers_of_thread = nullptr;

/// What the library asks for all files' sake. A thread's tasks go to the helpers of its own file, or are done at once.
class Provider : public IlmThread::ThreadPoolProvider {
public:
    int numThreads() const override { return exr_threads(); }
    void setNumThreads(int) override {}
    void addTask(Task* task) override {
        Helpers none;
        Helpers& helpers = helpers_of_thread != nullptr ? *helpers_of_thread : none;
        if (!helpers.take(task)) helpers.run(task);
    }
    void finish() override {}
};

void provide() {
    static const bool provided = [] {
        IlmThread::ThreadPool::globalThreadPool().setThreadProvider(std::make_unique<Provider>().release());
        return true;
    }();
    static_cast<void>(provided);
}

/// For as long as a thread works on a file with helpers.
class Led {
public:
    explicit Led(Helpers& helpers) : helpers_(helpers) { helpers_of_thread = &helpers; }
    ~Led() {
        helpers_.note_memory();
        helpers_of_thread = nullptr;
        helpers_.end();
    }
    Led(const Led&) = delete;
    Led& operator=(const Led&) = delete;

private:
    Helpers& helpers_;
};

}  // namespace

bool work_ran_out_of_memory() {
    return memory_ran_out() || (helpers_of_thread != nullptr && helpers_of_thread->short_of_memory());
}

int exr_threads() {
    const int threads = std::min(standalone::PoolThreads(), kMostThreads);
    return threads > 1 ? threads : 0;
}

void with_idle_threads(const std::function<void()>& work) {
    const int threads = exr_threads();
    if (threads == 0) return work();
    provide();
    Helpers helpers;
    std::atomic<bool> begun{false};
    const auto part = [&](int) {  // the first to come does the work: its helpers may all come after its end
        if (begun.exchange(true)) return helpers.help();
        errno = 0;
        const Led led(helpers);
        work();
    };
    const auto tell_memory = [&] {
        if (helpers.short_of_memory()) errno = ENOMEM;
    };
    try {
        tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(part, threads);
    } catch (...) {
        tell_memory();
        throw;
    }
    tell_memory();
}

}  // namespace qx::pictures
