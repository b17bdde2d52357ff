// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/standalone/Standalone.h"

namespace qx::test {

/// Collects the host's reports while it lives, and keeps them from standard error.
class Reports {
public:
    Reports();
    ~Reports();
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;
    const std::vector<standalone::Report>& all() const { return reports_; }
    std::string last_text() const { return reports_.empty() ? std::string() : reports_.back().text; }
    void clear() { reports_.clear(); }

private:
    std::vector<standalone::Report> reports_;
};

/// The library, born with these settings for a scope and ended with it; the host's defaults come back after.
class Born {
public:
    explicit Born(int bands = 1, standalone::ProcessorLevel level = standalone::ProcessorLevel::faster);
    ~Born();
    Born(const Born&) = delete;
    Born& operator=(const Born&) = delete;
    int code() const { return code_; }

private:
    int code_;
};

inline constexpr standalone::ProcessorLevel kLevels[] = {
    standalone::ProcessorLevel::plain, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster};

/// Counts allocations by operator new in the whole process, and can make one fail.
struct NewCounter {
    static std::int64_t count();
    /// The n-th from now on throws std::bad_alloc, once; 0 ends that.
    static void fail(std::int64_t nth);
};

}  // namespace qx::test
