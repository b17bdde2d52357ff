// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/EncodingOptions.h"

#include <CLI/CLI.hpp>
#include <cstdio>

#include "scene/LayerWords.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

bool is_png(const std::string& output) { return pictures::extension_of(output) == "png"; }
bool is_jpeg(const std::string& output) {
    const std::string ending = pictures::extension_of(output);
    return ending == "jpg" || ending == "jpeg";
}
bool is_exr(const std::string& output) { return pictures::known_format(output) && pictures::is_linear_format(output); }

/// "black", "white", "#RRGGBB" or "R,G,B" from 0 to 1.
QX_PixelFloat colour_of(const std::string& option, const std::string& text) {
    if (text == "black") return {1, 0, 0, 0};
    if (text == "white") return {1, 1, 1, 1};
    unsigned red = 0, green = 0, blue = 0;
    int end = 0;
    if (std::sscanf(text.c_str(), "#%2x%2x%2x%n", &red, &green, &blue, &end) == 3 && end == 7 && text.size() == 7) {
        return {1, float(red) / 255.0f, float(green) / 255.0f, float(blue) / 255.0f};
    }
    constexpr const char* form = "a colour: black, white, #RRGGBB or R,G,B from 0 to 1";
    if (text.find(',') == std::string::npos) throw WrongUsage(option + " " + text + ": not " + form);
    const auto c = real_numbers(option, text, form, 3, 3, 0, 1);
    return {1, float(c[0]), float(c[1]), float(c[2])};
}

int whole_number_or(const std::string& text, int least, int most, const std::string& fault) {
    try {
        return scene::whole_number(text, least, most);
    } catch (const scene::BadText&) {
        throw WrongUsage(fault);
    }
}

bool is_packed(const std::string& output) {
    return pictures::known_format(output) && (is_png(output) || !pictures::packings_of(output).empty());
}
bool is_any(const std::string&) { return true; }
bool is_picture(const std::string& output) { return !pictures::is_movie(output); }

/// What is told as a text: its key in scenes, its option, and the files that it is for.
struct Choice {
    const char *key, *option;
    std::string EncodingOptions::*text;
    bool (*fits)(const std::string& output);
    const char* files;
};
constexpr Choice kChoices[] = {
    {"compression", "--compression", &EncodingOptions::compression, is_packed, "PNG, TIFF and OpenEXR"},
    {"jpeg-quality", "--jpeg-quality", &EncodingOptions::jpeg_quality, is_jpeg, "JPEG"},
    {"flatten", "--flatten", &EncodingOptions::flatten, is_any, ""},
    {"depth", "--output-depth", &EncodingOptions::output_depth, is_picture,
     "pictures, --pixel-format tells that of movies"},
    {"codec", "--codec", &EncodingOptions::codec, pictures::is_movie, "movies"},
    {"crf", "--crf", &EncodingOptions::crf, pictures::is_movie, "movies"},
    {"bitrate", "--bitrate", &EncodingOptions::bitrate, pictures::is_movie, "movies"},
    {"pixel-format", "--pixel-format", &EncodingOptions::pixel_format, pictures::is_movie, "movies"}};

}  // namespace

void EncodingOptions::take(const scene::OutputChoices& choices, const std::string& output) {
    for (const Choice& choice : kChoices) {
        const auto found = choices.texts.find(choice.key);
        std::string& text = this->*choice.text;
        if (text.empty() && found != choices.texts.end() && choice.fits(output)) text = found->second;
    }
    if (!half && !real && choices.half && is_exr(output)) (*choices.half ? half : real) = true;
}

scene::OutputChoices EncodingOptions::choices() const {
    scene::OutputChoices choices;
    for (const Choice& choice : kChoices) {
        if (const std::string& text = this->*choice.text; !text.empty()) choices.texts[choice.key] = text;
    }
    if (half || real) choices.half = half;
    return choices;
}

void EncodingOptions::check(const std::string& output) const {
    if ((half || real) && !is_exr(output))
        throw WrongUsage(std::string(half ? "--half" : "--float") + " is for OpenEXR");
    for (const Choice& choice : kChoices) {
        if (!(this->*choice.text).empty() && !choice.fits(output))
            throw WrongUsage(std::string(choice.option) + " is for " + choice.files);
    }
    if (!crf.empty() && !bitrate.empty()) throw WrongUsage("--crf excludes --bitrate");
    if (is_picture(output)) write_options(output);
    movie_encoding();
    ground();
    file_depth(0);
}

