// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/qx/terminal/Progress.h"

// What commands share that make many frames.
namespace qx::tool {

inline constexpr int kSomeFailed = 5;  ///< the status where others could be made

/// What is said of a frame that others need not wait for, empty for none; a stop and a want of memory pass on.
std::string fault_of(const std::function<void()>& work);

/// Throws the status of a job of which some frames are missing, with a list of them.
void tell_failures(const std::vector<int>& failures, int frames);

/// Where a job's time went, of all threads together.
struct Stages {
    std::atomic<std::int64_t> making{0}, writing{0};  ///< nanoseconds

    template <class Work> static auto timed(std::atomic<std::int64_t>& stage, const Work& work) {
        struct Clock {
            std::atomic<std::int64_t>& stage;
            const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
            ~Clock() { stage += std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count(); }
        };
        const Clock clock{stage};
        return work();
    }
};

/// The line of --stats.
void tell_stats(const FrameProgress& progress, const Stages& stages);

}  // namespace qx::tool
