// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace qx::io {

/// Thrown by work that stops because the user asked for it.
struct Interrupted {};

/// From now on SIGINT, SIGTERM and SIGHUP are only noted; a file that grows too large and a pipe that nobody reads
/// are errors of their writes.
void install_signal_handlers();
bool interrupted();
/// Throws Interrupted once a signal has come.
void check_interrupt();

/// Hears how far the work on a file's rows has come.
class RowListener {
public:
    virtual ~RowListener() = default;
    virtual void rows(std::int64_t done, std::int64_t total) = 0;
};
/// Null for none. On the thread that reads and writes files.
void set_row_listener(RowListener* listener);

/// Before each row of a file. @return false once a signal has come
bool next_row(std::int64_t done, std::int64_t total);
/// The same, but throws Interrupted.
void must_next_row(std::int64_t done, std::int64_t total);

}  // namespace qx::io
