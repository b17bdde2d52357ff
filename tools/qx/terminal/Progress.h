// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "tools/qx/terminal/Interrupt.h"

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

/// "3.4 frames/s, 1:05 left" after `done` of `all` in some seconds.
std::string speed_words(int done, int all, double seconds);

/// A line on standard error, if that is a terminal, after each frame of many.
class FrameProgress {
public:
    explicit FrameProgress(int frames);
    ~FrameProgress();
    FrameProgress(const FrameProgress&) = delete;
    FrameProgress& operator=(const FrameProgress&) = delete;
    /// @param skipped  it was there, so that it tells nothing of the speed
    void done(int frame, bool skipped);

private:
    const int frames_;
    const bool wanted_;
    const std::chrono::steady_clock::time_point start_;
    int done_ = 0, skipped_ = 0;
};

/// The bar of reading or writing one file; a signal stops it.
class FileProgress : public SignalWatch {
public:
    explicit FileProgress(std::string what) : what_(std::move(what)) {}
    void rows(std::int64_t done, std::int64_t total) noexcept override;

private:
    const std::string what_;
    std::optional<Progress> progress_;
    std::int64_t told_ = 0;
};

}  // namespace qx::tool
