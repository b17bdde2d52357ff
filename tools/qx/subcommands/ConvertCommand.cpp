// SPDX-License-Identifier: Apache-2.0
// qx convert: a picture in another depth or format, with its alpha told otherwise.
#include <CLI/CLI.hpp>
#include <memory>

#include "QX/pixelops/QX_Premul.h"
#include "scene/Faults.h"
#include "tools/qx/Commands.h"
#include "tools/qx/work/PictureJob.h"

namespace qx::tool {
namespace {

struct ConvertOptions {
    PictureOptions picture;
    std::string file, matte;
    bool dither = false, premultiply = false, unpremultiply = false;
};

const char* const kFooter =
    R"(--depth is that of the file too, where its format has it. --premultiply mixes colours with the
matte's by their alpha, for programs that take them so; --unpremultiply undoes that. Dither is
noise in place of rounding where deeper pixels become 8-bit ones, the same in every run.

Example:
  qx convert scan.tif --depth 8 --dither -o scan.png
  qx convert logo.png --unpremultiply --matte 1,1,1 -o logo-straight.png)";

QX_PixelFloat matte_of(const ConvertOptions& options) {
    if (options.matte.empty()) return {1, 0, 0, 0};
    const auto c = real_numbers("--matte", options.matte, "a colour R,G,B", 3, 3, 0, 1);
    return {1, static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2])};
}

void run(const ConvertOptions& options) {
    const QX_PixelFloat matte = matte_of(options);
    if (!options.matte.empty() && !options.premultiply && !options.unpremultiply) {
        throw WrongUsage("--matte needs --premultiply or --unpremultiply");
    }
    PictureOptions work = options.picture;
    const int asked = work.asked_depth();
    if (options.dither) work.depth.clear();  // what is to become noise must still be there
    PictureJob job(work, {options.file});
    if (options.premultiply || options.unpremultiply) {
        QX_LayerDef record{};
        job.picture().world->FillOutEffectWorld(&record);
        scene::must(QX_PremulColorFloat(nullptr, &record, &matte, options.premultiply, &record), options.file);
    }
    job.write(asked == 0 ? job.depth() : asked, options.dither);
}

}  // namespace

void add_convert(CLI::App& app) {
    auto* command = app.add_subcommand("convert", "Convert a picture to another depth or format");
    const auto options = std::make_shared<ConvertOptions>();
    command->add_option("IN", options->file, "the picture")->required()->type_name("FILE");
    command->add_flag("--dither", options->dither, "noise where deeper pixels become 8-bit ones")
        ->disable_flag_override();
    auto* forward = command->add_flag("--premultiply", options->premultiply, "mix colours with those of a matte");
    forward->disable_flag_override();
    command->add_flag("--unpremultiply", options->unpremultiply, "take the matte's colours off again")
        ->disable_flag_override()
        ->excludes(forward);
    command->add_option("--matte", options->matte, "the matte's colour, each from 0 to 1 (default: 0,0,0)")
        ->type_name("R,G,B");
    add_picture_options(*command, options->picture);
    set_usage(*command, "IN [options] -o OUT");
    command->footer(kFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
