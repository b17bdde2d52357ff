// SPDX-License-Identifier: Apache-2.0
// qx guess-alpha: what alpha means in a file, from its pixels.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "QX/pixelops/QX_GuessAlpha.h"
#include "QX/pixelops/QX_Premul.h"
#include "pictures/Losses.h"
#include "scene/Faults.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

struct GuessOptions {
    CommonOptions common;
    ReadingOptions reading;
    EncodingOptions encoding;
    std::vector<std::string> files;
    std::string output;
    bool json = false;
};

const char* const kGuessFooter =
    R"(Looks at the values as the file stores them, at 8 bits, and tells whether colours are straight or
mixed with a matte's by their alpha; beside that what the file's own tag says. With -o that
matte is taken off, and the picture is written with straight alpha.

Example:
  qx guess-alpha *.png
  qx guess-alpha logo.png -o logo-straight.png)";

enum class Meaning { opaque, straight, premultiplied, unknown };
constexpr const char* kMeanings[] = {"opaque", "straight", "premultiplied", "cannot tell"};

struct Guess {
    Meaning meaning = Meaning::unknown;
    QX_Pixel8 matte{};  ///< of a premultiplied one
};

Guess guess_of(const std::string& file, const pictures::Picture& stored) {
    if (!pictures::any_transparency(*stored.world)) return {Meaning::opaque, {}};
    const auto eight = pictures::at_depth(file, *stored.world, 8);
    QX_LayerDef record{};
    eight->FillOutEffectWorld(&record);
    std::int32_t kind = kQX_AlphaUnknown;
    Guess guess;
    scene::must(QX_GuessAlpha(nullptr, &record, &kind, &guess.matte), file);
    guess.meaning = kind == kQX_AlphaStraight        ? Meaning::straight
                    : kind == kQX_AlphaPremultiplied ? Meaning::premultiplied
                                                     : Meaning::unknown;
    return guess;
}

const char* tag_of(const pictures::Picture& picture) {
    return !picture.has_alpha ? "no alpha" : picture.associated ? "premultiplied" : "straight";
}

nlohmann::ordered_json in_json(const std::string& file, const Guess& guess, const char* tag) {
    nlohmann::ordered_json json = {{"file", file}, {"alpha", kMeanings[static_cast<int>(guess.meaning)]}};
    if (guess.meaning == Meaning::premultiplied) json["matte"] = {guess.matte.red, guess.matte.green, guess.matte.blue};
    json["tag"] = tag;
    return json;
}

std::string in_words(const std::string& file, const Guess& guess, const char* tag) {
    std::string words = pictures::about(file, kMeanings[static_cast<int>(guess.meaning)]);
    const QX_Pixel8& m = guess.matte;
    if (guess.meaning == Meaning::premultiplied) {
        words += " with matte " + std::to_string(m.red) + "," + std::to_string(m.green) + "," + std::to_string(m.blue);
    }
    return pictures::one_line(words + " (its tag says " + tag + ")");
}

/// Takes a matte off and writes the picture.
void repair(const GuessOptions& options, const Guess& guess, pictures::Picture& picture) {
    const QX_Pixel8& m = guess.matte;
    const QX_PixelFloat matte{1, static_cast<float>(m.red) / 255.0f, static_cast<float>(m.green) / 255.0f,
                              static_cast<float>(m.blue) / 255.0f};
    const std::string& file = options.files.front();
    if (guess.meaning == Meaning::premultiplied) {
        QX_LayerDef record{};
        picture.world->FillOutEffectWorld(&record);
        scene::must(QX_PremulColorFloat(nullptr, &record, &matte, false, &record), file);
        picture.beside() = {};
    } else {
        FileProgress progress("reading");
        picture = pictures::read_picture(file, progress, options.reading.read_options());  // as it is meant
    }
    const int depth = picture.world->Depth();
    NotesOnce once;
    tell_losses(once, file, picture.notes);
    tell_losses(once, file, lost_in_file(options.output, picture, depth, options.encoding));
    write_result(options.output, picture, depth, options.encoding);
}

void run(const GuessOptions& options) {
    apply_common_options(options.common);
    if (!options.output.empty()) {
        if (options.files.size() > 1) throw WrongUsage("-o is for one file");
        check_output_option(options.output);
        options.encoding.check(options.output);
    }
    const Library library;
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const std::string& file : options.files) {
        std::optional<pictures::Picture> picture;
        {
            FileProgress progress("reading");
            pictures::ReadOptions as_stored = options.reading.read_options();
            as_stored.straighten = false;
            picture = pictures::read_picture(file, progress, as_stored);
        }
        const Guess guess = guess_of(file, *picture);
        if (options.json) {
            all.push_back(in_json(file, guess, tag_of(*picture)));
        } else {
            std::printf("%s\n", in_words(file, guess, tag_of(*picture)).c_str());
        }
        if (!options.output.empty()) repair(options, guess, *picture);
    }
    if (options.json) print_json(all);
    finish_output();
}

}  // namespace

void add_guess_alpha(CLI::App& app) {
    auto* command = app.add_subcommand("guess-alpha", "Tell what alpha means in pictures, and repair one");
    const auto options = std::make_shared<GuessOptions>();
    command->add_option("files", options->files, "the pictures")->required()->type_name("FILE");
    add_json_option(*command, options->json);
    command->add_option("-o,--output", options->output, "writes the picture with that matte taken off")
        ->type_name("OUT");
    add_encoding_options(*command, options->encoding);
    add_reading_options(*command, options->reading);
    add_common_options(*command, options->common);
    set_usage(*command, "FILE... [--json] [-o OUT]");
    command->footer(kGuessFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
