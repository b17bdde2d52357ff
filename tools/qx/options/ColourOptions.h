// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/colour/WorkingSpace.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// Options of commands that composite in a space.
struct ColourOptions {
    std::string space, to;
    bool linearize = false;

    /// Puts what is asked for in the place of what a scene says. Throws WrongUsage for what is no profile.
    void apply(scene::ColourChoices& choices) const;
    /// The first option that asks for a space where there is none; null if there is no such.
    const char* without_space() const;
};
void add_colour_options(CLI::App& command, ColourOptions& options);

inline constexpr const char* kNeedsSpaceOption = " needs --space PROFILE";

}  // namespace qx::tool
