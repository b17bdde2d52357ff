// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/multiprocess/MultiProcess.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>

#include "opticalflow/src/multiprocess/EngineMemory.h"
#include "platform/TK_Suites.h"
#include "platform/tesselcore_Debug.h"
#include "platform/tesselcore_Threads.h"

namespace solvan_of {
namespace {

constexpr const char* kUnit = "opticalflow/src/multiprocess";

std::atomic<int> kept_count{-1};
std::atomic<int> running{0};         // a parallel section runs
std::atomic<char> worker_failed{0};  // by something else than want of memory
std::atomic<char> memory_shown{0}, suite_shown{0};
std::atomic<const QSBasicSuite*> basic_suite{nullptr};

struct CallRecord {
    InterruptState* state;
    PartFunction function;
    int count;
    std::array<std::intptr_t, kMostArguments> arguments;
};

template <std::size_t... Which> void call(const CallRecord& record, int index, std::index_sequence<Which...>) {
    using Function = void (*)(decltype(static_cast<std::intptr_t>(Which))..., int);
    reinterpret_cast<Function>(record.function)(record.arguments[Which]..., index);
}
template <std::size_t Count> void call(const CallRecord& record, int index) {
    call(record, index, std::make_index_sequence<Count>{});
}

void call_by_count(const CallRecord& record, int index) {
    switch (record.count) {
        case 0:
            return call<0>(record, index);
        case 1:
            return call<1>(record, index);
        case 2:
            return call<2>(record, index);
        case 3:
            return call<3>(record, index);
        case 4:
            return call<4>(record, index);
        case 5:
            return call<5>(record, index);
        default:
            return call<6>(record, index);
    }
}

void show_once(std::atomic<char>& shown, const char* function, int line, const char* text) {
    if (shown.exchange(1, std::memory_order_relaxed) == 0)
        tesselcore::debug::BreakAfterAssertDialog("false", function, kUnit, line, text);
}

/// @return 516 once a worker has failed, else 0
int RunThread(const CallRecord& record, int index) {
    const auto memory_is_out = [&record] {
        record.state->stop(4);
        show_once(memory_shown, "RunThread", __LINE__, "Out of memory in Solvan optical flow library.");
    };
    try {
        call_by_count(record, index);
    } catch (int code) {
        if (code == 4) {
            memory_is_out();
        } else {
            worker_failed.store(1, std::memory_order_relaxed);
        }
    } catch (const std::bad_alloc&) {
        memory_is_out();
    } catch (...) {
        worker_failed.store(1, std::memory_order_relaxed);
    }
    return worker_failed.load(std::memory_order_relaxed) != 0 ? 516 : 0;
}

}  // namespace

int processorCount() {
    int count = kept_count.load(std::memory_order_relaxed);
    if (count == -1) {
        count = tesselcore::threads::GetCPUBoundExecutor()->NumberOfProcessors();
        kept_count.store(count, std::memory_order_relaxed);
    }
    return count;
}

void forgetProcessorCount() { kept_count.store(-1, std::memory_order_relaxed); }

bool runOnAllProcessors(InterruptState& state, PartFunction function, int argumentCount,
                        const std::intptr_t* arguments) {
    CallRecord record{&state, function, std::clamp(argumentCount, 0, kMostArguments), {}};
    std::copy_n(arguments, record.count, record.arguments.begin());
    const int count = processorCount();
    worker_failed.store(0, std::memory_order_relaxed);
    running.store(1, std::memory_order_relaxed);
    std::atomic<int> status{0};
    const auto stub = [&](int index) {
        if (status.load(std::memory_order_relaxed) != 0) return;
        const int result = RunThread(record, index);
        int none = 0;
        if (result != 0) status.compare_exchange_strong(none, result, std::memory_order_relaxed);
    };
    tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessorsWithProcessorIndex([&stub](int index) { stub(index); },
                                                                              count);
    running.store(0, std::memory_order_relaxed);
    return true;
}

PartRows rows_of_part(std::int32_t rows, int part, int parts) {
    if (part < 0 || parts < 1) return {0, rows};
    const std::int64_t each = (std::int64_t{rows} + parts - 1) / parts;
    const auto limited = [&](std::int64_t row) { return static_cast<std::int32_t>(std::min<std::int64_t>(row, rows)); };
    return {limited(part * each), part == parts - 1 ? rows : limited((part + 1) * each)};
}

std::int32_t checkInterrupt(InterruptState& state, int part) {
    if (part != 0 || state.is_stopped()) return state.current_code();
    // An answer of 0 changes nothing: meanwhile a worker may have run out of memory.
    if (state.threadSafePoll != nullptr) {
        std::int32_t code = 0;
        if (state.threadSafePoll(state.data, &code, 0) != 0) state.stop(code);
    } else if (state.poll != nullptr) {
        const std::unique_lock<std::recursive_mutex> held(engineLock());
        if (const std::int32_t code = state.poll(state.data)) state.stop(code);
    }
    return state.current_code();
}

void keepBasicSuite(const QSBasicSuite* suite) { basic_suite.store(suite, std::memory_order_relaxed); }

template <> void MissingSuiteError<QX_Iterate8Suite1>::operator()(int code) const {
    constexpr int kLine = 134;  // where hosts' logs know it
    show_once(suite_shown, "operator ()", kLine, "Missing suite in Solvan-related code.");
    throw int{code};
}

const QX_Iterate8Suite1* iterateSuite() {
    const QSBasicSuite* const basic = basic_suite.load(std::memory_order_relaxed);
    const void* suite = nullptr;
    const int code = basic == nullptr ? 516 : basic->AcquireSuite("QX Iterate8 Suite", 1, &suite);
    if (code != 0 || suite == nullptr) MissingSuiteError<QX_Iterate8Suite1>{}(code);
    return static_cast<const QX_Iterate8Suite1*>(suite);
}

void forgetShownMessages() {
    memory_shown.store(0, std::memory_order_relaxed);
    suite_shown.store(0, std::memory_order_relaxed);
}

}  // namespace solvan_of
