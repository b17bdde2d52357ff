// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/ParserWords.h"

#include <CLI/CLI.hpp>
#include <string_view>

namespace qx::tool {
namespace {

constexpr std::string_view kIsRequired = " is required", kFlagHasValue = " was given a disallowed flag override";

/// The name that the usage line has for an argument.
std::string shown_name(const std::string& name, const CLI::App& app) {
    for (const CLI::App* command : app.get_subcommands()) {
        const CLI::Option* const option = command->get_option_no_throw(name);
        if (option != nullptr && option->get_positional() && name != option->get_type_name() &&
            name.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos)
            return option->get_type_name();
    }
    return name;
}

/// The number that stands somewhere in a text.
std::string number_in(std::string_view text) {
    const auto begin = text.find_first_of("0123456789");
    return std::string(text.substr(begin, text.find_first_not_of("0123456789", begin) - begin));
}

}  // namespace

std::string words_of(const CLI::ParseError& fault, const CLI::App& app) {
    std::string said = fault.what();
    if (said.ends_with(kIsRequired) && !app.get_subcommands().empty())
        return shown_name(said.substr(0, said.size() - kIsRequired.size()), app) + std::string(kIsRequired);
    if (said.ends_with(kFlagHasValue))
        return "--" + said.substr(0, said.size() - kFlagHasValue.size()) + " takes no value";
    const auto colon = said.find(": ");
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&fault) == nullptr || colon == std::string::npos) return said;
    const std::string name = said.substr(0, colon);
    if (const auto received = said.find("received "); received != std::string::npos)
        return name + " stands " + number_in(std::string_view(said).substr(received)) + " times, once is enough";
    return name + ": its value is missing";
}

}  // namespace qx::tool
