// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/terminal/Interrupt.h"

#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "pictures/Files.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {
namespace {

std::atomic<bool> noted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

std::atomic<int> patience{5000};  // milliseconds

/// The wish may not be heard, in a library that waits for something: a second signal ends the process by itself, and so
/// does the alarm after a while.
void give_up(int) {
    pictures::remove_unfinished();
    ::_exit(kInterruptedStatus);
}
void note(int signal) {
    if (noted.exchange(true)) give_up(signal);
    std::signal(SIGALRM, give_up);
    const int time = patience;
    const itimerval once{{0, 0}, {time / 1000, time % 1000 * 1000}};
    ::setitimer(ITIMER_REAL, &once, nullptr);
}

/// What waits for another process is not begun anew.
void note_at(int signal) {
    struct sigaction action {};
    action.sa_handler = note;
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

void install_signal_handlers() {
    for (const int signal : {SIGINT, SIGTERM}) note_at(signal);
    if (std::signal(SIGHUP, SIG_IGN) != SIG_IGN) note_at(SIGHUP);  // under nohup it stays switched off
    for (const int signal : {SIGXFSZ, SIGPIPE}) std::signal(signal, SIG_IGN);
}

void set_patience(int milliseconds) noexcept { patience = milliseconds; }

bool interrupted() noexcept { return noted.load(std::memory_order_relaxed); }

}  // namespace qx::tool
