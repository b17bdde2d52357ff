// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "pictures/Picture.h"
#include "scene/Placing.h"
#include "scene/Words.h"
#include "tools/qx/options/EncodingOptions.h"
#include "tools/qx/options/ReadingOptions.h"
#include "tools/qx/terminal/Messages.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// Options that every subcommand has. Texts, since an empty one lets the environment speak.
struct CommonOptions {
    std::string threads, bands;
    bool quiet = false, verbose = false;
};
void add_common_options(CLI::App& command, CommonOptions& options);

/// --json, of commands that tell something.
void add_json_option(CLI::App& command, bool& json);

/// --depth, whose text `depth_of` reads.
/// @param usual  what holds without it
void add_depth_option(CLI::App& command, std::string& depth, const std::string& usual);
/// 0 for an empty text; throws WrongUsage.
int depth_of(const std::string& text);

/// Options of a command that makes one picture: -o, --depth, those of the encoding and those of every subcommand.
struct PictureOptions {
    CommonOptions common;
    ReadingOptions reading;
    EncodingOptions encoding;
    std::string output, depth;
    int asked_depth() const { return depth_of(depth); }  ///< 0 stands for the inputs' deepest
};
void add_picture_options(CLI::App& command, PictureOptions& options);

/// The line of help that tells what follows the subcommand's name.
void set_usage(CLI::App& command, const std::string& usage);

/// Sets pool, bands and talk: the flag before QX_THREADS and QX_BANDS before the default. Before QX_Birth.
void apply_common_options(const CommonOptions& options);

/// What `read` makes of an option's text; one that it does not know is wrong usage.
template <class Read> auto value_of(const std::string& option, const Read& read) {
    try {
        return read();
    } catch (const scene::BadText& bad) {
        throw WrongUsage(option + " " + bad.what());
    }
}

// Values of options. They throw WrongUsage, which names the option, for anything else than what they tell.
int whole_number(const std::string& option, const std::string& text, int least, int most);
double real_number(const std::string& option, const std::string& text, double least, double most);
/// Numbers with commas between, from `fewest` to `most` of them; `form` tells the user what they are.
std::vector<double> real_numbers(const std::string& option, const std::string& text, const char* form,
                                 std::size_t fewest, std::size_t most, double least = -scene::kMostPlacing,
                                 double highest = scene::kMostPlacing);
/// The number of a word in a list.
int choice(const std::string& option, const std::string& text, std::span<const char* const> known);
bool flag(const std::string& option, const std::string& text);  ///< "true", as a switch by itself has it, or "false"
struct Place {
    int x, y;
};
Place place(const std::string& option, const std::string& text);  ///< "X,Y"

/// A number of bytes: "800M" or "4G", of 1024 and its powers.
std::uint64_t memory_size(const std::string& option, const std::string& text);
std::uint64_t half_the_memory();  ///< of this machine

/// An output whose name tells no format is wrong usage; one that cannot be there is a failure of the work.
void check_output_option(const std::string& path);

}  // namespace qx::tool
