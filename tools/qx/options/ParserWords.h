// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace qx::tool {

/// What a fault of the line is called here: the parser has its own names for arguments and its own grammar.
/// @param app  with the subcommand that was read
std::string words_of(const CLI::ParseError& fault, const CLI::App& app);

}  // namespace qx::tool
