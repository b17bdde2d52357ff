// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "scene/effects/Effect.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace qx::tool {

/// The keys of an effect as options of a subcommand: --NAME for each that is no list.
class EffectOptions {
public:
    /// Adds the options. What is read later goes to effects of the same kind.
    /// @param left_out  a key that the subcommand tells otherwise, or null
    EffectOptions(CLI::App& command, const scene::Keys& keys, const char* group, const char* left_out = nullptr);

    /// The texts of the options that stand on the command line, in its order.
    using Texts = std::vector<std::pair<const CLI::Option*, std::string>>;
    const CLI::App& command() const { return command_; }
    bool has(const CLI::Option* option) const;
    /// Gives keys the values of these options. Throws WrongUsage, which names the option.
    void read(const Texts& texts, const scene::Keys& keys) const;
    /// All that stand on the command line.
    Texts texts() const;

private:
    CLI::App& command_;
    std::vector<std::pair<const CLI::Option*, std::string>> added_;  ///< with the key's name
};

/// Gives a key the value that a text tells. Throws WrongUsage.
/// @param option  that stands before what is wrong
void read_key(const scene::Key& key, const std::string& option, const std::string& text);

/// Settles an effect whose keys are told. Throws WrongUsage.
void settle(scene::Effect& effect);

/// A picture named on the command line.
scene::SceneFile file_named(const std::string& path);

}  // namespace qx::tool
