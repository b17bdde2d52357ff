// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "tools/qx/terminal/Progress.h"

namespace qx::tool {

/// Where a job's time went, of all threads together.
struct Stages {
    std::atomic<std::int64_t> making{0}, writing{0};  ///< nanoseconds

    template <class Work> static auto timed(std::atomic<std::int64_t>& stage, const Work& work) {
        const auto start = std::chrono::steady_clock::now();
        auto result = work();
        stage += std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
        return result;
    }
};

/// The line of --stats.
void tell_stats(const FrameProgress& progress, const Stages& stages);

}  // namespace qx::tool
