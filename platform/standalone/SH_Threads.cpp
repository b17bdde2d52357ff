// SPDX-License-Identifier: Apache-2.0
// Parallel work: bands, the executor's contract, and exceptions of tasks.
#include <atomic>
#include <exception>
#include <thread>

#include "platform/TK_CPU.h"
#include "platform/standalone/SH_Internal.h"
#include "platform/standalone/Standalone.h"
#include "platform/tesselcore_Threads.h"

namespace standalone {
namespace {

int bands = 32;
int pool_limit = 0;
int thread_count_error = 0;
Executor executor;

/// One run of tasks.
struct Run {
    const boost::function<void(int)>& task;
    std::atomic<bool> failed{false};
    std::exception_ptr fault{};  ///< written by the task that set `failed`

    static void Task(void* context, int index) {
        auto& run = *static_cast<Run*>(context);
        try {
            if (!run.failed.load(std::memory_order_relaxed)) run.task(index);
        } catch (...) {
            if (!run.failed.exchange(true)) run.fault = std::current_exception();
        }
    }
};

}  // namespace

void SetBandCount(int count) { bands = count < 1 ? 1 : count; }
int BandCount() { return bands; }
void SetPoolLimit(int threads) { pool_limit = threads < 0 ? 0 : threads; }
int PoolLimit() { return pool_limit; }
int PoolThreads() { return pool_limit == 0 ? CoreCount() : pool_limit; }
void SetExecutor(const Executor& new_executor) { executor = new_executor; }
void SetThreadCountError(int code) { thread_count_error = code; }

}  // namespace standalone

int TK_GetNumThreads(std::int32_t* count) {
    if (standalone::thread_count_error != 0) return standalone::thread_count_error;
    *count = standalone::bands;
    return 0;
}

namespace tesselcore::threads {

void ExecuteCPUBoundTaskOnAllProcessors(const boost::function<void(int)>& task, int count) {
    if (count <= 0) return;
    if (standalone::executor) return standalone::executor(task, count);
    standalone::Run run{task};
    standalone::RunOnPool(standalone::pool_limit, count, &standalone::Run::Task, &run);
    if (run.fault) std::rethrow_exception(run.fault);
}

void ExecuteCPUBoundTaskOnAllProcessorsWithProcessorIndex(const boost::function<void(int)>& task, int count) {
    // The pool itself keeps index 0 for the caller. An executor may not: what it gives to another thread waits.
    if (!standalone::executor || count <= 0) return ExecuteCPUBoundTaskOnAllProcessors(task, count);
    const auto caller = std::this_thread::get_id();
    bool waits = false;
    const auto run = [&](int i) {
        if (i == 0 && std::this_thread::get_id() != caller) {
            waits = true;
        } else {
            task(i);
        }
    };
    standalone::executor(run, count);
    if (waits) task(0);
}

std::shared_ptr<const CPUBoundExecutor> GetCPUBoundExecutor() {
    return std::make_shared<const CPUBoundExecutor>(standalone::bands);
}

std::uint32_t GetCurrentThreadID() {
    static std::atomic<std::uint32_t> last{0};
    thread_local const std::uint32_t id = last.fetch_add(1, std::memory_order_relaxed) + 1;
    return id;
}

}  // namespace tesselcore::threads
