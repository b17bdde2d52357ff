// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/standalone/Standalone.h"

namespace qx::test {

/// Collects the host's reports while it lives, and keeps them from standard error.
class Reports {
public:
    Reports();
    ~Reports();
    Reports(Reports&&) = delete;
    const std::vector<standalone::Report>& all() const { return reports_; }
    std::string last_text() const { return reports_.empty() ? std::string() : reports_.back().text; }
    void clear() { reports_.clear(); }

private:
    std::vector<standalone::Report> reports_;
};

/// The library, born with these settings for a scope and ended with it; the host's defaults come back after.
class Born {
public:
    explicit Born(int bands = 1, standalone::ProcessorLevel level = standalone::ProcessorLevel::widest);
    ~Born();
    Born(Born&&) = delete;
    int code() const { return code_; }

private:
    int code_;
};

inline constexpr standalone::ProcessorLevel kLevels[] = {
    standalone::ProcessorLevel::plain, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster,
    standalone::ProcessorLevel::widest};

/// What a call gives while the n-th allocation of the host's from now on fails.
template <class Call> auto short_of_memory(std::int64_t nth, const Call& call) {
    standalone::FailAllocation(nth);
    const auto result = call();
    standalone::FailAllocation(0);
    return result;
}
/// The same while it fails and all behind it too.
template <class Call> auto out_of_memory_from(std::int64_t nth, const Call& call) {
    standalone::FailAllocationsFrom(nth);
    const auto result = call();
    standalone::FailAllocationsFrom(0);
    return result;
}
inline std::int64_t blocks_in_use() { return standalone::Memory().blocks_in_use; }

/// Calls work(0) to work(count - 1), each on a thread of its own, and waits for all.
template <class Work> void in_threads(int count, const Work& work) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
}

/// Counts allocations by operator new in the whole process, and can make one fail.
struct NewCounter {
    static std::int64_t count();
    /// The n-th from now on throws std::bad_alloc, once; 0 ends that.
    static void fail(std::int64_t nth);
};

}  // namespace qx::test
