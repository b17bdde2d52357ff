// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace qx::tool {

/// A bar on standard error, if that is a terminal, for work that has taken more than a second. Any thread.
class Progress {
public:
    Progress(std::string what, std::int64_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void advance(std::int64_t steps);

private:
    void draw(std::int64_t done);
    const std::string what_;
    const std::int64_t total_;
    const bool wanted_;
    const std::chrono::steady_clock::time_point start_;
    std::atomic<std::int64_t> done_{0};
    std::mutex mutex_;
    std::int64_t shown_percent_ = -1;
};

}  // namespace qx::tool
