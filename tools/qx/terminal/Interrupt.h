// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Watch.h"

namespace qx::tool {

/// From now on the first of SIGINT, SIGTERM and SIGHUP is only noted. A second one, or five seconds in which nobody
/// heard of the first, end the process with the status of an interruption; what was being written is removed. A file
/// that grows too large and a pipe that nobody reads are errors of their writes.
void install_signal_handlers();
/// Other than five seconds, for a command that has nothing to finish.
void set_patience(int milliseconds) noexcept;
bool interrupted() noexcept;

/// Stops work once a signal has come.
class SignalWatch : public pictures::Watch {
public:
    bool stops() const noexcept override { return interrupted(); }
    void rows(std::int64_t, std::int64_t) noexcept override {}
};

}  // namespace qx::tool
