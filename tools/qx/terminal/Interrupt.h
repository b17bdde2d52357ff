// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Watch.h"

namespace qx::tool {

/// From now on SIGINT, SIGTERM and SIGHUP are only noted; a file that grows too large and a pipe that nobody reads
/// are errors of their writes.
void install_signal_handlers();
bool interrupted() noexcept;

/// Stops work once a signal has come.
class SignalWatch : public pictures::Watch {
public:
    bool stops() const noexcept override { return interrupted(); }
    void rows(std::int64_t, std::int64_t) noexcept override {}
};

}  // namespace qx::tool
