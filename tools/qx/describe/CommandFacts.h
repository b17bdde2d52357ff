// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

// The command as its own tree of options tells it, for the texts that are made from that: manual page, completions.
namespace qx::tool {

struct OptionFacts {
    std::vector<std::string> names;  ///< with their hyphens, the short one first; of an argument its name
    std::string value;               ///< what follows it, empty for a switch
    std::string help, group;
    std::vector<std::string> words;  ///< that its value may be, where they are few or known
    bool takes_file = false;         ///< of a value that may be a file's name
};

struct CommandFacts {
    std::string name, help, usage, footer;
    std::vector<OptionFacts> arguments, options;
};

/// All subcommands in the order of the help text.
std::vector<CommandFacts> facts_of(const CLI::App& app);

/// The manual page in the language of man(7).
std::string man_page(const std::string& version, const std::vector<CommandFacts>& commands);

// What a shell is to source.
std::string bash_completion(const std::vector<CommandFacts>& commands);
std::string zsh_completion(const std::vector<CommandFacts>& commands);
std::string fish_completion(const std::vector<CommandFacts>& commands);

}  // namespace qx::tool