pictures::WriteOptions EncodingOptions::write_options(const std::string& output) const {
    pictures::WriteOptions options;
    if (half || real) options.half = half;
    if (!jpeg_quality.empty()) options.jpeg_quality = whole_number("--jpeg-quality", jpeg_quality, 1, 100);
    if (compression.empty()) return options;
    constexpr int most = pictures::kMostCompression;
    if (is_png(output)) {
        options.compression = whole_number_or(
            compression, 0, most,
            "--compression " + compression + ": of PNG it is a whole number from 0 to " + std::to_string(most));
    } else {
        options.packing = choice("--compression", compression, pictures::packings_of(output));
    }
    return options;
}

pictures::MovieEncoding EncodingOptions::movie_encoding() const {
    constexpr int worst = 63, most_rate = 1'000'000'000;
    pictures::MovieEncoding encoding;
    encoding.codec = codec;
    encoding.pixel_format = pixel_format;
    if (!crf.empty()) encoding.crf = whole_number("--crf", crf, 0, worst);
    if (!bitrate.empty()) {
        const bool millions = bitrate.ends_with('M'), thousands = bitrate.ends_with('k');
        const std::string digits = bitrate.substr(0, bitrate.size() - (millions || thousands ? 1 : 0));
        const int unit = millions ? 1'000'000 : thousands ? 1000 : 1;
        const int bits = whole_number_or(
            digits, 1, most_rate / unit,
            "--bitrate " + bitrate + ": not a number of bits a second, such as 8M or 500k, at most 1000M");
        encoding.bits_a_second = std::int64_t{bits} * unit;
    }
    return encoding;
}

std::optional<QX_PixelFloat> EncodingOptions::ground() const {
    if (flatten.empty()) return std::nullopt;
    return colour_of("--flatten", flatten);
}

int EncodingOptions::file_depth(int depth) const {
    return output_depth.empty() ? depth : 8 << choice("--output-depth", output_depth, scene::kDepthWords);
}

std::string EncodingOptions::words() const {
    std::string all = half ? "half" : real ? "float" : "";
    for (const Choice& choice : kChoices) all += '\n' + this->*choice.text;
    return all;
}

void add_encoding_options(CLI::App& command, EncodingOptions& options) {
    const int usual = pictures::WriteOptions{}.compression;
    command
        .add_option("--compression", options.compression,
                    "PNG: from 0, fast and large, to 9, slow and small (default: " + std::to_string(usual) +
                        "); TIFF: none, lzw, zip (default), packbits; OpenEXR: none, rle, zips, zip (default), piz, "
                        "and those that change values: pxr24, b44, b44a, dwaa, dwab")
        ->type_name("0..9|WORD");
    command
        .add_option("--jpeg-quality", options.jpeg_quality,
                    "1, small, to 100 (default: " + std::to_string(pictures::WriteOptions{}.jpeg_quality) + ")")
        ->type_name("1..100");
    command
        .add_option("--flatten", options.flatten,
                    "lay the result over an opaque colour: black, white, #RRGGBB, or R,G,B from 0 to 1")
        ->type_name("COLOUR");
    command
        .add_option("--output-depth", options.output_depth,
                    "bits of the file, as far as its format has them (default: those of the work)")
        ->type_name("8|16|32");
    auto* half = command.add_flag("--half", options.half,
                                  "OpenEXR with half floats, which is the default where the "
                                  "background has them and no layer tells more");
    half->disable_flag_override();
    command.add_flag("--float", options.real, "OpenEXR with floats")->disable_flag_override()->excludes(half);
}

void add_movie_options(CLI::App& command, EncodingOptions& options) {
    const auto add = [&](const char* name, std::string& text, const char* help, const char* form) {
        command.add_option(name, text, help)->type_name(form);
    };
    add("--codec", options.codec, "movies: an encoder of FFmpeg by its name, such as libx265 or prores_ks", "NAME");
    add("--crf", options.crf, "movies: quality of encoders that have such a scale, 0 is best (default: 18)", "0..63");
    add("--bitrate", options.bitrate, "movies: bits a second in place of a quality, such as 8M or 500k", "N[k|M]");
    add("--pixel-format", options.pixel_format, "movies: of the encoder, such as yuv444p or yuv420p10le", "NAME");
}

}  // namespace qx::tool
