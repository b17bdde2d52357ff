// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

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
    /// So many steps more than have been added.
    void add(std::int64_t steps) noexcept { reach(added_.fetch_add(steps, std::memory_order_relaxed) + steps); }

private:
    void draw(std::int64_t done) noexcept;
    const char* const what_;
    const std::int64_t total_;
    const bool wanted_;
    const std::chrono::steady_clock::time_point start_;
    std::atomic<std::int64_t> added_{0};
    std::mutex mutex_;
    std::int64_t shown_percent_ = -1;
};

/// "3.4 frames/s, 1:05 left" after `done` of `all` in some seconds.
std::string speed_words(int done, int all, double seconds);

/// Tells of each frame of many on standard error.
class FrameProgress {
public:
    enum class Style {
        line,  ///< one that changes, if that is a terminal
        json,  ///< an object a line, for programs that watch
        none
    };
    explicit FrameProgress(int frames, Style style = Style::line);
    ~FrameProgress();
    FrameProgress(const FrameProgress&) = delete;
    FrameProgress& operator=(const FrameProgress&) = delete;
    /// @param skipped  it was there, so that it tells nothing of the speed
    void done(int frame, bool skipped);
    /// It could not be made, and others are.
    void failed(int frame, const std::string& words);
    const std::vector<int>& failures() const { return failures_; }
    double seconds() const;
    int made() const { return done_ - skipped_ - static_cast<int>(failures_.size()); }

private:
    void tell(int frame, const char* state, const std::string& fault);
    const int frames_;
    const Style style_;
    const bool wanted_;
    const std::chrono::steady_clock::time_point start_;
    int done_ = 0, skipped_ = 0;
    std::vector<int> failures_;
};

/// One piece of work among some that share a bar, one after the other or at once. Stops when another watch does.
class PartWatch : public pictures::Watch {
public:
    static constexpr std::int64_t kSteps = 1 << 16;  ///< of a part
    PartWatch(Progress& progress, const pictures::Watch& stopping) : progress_(progress), stopping_(stopping) {}
    bool stops() const noexcept override { return stopping_.stops(); }
    void rows(std::int64_t done, std::int64_t total) noexcept override;

private:
    Progress& progress_;
    const pictures::Watch& stopping_;
    std::atomic<std::int64_t> told_{0};
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
