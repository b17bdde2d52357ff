// SPDX-License-Identifier: Apache-2.0
#include "host/Calls.h"

namespace qx::host {

std::string Outcome::words() const {
    const std::string number = " (code " + std::to_string(code) + ")";
    if (!thrown.empty()) return "threw " + thrown + number;
    return (code == kQX_OutOfMemory ? "out of memory" : "failed") + number;
}

}  // namespace qx::host
