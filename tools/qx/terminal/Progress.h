// SPDX-License-Identifier: Apache-2.0
#pragma once

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
    Progress(const char* what, std::int64_t total) noexcept;
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    /// `done` steps of the total are done; fewer than before change nothing.
    void reach(std::int64_t done) noexcept;

private:
    void draw(std::int64_t done) noexcept;
    const char* const what_;
    const std::int64_t total_;
    const bool wanted_;
    const std::chrono::steady_clock::time_point start_;
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
    explicit FileProgress(const char* what) : what_(what) {}
    void rows(std::int64_t done, std::int64_t total) noexcept override;

private:
    const char* const what_;
    std::optional<Progress> progress_;
};

}  // namespace qx::tool
