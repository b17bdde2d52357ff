// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "pictures/Failure.h"
#include "scene/Words.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/ParserWords.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {
namespace {

/// An empty value is never meant, it comes from a variable that is not set; the parser would take it for none.
void refuse_empty(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.empty() && i > 0 && words[i - 1][0] == '-') throw WrongUsage(words[i - 1] + ": its value is empty");
        if (word.empty()) throw WrongUsage("an argument is empty");
        if (word[0] == '-' && word.back() == '=') throw WrongUsage(word + ": its value is empty");
    }
}

struct Subcommand {
    std::string_view name;
    void (*add)(CLI::App&);
};
constexpr Subcommand kSubcommands[] = {
    {"comp", add_comp},   {"convert", add_convert},   {"profile", add_profile},   {"diff", add_diff},
    {"hash", add_hash},   {"identify", add_identify}, {"sheet", add_sheet},       {"guess-alpha", add_guess_alpha},
    {"blur", add_blur},   {"matte", add_matte},       {"convolve", add_convolve}, {"adjust", add_adjust},
    {"blend", add_blend}, {"render", add_render},     {"view", add_view},         {"retime", add_retime},
    {"flow", add_flow},   {"cache", add_cache},       {"effects", add_effects},   {"modes", add_modes},
    {"info", add_info},   {"generate", add_generate},
};
constexpr std::string_view kDescribesAll = "generate";

/// Adds the subcommand that the line begins with, alone, since the options of all of them would cost a short run a
/// fifth of its time; for help, all.
void add_subcommands(CLI::App& app, const std::vector<std::string>& words) {
    const std::string first = words.empty() ? "" : words.front();
    if (first == "--version") return;
    const auto* const named = std::ranges::find(kSubcommands, first, &Subcommand::name);
    if (named != std::end(kSubcommands) && first != kDescribesAll) return named->add(app);
    for (const Subcommand& subcommand : kSubcommands) subcommand.add(app);
}

void check_subcommand(const std::string& word) {
    std::vector<std::string> names;
    for (const Subcommand& subcommand : kSubcommands) names.emplace_back(subcommand.name);
    constexpr std::string_view flags[] = {"--help", "-h", "--version"};
    if (std::ranges::find(names, word) != names.end() || std::ranges::find(flags, word) != std::end(flags)) return;
    if (word[0] == '-') throw WrongUsage(word + ": a subcommand stands before its options; see qx --help");
    throw WrongUsage(word + ": no such subcommand" + scene::suggestion(word, names, "see qx --help"));
}

/// How the options of the subcommand at hand are shown.
std::string help_of(const CLI::App& app) {
    const auto called = app.get_subcommands();
    return called.empty() ? "qx --help" : "qx " + called.front()->get_name() + " --help";
}

/// "; the nearest is --name" for the first long option that the subcommand does not know, if one is near; else where
/// all of them are told.
std::string nearest_option(const CLI::App& app, const std::vector<std::string>& words) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands()) {
        for (const CLI::Option* option : command->get_options()) {
            for (const auto& name : option->get_lnames()) names.push_back("--" + name);
        }
    }
    for (const auto& word : words) {
        const std::string option = word.substr(0, word.find('='));
        if (names.empty() || option.rfind("--", 0) != 0) continue;
        if (std::find(names.begin(), names.end(), option) != names.end()) continue;
        return scene::suggestion(option, names, "see " + help_of(app));
    }
    return "; see " + help_of(app);
}

/// A name in square brackets stays the name of a file; the parser would take it for a list.
void keep_brackets(std::vector<std::string>& words) {
    for (std::string& word : words) {
        std::error_code ignored;
        const bool list = word.front() == '[' && word.back() == ']';
        if (list && std::filesystem::exists(word, ignored)) word.insert(0, "./");
    }
}

/// "help", "help SUBCOMMAND" and "version" stand for the flags that other programs have them as.
void take_plain_words(std::vector<std::string>& words) {
    if (!words.empty() && words.front() == "help") {
        words.erase(words.begin());
        if (words.size() > 1) throw WrongUsage("help " + words[0] + " " + words[1] + ": help is for one subcommand");
        words.emplace_back("--help");
    }
    if (!words.empty() && words.front() == "version") words.front() = "--version";
}

int parse_and_run(CLI::App& app, int argc, const char* const* argv) {
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    refuse_empty(words);
    keep_brackets(words);
    take_plain_words(words);
    if (!words.empty()) check_subcommand(words.front());
    add_subcommands(app, words);
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));  // it takes them from the end
    } catch (const CLI::Success& success) {                                 // --help, --version
        app.exit(success);
        std::cout.flush();
        if (!std::cout) throw WorkFailed(kNoStandardOutput);
        return kDone;
    } catch (const CLI::ExtrasError& error) {
        throw WrongUsage(error.what() + nearest_option(app, words));
    } catch (const CLI::ParseError& error) {
        throw WrongUsage(words_of(error, app) + " (see " + help_of(app) + ")");
    }
    return kDone;
}

}  // namespace

int run_command(int argc, const char* const* argv) {
    install_terminate_handler();
    install_signal_handlers();
    try {
        CLI::App app("Composites, filters and converts pictures, exact to the bit.", "qx");
        app.set_version_flag("--version", "qx " QX_VERSION);
        app.require_subcommand(1);
        app.footer(
            "Example:\n  qx comp photo.jpg logo.png --mode screen -o out.png\n  qx render scene.json -o out.####.png "
            "--frames 1-48");
        return parse_and_run(app, argc, argv);
    } catch (const pictures::Stopped&) {
        say_error("interrupted");
        return kInterruptedStatus;
    } catch (const EndedWith& end) {
        return end.status;
    } catch (const WrongUsage& fault) {
        say_error(fault.what());
        return kWrongUsage;
    } catch (const pictures::BadChoice& fault) {
        say_error(fault.what());
        return kWrongUsage;
    } catch (...) {
        tell_fault(say_error);
    }
    return kWorkFailed;
}

}  // namespace qx::tool
