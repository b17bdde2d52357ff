// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tools/qx/options/CacheOptions.h"
#include "tools/qx/options/ColourOptions.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {

struct ViewOptions {
    CommonOptions common;
    ColourOptions colours;
    CacheOptions cache;
    std::vector<std::string> inputs, effect_folders;
    std::string frames, depth, memory, port;
    bool no_open = false;
};

/// Shows the inputs in a page until a signal comes: never returns. Throws WrongUsage, WorkFailed, pictures::Failure,
/// and pictures::Stopped at the signal.
[[noreturn]] void view(const ViewOptions& options);

}  // namespace qx::tool
