// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "tools/qx/Messages.h"

namespace qx::tool {
namespace {
constexpr int kBarWidth = 40;
constexpr auto kPatience = std::chrono::seconds(1);
}  // namespace

Progress::Progress(std::string what, std::int64_t total)
    : what_(std::move(what)),
      total_(std::max<std::int64_t>(total, 1)),
      wanted_(talk() != Talk::quiet && ::isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()) {}

Progress::~Progress() {
    if (shown_percent_ >= 0) std::fprintf(stderr, "\r\x1B[K");
}

void Progress::advance(std::int64_t steps) {
    const std::int64_t done = done_.fetch_add(steps, std::memory_order_relaxed) + steps;
    if (wanted_ && std::chrono::steady_clock::now() - start_ > kPatience) draw(done);
}

void Progress::draw(std::int64_t done) {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    const std::int64_t percent = std::min<std::int64_t>(done * 100 / total_, 100);
    if (!lock || percent <= shown_percent_) return;
    shown_percent_ = percent;
    const auto filled = static_cast<std::size_t>(percent * kBarWidth / 100);
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    std::fprintf(stderr, "\r%s [%s] %3d %%", what_.c_str(), bar.c_str(), static_cast<int>(percent));
    std::fflush(stderr);
}

FileProgress::FileProgress(std::string what) : what_(std::move(what)) { io::set_row_listener(this); }

FileProgress::~FileProgress() { io::set_row_listener(nullptr); }

void FileProgress::rows(std::int64_t done, std::int64_t total) {
    if (!progress_) progress_.emplace(what_, total);
    progress_->advance(done - told_);
    told_ = done;
}

}  // namespace qx::tool
