// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace qx::host {

/// The last report that a routine made on this thread: who gets the reports of the platform hands them in.
void keep_report(const std::string& text);
void forget_report();
std::string last_report();

}  // namespace qx::host
