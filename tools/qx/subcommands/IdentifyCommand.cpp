// SPDX-License-Identifier: Apache-2.0
// qx identify: what files are, by their heads.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string_view>

#include "pictures/Movie.h"
#include "scene/colour/Profiles.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/LongWork.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

using Json = nlohmann::ordered_json;

struct IdentifyOptions {
    CommonOptions common;
    std::vector<std::string> files;
    bool json = false;
};

const char* const kIdentifyFooter =
    R"(Only the heads of files are read: their pixels may be damaged all the same. The size is that of what
is seen, the sides of what is stored turned are exchanged. Colour codes are those of ITU-T H.273, 2 is
unknown. A file that cannot be read is told, the others follow, and the exit status is 1.

Example:
  qx identify frame.exr photo.jpg clip.mp4
  qx identify frame.exr --json)";

/// What is told of a file: lines of a name and a value, which are texts, numbers or lists.
struct Told {           // NOLINT(bugprone-exception-escape): moves of the JSON library throw nothing
    std::string title;  ///< the first line
    Json json;
};

std::string decimal(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string size_words(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

const char* precision_word(pictures::Precision precision) {
    constexpr const char* words[] = {"8 bits", "16 bits", "half floats", "floats"};
    return words[static_cast<int>(precision)];
}

const char* alpha_word(const pictures::Picture& picture) {
    return !picture.has_alpha ? "none" : picture.associated ? "associated" : "straight";
}

Json resolution_of(const pictures::Resolution& resolution) {
    constexpr const char* units[] = {"ratio", "inch", "centimetre", "metre"};
    return {{"x", resolution.x}, {"y", resolution.y}, {"per", units[static_cast<int>(resolution.unit)]}};
}

/// The profile's name, and whether the file tells it.
void tell_profile(const pictures::Picture& picture, std::vector<std::string>& notes, Json& json) {
    const scene::Meaning meaning = scene::meaning_of(picture, notes);
    json["profile"] = meaning.profile ? scene::name_of(meaning.profile) : "";
    json["profile_told"] = meaning.told;
}

Told identify_picture(const std::string& file, pictures::Watch& watch) {
    const pictures::Picture picture = pictures::read_picture(file, watch, {.cmyk = true, .pixels = false});
    const pictures::InFile& in_file = picture.in_file;
    const pictures::PictureSize size = pictures::turned_size(in_file);
    Told told;
    told.title = std::string(in_file.format) + ", " + size_words(size.width, size.height) + ", " +
                 precision_word(picture.precision);
    told.json = {{"file", file},
                 {"format", in_file.format},
                 {"size", {size.width, size.height}},
                 {"depth", in_file.depth},
                 {"values", precision_word(picture.precision)},
                 {"alpha", alpha_word(picture)},
                 {"inks", picture.cmyk}};
    std::vector<std::string> notes = picture.notes;
    tell_profile(picture, notes, told.json);
    if (in_file.orientation != 1) told.json["orientation"] = in_file.orientation;
    if (picture.resolution.x > 0) told.json["resolution"] = resolution_of(picture.resolution);
    if (!in_file.layers.empty()) told.json["layers"] = in_file.layers;
    for (const pictures::Fact& fact : in_file.facts) told.json["attributes"][fact.name] = fact.value;
    if (!notes.empty()) told.json["notes"] = notes;
    return told;
}

Told identify_movie(const std::string& file) {
    const pictures::MovieReader movie(file);
    const auto& facts = movie.facts();
    const pictures::PictureSize size = pictures::turned_size(movie.in_file());
    const double rate = static_cast<double>(facts.rate.number) / static_cast<double>(facts.rate.per);
    const auto ticks = static_cast<double>(movie.stamps().back() - movie.stamps().front());
    const double seconds =
        ticks * static_cast<double>(facts.time_base.number) / static_cast<double>(facts.time_base.per);
    Told told;
    told.title = "movie, " + size_words(size.width, size.height) + ", " + std::to_string(facts.depth) + " bits, " +
                 std::to_string(movie.frames()) + " frames, " + decimal(rate) + " a second";
    told.json = {{"file", file},
                 {"format", "movie"},
                 {"size", {size.width, size.height}},
                 {"depth", facts.depth},
                 {"alpha", facts.has_alpha ? "straight" : "none"},
                 {"frames", movie.frames()},
                 {"rate", {facts.rate.number, facts.rate.per}},
                 {"seconds", seconds},
                 {"audio", facts.has_audio},
                 {"codec", facts.codec},
                 {"codes", {facts.tags.primaries, facts.tags.transfer, facts.tags.matrix, facts.tags.range}}};
    if (facts.time_code != nullptr) told.json["time_code"] = facts.time_code;
    if (facts.showing.orientation != 1) told.json["orientation"] = facts.showing.orientation;
    const auto& aspect = facts.showing.aspect;
    if (aspect.number != aspect.per) told.json["pixel_aspect"] = {aspect.number, aspect.per};
    if (!movie.notes().empty()) told.json["notes"] = movie.notes();
    return told;
}

Told identify(const std::string& file, pictures::Watch& watch) {
    return pictures::is_read_as_movie(file) ? identify_movie(file) : identify_picture(file, watch);
}

std::string in_words(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_number_float()) return decimal(value.get<double>());
    if (!value.is_array()) return value.dump();
    std::string all;
    for (const Json& part : value) all += (all.empty() ? "" : ", ") + in_words(part);
    return all;
}

void print_line(const std::string& name, const std::string& value) {
    std::string shown = name;
    std::replace(shown.begin(), shown.end(), '_', ' ');
    std::printf("  %-14s %s\n", shown.c_str(), pictures::one_line(value).c_str());
}

/// Those of ITU-T H.273.
std::string codes_in_words(const Json& codes) {
    constexpr const char* names[] = {"primaries ", ", transfer ", ", matrix "};
    constexpr const char* ranges[] = {", range unknown", ", range limited", ", range full"};
    std::string all;
    for (std::size_t i = 0; i < std::size(names); ++i) all += names[i] + codes[i].dump();
    return all + ranges[std::clamp(codes[3].get<int>(), 0, 2)];
}

constexpr std::string_view kInTitle[] = {"file", "format", "size", "depth", "values", "frames", "rate"};

void print(const Told& told) {
    std::printf("%s: %s\n", pictures::one_line(told.json["file"].get<std::string>()).c_str(), told.title.c_str());
    for (const auto& [name, value] : told.json.items()) {
        if (std::ranges::find(kInTitle, name) != std::end(kInTitle)) continue;
        if (name == "inks" && !value.get<bool>()) continue;
        if (name == "codes") {
            print_line("colour codes", codes_in_words(value));
        } else if (name == "resolution") {
            print_line(name, in_words(value["x"]) + " x " + in_words(value["y"]) + ", " + in_words(value["per"]));
        } else if (value.is_object()) {
            for (const auto& [key, part] : value.items()) print_line(key, in_words(part));
        } else {
            print_line(name, in_words(value));
        }
    }
}

void run(const IdentifyOptions& options) {
    apply_common_options(options.common);
    const Library library;
    SignalWatch watch;
    Json all = Json::array();
    bool all_told = true;
    for (const std::string& file : options.files) {
        const std::string fault = fault_of([&] {
            const Told told = identify(file, watch);
            if (options.json) {
                all.push_back(told.json);
            } else {
                print(told);
            }
        });
        if (!fault.empty()) say_error(fault);
        all_told = all_told && fault.empty();
    }
    if (options.json) print_json(all);
    finish_output();
    if (!all_told) throw EndedWith{kWorkFailed};
}

}  // namespace

void add_identify(CLI::App& app) {
    auto* command = app.add_subcommand("identify", "Tell what pictures and movies are");
    const auto options = std::make_shared<IdentifyOptions>();
    command->add_option("files", options->files, "pictures, movies")->required()->type_name("FILE");
    add_json_option(*command, options->json);
    add_common_options(*command, options->common);
    set_usage(*command, "FILE... [--json]");
    command->footer(kIdentifyFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
