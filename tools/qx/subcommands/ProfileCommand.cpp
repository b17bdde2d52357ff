// SPDX-License-Identifier: Apache-2.0
// qx profile: what a colour profile is, and its file.
#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "scene/colour/Profiles.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

struct ProfileOptions {
    CommonOptions common;
    std::string what, output;
    bool json = false;
};

const char* const kProfileFooter =
    R"(Names are srgb, rec709, rec709-2.4, display-p3 and rec2020; linear, or linear- before one of them;
gamma- and an exponent. Of a picture it tells what its values mean, and whether the file says so.

Example:
  qx profile photo.jpg
  qx profile linear-display-p3 -o p3-linear.icc)";

constexpr const char* kClasses[] = {"input", "display", "output", "colour space"};
constexpr const char* kSpaces[] = {"RGB", "CMYK"};
constexpr const char* kPoints[] = {"red", "green", "blue", "white"};

struct Found {
    scene::Profile profile;
    std::optional<bool> told;  ///< of a picture: whether its file does
};

Found found_in_picture(const std::string& file) {
    pictures::Picture picture;
    NotesOnce once;
    read_all({{&file, &picture}}, once, {.cmyk = true});
    std::vector<std::string> notes;
    const scene::Meaning meaning = scene::meaning_of(picture, notes);
    tell_losses(once, file, notes);
    if (!meaning.profile) throw pictures::Failure(file, pictures::kCmykIsUnknown);
    return {meaning.profile, meaning.told};
}

/// A name goes before a file of that name, as everywhere.
Found found(const std::string& what) {
    std::error_code ignored;
    std::string fault;
    const bool is_file = std::filesystem::exists(what, ignored);
    if (scene::Profile named = standalone::NamedProfile(what, &fault)) return {named, {}};
    if (is_file && pictures::is_picture(what)) return found_in_picture(what);
    try {
        return {scene::profile_of_text(what), {}};
    } catch (const scene::BadText& bad) {
        if (!is_file) throw WrongUsage(bad.what());
        throw WorkFailed(std::string(bad.what()) + ", and no picture");
    }
}

std::array<standalone::Chromaticity, 4> points_of(const standalone::Primaries& p) {
    return {p.red, p.green, p.blue, p.white};
}

std::string hex(const t_CMX_ID& id) {
    std::string text;
    for (const unsigned byte : id.bytes) {
        for (const unsigned digit : {byte >> 4, byte & 15U}) text += "0123456789abcdef"[digit];
    }
    return text;
}

nlohmann::ordered_json in_json(const standalone::ProfileFacts& facts, const Found& found) {
    nlohmann::ordered_json json = {{"name", facts.name},
                                   {"class", kClasses[static_cast<int>(facts.kind)]},
                                   {"space", kSpaces[static_cast<int>(facts.space)]},
                                   {"made_of", facts.has_matrix ? "curves and a matrix" : "tables"}};
    for (std::size_t i = 0; facts.primaries && i < std::size(kPoints); ++i) {
        const auto point = points_of(*facts.primaries)[i];
        json[kPoints[i]] = {point.x, point.y};
    }
    if (facts.gammas) json["gammas"] = *facts.gammas;
    json["over_range"] = facts.over_range;
    json["id"] = hex(facts.id);
    if (found.told) json["told"] = *found.told;
    return json;
}

std::string in_words(const standalone::ProfileFacts& facts, const Found& found) {
    std::string text;
    const auto line = [&](const std::string& what, const std::string& words) {
        text += what + std::string(11 - what.size(), ' ') + pictures::one_line(words) + "\n";
    };
    const auto number = [](double value) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.4f", value);
        return std::string(digits);
    };
    line("name", facts.name);
    line("class", kClasses[static_cast<int>(facts.kind)]);
    line("space", kSpaces[static_cast<int>(facts.space)]);
    line("made of", facts.has_matrix ? "curves and a matrix" : "tables");
    for (std::size_t i = 0; facts.primaries && i < std::size(kPoints); ++i) {
        const auto point = points_of(*facts.primaries)[i];
        line(kPoints[i], number(point.x) + " " + number(point.y));
    }
    if (facts.gammas) {
        const auto& [red, green, blue] = *facts.gammas;
        line("gammas", number(red) + " " + number(green) + " " + number(blue));
    }
    line("over-range", facts.over_range ? "yes" : "no");
    line("id", hex(facts.id));
    if (found.told) line("told", *found.told ? "by the file" : "by nothing, it is what such values usually are");
    return text;
}

void check_output_name(const std::string& path) {
    const std::string extension = pictures::extension_of(path);
    if (extension != "icc" && extension != "icm") throw WrongUsage("-o " + path + ": its ending is none of icc, icm");
}

/// The file of a profile, complete but for its name.
std::unique_ptr<pictures::OutputFile> uncommitted(const std::string& path, const scene::Profile& profile) {
    const auto bytes = standalone::ICCOf(*profile);
    auto file = std::make_unique<pictures::OutputFile>(path);
    file->check();
    file->write(bytes.data(), bytes.size());
    file->finish();
    return file;
}

void run(const ProfileOptions& options) {
    apply_common_options(options.common);
    if (!options.output.empty()) check_output_name(options.output);
    const Library library;
    const Found result = found(options.what);
    const auto file = options.output.empty() ? nullptr : uncommitted(options.output, result.profile);
    const auto facts = standalone::FactsOf(*result.profile);
    if (options.json) {
        print_json(in_json(facts, result));
    } else {
        std::fputs(in_words(facts, result).c_str(), stdout);
    }
    finish_output();
    if (!file) return;
    file->commit();
    say_detail(options.output, "written");
}

}  // namespace

void add_profile(CLI::App& app) {
    auto* command = app.add_subcommand("profile", "Tell what a colour profile is, and write its file");
    const auto options = std::make_shared<ProfileOptions>();
    command->add_option("PROFILE", options->what, "a profile's name, an ICC file or a picture")
        ->required()
        ->type_name("NAME|FILE.icc|PICTURE");
    command->add_option("-o,--output", options->output, "file to write the profile to: icc, icm")->type_name("FILE");
    add_json_option(*command, options->json);
    add_common_options(*command, options->common);
    set_usage(*command, "NAME|FILE.icc|PICTURE [options]");
    command->footer(kProfileFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
