// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/terminal/Interrupt.h"

#include <atomic>
#include <csignal>

namespace qx::tool {
namespace {

std::atomic<bool> noted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

void note(int) { noted.store(true, std::memory_order_relaxed); }

}  // namespace

void install_signal_handlers() {
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, note);
    if (std::signal(SIGHUP, SIG_IGN) != SIG_IGN) std::signal(SIGHUP, note);  // under nohup it stays switched off
    for (const int signal : {SIGXFSZ, SIGPIPE}) std::signal(signal, SIG_IGN);
}

bool interrupted() noexcept { return noted.load(std::memory_order_relaxed); }

}  // namespace qx::tool
