// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/describe/CommandFacts.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "platform/standalone/Colour.h"
#include "scene/LayerPlace.h"
#include "scene/LayerWords.h"
#include "scene/Modes.h"

namespace qx::tool {
namespace {

using Words = std::vector<std::string>;

Words mode_words() {
    Words words;
    for (const scene::Mode& mode : scene::all_modes()) {
        words.emplace_back(mode.name);
        std::replace(words.back().begin(), words.back().end(), '_', '-');
        words.insert(words.end(), mode.aliases.begin(), mode.aliases.end());
    }
    return words;
}

/// "8|16|32": all parts are words to be written as they stand.
Words words_of_list(const std::string& value) {
    Words words(1);
    for (const char c : value) {
        if (c == '|') {
            words.emplace_back();
        } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-') {
            words.back() += c;
        } else {
            return {};
        }
    }
    return words.size() > 1 ? words : Words();
}

/// What a value may be, by what the help calls it.
Words words_of(const std::string& value) {
    if (value == "NAME|NUMBER") return mode_words();
    if (value == "PROFILE") return standalone::ProfileNames();
    if (value == "SIDE") return {std::begin(scene::kGravityWords), std::end(scene::kGravityWords)};
    if (value == "FIELD") return {std::begin(scene::kFieldWords), std::end(scene::kFieldWords)};
    return words_of_list(value);
}

bool names_file(const std::string& value) {
    static const std::set<std::string> kinds = {"FILE", "OUT", "MASK", "PROFILE", "FOLDER", "SCENE", "CLIP"};
    return std::any_of(kinds.begin(), kinds.end(),
                       [&](const std::string& kind) { return value.find(kind) != std::string::npos; });
}

OptionFacts facts_of(const CLI::Option& option) {
    OptionFacts facts;
    for (const std::string& name : option.get_snames()) facts.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) facts.names.push_back("--" + name);
    const bool is_switch = option.get_items_expected_max() == 0;
    facts.value = is_switch ? "" : option.get_type_name();
    facts.help = option.get_description();
    facts.group = option.get_group();
    facts.words = words_of(facts.value);
    facts.takes_file = names_file(facts.value);
    if (facts.names.empty()) facts.names.push_back(option.get_name());
    return facts;
}

CommandFacts facts_of_command(const CLI::App& app, const std::string& program) {
    CommandFacts facts{app.get_name(), app.get_description(), {}, app.get_footer(), {}, {}};
    if (const auto formatter = std::dynamic_pointer_cast<CLI::Formatter>(app.get_formatter())) {
        facts.usage = formatter->make_usage(&app, program + " " + app.get_name());
    }
    facts.usage.erase(0, facts.usage.find_first_not_of('\n'));
    const std::string lead = "Usage: ";
    if (facts.usage.starts_with(lead)) facts.usage.erase(0, lead.size());
    while (!facts.usage.empty() && facts.usage.back() == '\n') facts.usage.pop_back();
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_group().empty()) continue;
        (option->get_positional() ? facts.arguments : facts.options).push_back(facts_of(*option));
    }
    return facts;
}

}  // namespace

std::vector<CommandFacts> facts_of(const CLI::App& app) {
    std::vector<CommandFacts> commands;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        commands.push_back(facts_of_command(*command, app.get_name()));
    }
    return commands;
}

}  // namespace qx::tool
