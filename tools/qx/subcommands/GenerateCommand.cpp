// SPDX-License-Identifier: Apache-2.0
// qx generate: the manual page and the completions of shells, from the options themselves.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "tools/qx/Commands.h"
#include "tools/qx/describe/CommandFacts.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

constexpr const char* kTexts[] = {"man", "bash", "zsh", "fish"};

std::string text_of(const std::string& name, const std::vector<CommandFacts>& commands) {
    switch (choice("TEXT", name, kTexts)) {
        case 0:
            return man_page(QX_VERSION, commands);
        case 1:
            return bash_completion(commands);
        case 2:
            return zsh_completion(commands);
        default:
            return fish_completion(commands);
    }
}

}  // namespace

void add_generate(CLI::App& app) {
    auto* command = app.add_subcommand("generate", "Write the manual page, or completions for a shell");
    const auto name = std::make_shared<std::string>();
    command->add_option("TEXT", *name, "man, bash, zsh or fish")->required()->type_name("TEXT");
    set_usage(*command, "man|bash|zsh|fish");
    command->footer(
        "Example:\n  qx generate bash > ~/.local/share/bash-completion/completions/qx\n  qx generate man > qx.1");
    command->callback([&app, name] {
        const std::string text = text_of(*name, facts_of(app));
        std::fwrite(text.data(), 1, text.size(), stdout);
        finish_output();
    });
}

}  // namespace qx::tool
