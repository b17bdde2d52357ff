// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/EffectFolders.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// --effects FOLDER, which may be there several times.
void add_effect_folders_option(CLI::App& command, std::vector<std::string>& folders);

/// An effect that is told by a text, and what is told of it.
struct EffectArgument {
    std::string name;
    std::shared_ptr<scene::Effect> effect;
    std::vector<std::pair<std::string, std::string>> values;  ///< of its keys, by their names
};
EffectArgument effect_argument(const std::string& option, const std::string& text, host::EffectFolders& folders);

/// The effect that NAME[:KEY=VALUE]... tells: one of the scene's own, whose names go first, one in the folders, or
/// where NAME has a / the module of that file. A switch stands without =VALUE; \: is a colon that ends nothing. Throws
/// WrongUsage, or pictures::Failure for a module that cannot be used.
std::shared_ptr<const scene::Effect> effect_of(const std::string& option, const std::string& text,
                                               host::EffectFolders& folders);

}  // namespace qx::tool
