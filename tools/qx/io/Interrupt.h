// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx::io {

/// Thrown by work that stops because the user asked for it.
struct Interrupted {};

/// From now on SIGINT and SIGTERM are only noted, and a file that grows too large is an error of its write.
void install_signal_handlers();
bool interrupted();
/// Throws Interrupted once a signal has come.
void check_interrupt();

}  // namespace qx::io
