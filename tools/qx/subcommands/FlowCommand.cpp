// SPDX-License-Identifier: Apache-2.0
// qx flow: what moves where between two pictures.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/qx/Commands.h"

namespace qx::tool {

void add_flow(CLI::App& app) { static_cast<void>(app); }

}  // namespace qx::tool
