// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>

#include "scene/Words.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
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

void check_subcommand(const CLI::App& app, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr)) names.push_back(command->get_name());
    if (word[0] == '-' || std::find(names.begin(), names.end(), word) != names.end()) return;
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
    if (!words.empty()) check_subcommand(app, words.front());
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
        throw WrongUsage(std::string(error.what()) + " (see " + help_of(app) + ")");
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
        add_comp(app);
        add_convert(app);
        add_profile(app);
        add_diff(app);
        add_hash(app);
        add_identify(app);
        add_sheet(app);
        add_guess_alpha(app);
        add_blur(app);
        add_matte(app);
        add_convolve(app);
        add_adjust(app);
        add_blend(app);
        add_render(app);
        add_view(app);
        add_retime(app);
        add_flow(app);
        add_cache(app);
        add_effects(app);
        add_modes(app);
        add_info(app);
        add_generate(app);
        return parse_and_run(app, argc, argv);
    } catch (const pictures::Stopped&) {
        say_error("interrupted");
        return kInterruptedStatus;
    } catch (const EndedWith& end) {
        return end.status;
    } catch (const WrongUsage& fault) {
        say_error(fault.what());
        return kWrongUsage;
    } catch (...) {
        tell_fault(say_error);
    }
    return kWorkFailed;
}

}  // namespace qx::tool
