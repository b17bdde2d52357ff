// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace qx::test {

/// A run of the command. Its standard error goes to `errors`.
struct Outcome {
    int status;
    std::string output, errors;
};
/// @param before  shell text in front of the command, such as a limit
Outcome run_qx(const std::string& arguments, const std::string& before = "");

}  // namespace qx::test
