// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/terminal/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "tools/qx/terminal/Messages.h"

namespace qx::tool {
namespace {
constexpr int kBarWidth = 40;
constexpr auto kPatience = std::chrono::seconds(1);
}  // namespace

Progress::Progress(const char* what, std::int64_t total) noexcept
    : what_(what),
      total_(std::max<std::int64_t>(total, 1)),
      wanted_(talk() != Talk::quiet && ::isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()) {}

Progress::~Progress() {
    if (shown_percent_ >= 0) std::fprintf(stderr, "\r\x1B[K");
}

void Progress::reach(std::int64_t done) noexcept {
    if (wanted_ && std::chrono::steady_clock::now() - start_ > kPatience) draw(done);
}

void Progress::draw(std::int64_t done) noexcept {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    const std::int64_t percent = std::min<std::int64_t>(done * 100 / total_, 100);
    if (!lock || percent <= shown_percent_) return;
    shown_percent_ = percent;
    char bar[kBarWidth];
    std::fill_n(std::fill_n(bar, percent * kBarWidth / 100, '#'), kBarWidth - percent * kBarWidth / 100, '.');
    std::fprintf(stderr, "\r%s [%.*s] %3d %%", what_, kBarWidth, bar, static_cast<int>(percent));
    std::fflush(stderr);
}

std::string speed_words(int done, int all, double seconds) {
    const double speed = done / std::max(seconds, 1e-3);
    const auto left = static_cast<long long>(std::ceil((all - done) / std::max(speed, 1e-9)));
    char text[80];
    std::snprintf(text, sizeof text, "%.*f frames/s, %lld:%02lld left", speed < 10 ? 2 : 0, speed, left / 60,
                  left % 60);
    return text;
}

FrameProgress::FrameProgress(int frames, Style style)
    : frames_(frames),
      style_(style),
      wanted_(style == Style::json || (style == Style::line && talk() != Talk::quiet && ::isatty(STDERR_FILENO) == 1)),
      start_(std::chrono::steady_clock::now()) {}

FrameProgress::~FrameProgress() { show_line(""); }

double FrameProgress::seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void FrameProgress::tell(int frame, const char* state, const std::string& fault) {
    if (!wanted_) return;
    if (style_ == Style::line) {
        return show_line("frame " + std::to_string(frame) + " (" + std::to_string(done_) + " of " +
                         std::to_string(frames_) + "), " + speed_words(made(), frames_ - done_ + made(), seconds()));
    }
    nlohmann::ordered_json line = {
        {"frame", frame}, {"state", state}, {"done", done_}, {"of", frames_}, {"seconds", seconds()}};
    if (!fault.empty()) line["error"] = fault;
    std::fprintf(stderr, "%s\n", line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

void FrameProgress::done(int frame, bool skipped) {
    ++done_;
    skipped_ += skipped ? 1 : 0;
    tell(frame, skipped ? "there" : "made", "");
}

void FrameProgress::failed(int frame, const std::string& words) {
    ++done_;
    failures_.push_back(frame);
    say_error(words);
    tell(frame, "failed", words);
}

void PartWatch::rows(std::int64_t done, std::int64_t total) noexcept {
    const std::int64_t now = done * kSteps / total;
    std::int64_t before = told_.load(std::memory_order_relaxed);
    while (before < now && !told_.compare_exchange_weak(before, now, std::memory_order_relaxed)) {
    }
    if (before < now) progress_.add(now - before);
}

void FileProgress::rows(std::int64_t done, std::int64_t total) noexcept {
    if (!progress_) progress_.emplace(what_, total);
    progress_->reach(done);
}

}  // namespace qx::tool
