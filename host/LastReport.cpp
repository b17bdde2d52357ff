// SPDX-License-Identifier: Apache-2.0
#include "host/LastReport.h"

namespace qx::host {
namespace {

thread_local std::string report;

}  // namespace

void keep_report(const std::string& text) { report = text; }
void forget_report() { report.clear(); }
std::string last_report() { return report; }

}  // namespace qx::host
