// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace qx::scene {

struct ModeName {
    int number;
    const char* name;  ///< snake case
};

/// The 43 modes in number order.
const std::vector<ModeName>& all_modes();

/// Number of a mode given by name (in snake or kebab case, with or without `xfer_`) or number.
/// Throws BadText with the nearest name.
int mode_number(const std::string& text);

}  // namespace qx::scene
