// SPDX-License-Identifier: Apache-2.0
// The subcommands that put one effect to work on a picture: qx blur, qx convolve, qx adjust, qx blend.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/qx/Commands.h"
#include "tools/qx/options/EffectOptions.h"
#include "tools/qx/work/PictureJob.h"

namespace qx::tool {
namespace {

/// What differs between them.
struct EffectCommand {
    const char *name, *about, *usage, *footer;
    std::unique_ptr<scene::Effect> (*make)();
    const char* words;   ///< of the bar
    const char* second;  ///< the key that a second picture on the command line tells, or null
};

/// One of them on a command line.
class Line {
public:
    Line(CLI::App& command, const EffectCommand& kind)
        : kind_(kind),
          effect_(kind.make()),
          keys_(effect_->keys()),
          options_(command, keys_, "What is done", kind.second) {
        const auto add = [&](const char* name, std::string& file, const char* help) {
            command.add_option(name, file, help)->type_name("FILE")->required();
        };
        add(kind.second == nullptr ? "IN" : "A", first_, "the picture");
        if (kind.second != nullptr) add("B", second_, "the other picture");
        add_picture_options(command, picture_);
        command.footer(kind.footer);
        set_usage(command, kind.usage);
    }

    void run() const {
        options_.read(options_.texts(), keys_);
        if (kind_.second != nullptr) tell_second();
        settle(*effect_);
        std::vector<std::string> inputs = {first_};
        for (const scene::SceneFile* file : effect_->files()) inputs.push_back(file->at(0));
        PictureJob job(picture_, inputs);
        job.apply(*effect_, kind_.words);
        job.write();
    }

private:
    void tell_second() const {
        for (const scene::Key& key : keys_) {
            if (std::string(key.name) != kind_.second) continue;
            *std::get<scene::PictureKey>(key.kind).to = file_named(second_);
        }
    }

    const EffectCommand& kind_;
    const std::unique_ptr<scene::Effect> effect_;
    const scene::Keys keys_;
    const EffectOptions options_;
    std::string first_, second_;
    PictureOptions picture_;
};

void add(CLI::App& app, const EffectCommand& kind) {
    auto* command = app.add_subcommand(kind.name, kind.about);
    const auto line = std::make_shared<Line>(*command, kind);
    command->callback([line] { line->run(); });
}

const EffectCommand kBlur = {
    "blur",
    "Blur a picture",
    "IN [options] -o OUT",
    R"(Colours count by their alphas, so that what is clear leaves no dark fringe. gaussian falls off
like a bell over the radius, box is the plain mean along rows and columns, mean that of a
rectangle, disc that of an ellipse, which makes highlights round.

Example:
  qx blur photo.jpg --radius 12 -o soft.jpg
  qx blur logo.png --kind box --passes 3 --radius 20 --grow -o glow.png
  qx blur photo.jpg --kind disc --radius 30 --map depth.png --gain 2 -o focus.png)",
    scene::new_blur,
    "blurring",
    nullptr};

const EffectCommand kConvolve = {
    "convolve",
    "Filter a picture by a kernel of whole numbers",
    "IN --kernel FILE | --filter NAME [options] -o OUT",
    R"(A kernel file has rows of whole numbers, as many rows as numbers in a row, an odd count of
them; with --row or --column one line. What follows # is a comment. One block is for all
channels; four blocks with empty lines between are for alpha, red, green and blue. The first
number meets the pixel at the left top. Without --normalise a sum is divided by 256 for each
weight, so that a kernel whose mean is 256 keeps the picture's brightness. Filters come
normalised; edges and emboss leave alpha alone.

Example:
  qx convolve photo.jpg --filter sharpen -o sharp.png
  qx convolve photo.jpg --kernel motion.txt --row --normalise -o moved.png)",
    scene::new_convolve,
    "filtering",
    nullptr};

const EffectCommand kAdjust = {
    "adjust",
    "Change hue, lightness, saturation and chroma",
    "IN [options] -o OUT",
    R"(Hue is turned and lightness and saturation are multiplied in HLS; then chroma multiplies
what YIQ has besides luma.

Example:
  qx adjust photo.jpg --hue 40 --saturation 1.2 -o warm.png
  qx adjust photo.jpg --chroma 0 -o grey.png)",
    scene::new_adjust,
    "adjusting",
    nullptr};

const EffectCommand kBlend = {"blend",
                              "Cross-fade two pictures of one size",
                              "A B [--ratio 0..1] -o OUT",
                              R"(Colours count by their alphas.

Example:
  qx blend a.png b.png --ratio 0.25 -o mostly-a.png)",
                              scene::new_blend,
                              "blending",
                              "with"};

}  // namespace

void add_blur(CLI::App& app) { add(app, kBlur); }
void add_convolve(CLI::App& app) { add(app, kConvolve); }
void add_adjust(CLI::App& app) { add(app, kAdjust); }
void add_blend(CLI::App& app) { add(app, kBlend); }

}  // namespace qx::tool
