// SPDX-License-Identifier: Apache-2.0
#include "pictures/Interrupt.h"

#include <atomic>
#include <csignal>

namespace qx::io {
namespace {

std::atomic<bool> noted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

RowListener* row_listener = nullptr;

void note(int) { noted.store(true, std::memory_order_relaxed); }

}  // namespace

void install_signal_handlers() {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, note);
    if (std::signal(SIGHUP, SIG_IGN) != SIG_IGN) std::signal(SIGHUP, note);  // under nohup it stays switched off
    for (const int signal : {SIGXFSZ, SIGPIPE}) std::signal(signal, SIG_IGN);
}

bool interrupted() { return noted.load(std::memory_order_relaxed); }

void check_interrupt() {
    if (interrupted()) throw Interrupted{};
}

void set_row_listener(RowListener* listener) { row_listener = listener; }

bool next_row(std::int64_t done, std::int64_t total) {
    if (row_listener != nullptr) row_listener->rows(done, total);
    return !interrupted();
}

void must_next_row(std::int64_t done, std::int64_t total) {
    if (!next_row(done, total)) throw Interrupted{};
}

}  // namespace qx::io
