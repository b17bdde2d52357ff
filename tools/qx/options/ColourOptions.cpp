// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/ColourOptions.h"

#include <CLI/CLI.hpp>

#include "scene/LayerWords.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {

void ColourOptions::apply(scene::ColourChoices& choices) const {
    if (!space.empty()) {
        choices.has_space = true;
        choices.space = space == scene::kOfBackground
                            ? nullptr
                            : value_of("--space", [&] { return scene::rgb_profile_of_text(space); });
    }
    if (!to.empty()) choices.output = value_of("--to", [&] { return scene::rgb_profile_of_text(to); });
    choices.linearize = choices.linearize || linearize;
}

const char* ColourOptions::without_space() const {
    if (!space.empty()) return nullptr;
    return linearize ? "--linearize" : !to.empty() ? "--to" : nullptr;
}

void add_colour_options(CLI::App& command, ColourOptions& options) {
    command
        .add_option("--space", options.space,
                    "composite in this space, into which all pictures but masks are brought: a profile's name, an ICC "
                    "file, or background (default: values are taken as they are)")
        ->type_name("PROFILE");
    command.add_flag("--linearize", options.linearize, "work in the linear version of the space")
        ->disable_flag_override();
    command.add_option("--to", options.to, "profile of the result (default: the space)")->type_name("PROFILE");
}

}  // namespace qx::tool
