// SPDX-License-Identifier: Apache-2.0
#include "host/LastReport.h"

#include <algorithm>
#include <array>

namespace qx::host {
namespace {

/// Ends with 0. Without a destructor, which a thread would need memory for that cannot be refused.
thread_local std::array<char, 1000> report;

}  // namespace

void keep_report(const std::string& text) {
    const std::size_t size = std::min(text.size(), report.size() - 1);
    std::copy_n(text.begin(), size, report.begin());
    report[size] = 0;
}
void forget_report() { report[0] = 0; }
std::string last_report() { return report.data(); }

}  // namespace qx::host
