// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/qx/terminal/Messages.h"

// What a command says on standard output.
namespace qx::tool {

/// The answer is out, or the command fails.
inline void finish_output() {
    if (std::fflush(stdout) != 0) throw WorkFailed(kNoStandardOutput);
}

/// Names of files may hold bytes that are no text; they are replaced.
inline void print_json(const nlohmann::ordered_json& json) {
    std::printf("%s\n", json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

}  // namespace qx::tool
