// SPDX-License-Identifier: Apache-2.0
// qx convert: a picture in another profile, depth, format or shape, with its alpha told otherwise.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "QX/pixelops/QX_Premul.h"
#include "pictures/Profiles.h"
#include "scene/Faults.h"
#include "scene/colour/Convert.h"
#include "scene/colour/WorkingSpace.h"
#include "tools/qx/Commands.h"
#include "tools/qx/work/PictureJob.h"
#include "tools/qx/work/Reshape.h"

namespace qx::tool {
namespace {

struct ConvertOptions {
    PictureOptions picture;
    std::string file, matte;
    std::string from, to, assign, intent;
    std::string crop, resize, channels;
    bool dither = false, premultiply = false, unpremultiply = false, black_point = false;
};

constexpr const char* kIntents[] = {"perceptual", "relative", "saturation", "absolute"};  // as their numbers are

const char* const kConvertFooter =
    R"(A PROFILE is the path of an ICC file or one of srgb, rec709, rec709-2.4, display-p3, rec2020;
linear, or linear- before one of them; gamma- and an exponent. Colours go from what the file
says that they are, or from --from, at the deeper of its depth and --depth. CMYK needs --to.

--depth is that of the file too, where its format has it. --premultiply mixes colours with the
matte's by their alpha, for programs that take them so; --unpremultiply undoes that. Dither is
noise in place of rounding where deeper pixels become 8-bit ones, the same in every run.
Colours are converted first, then comes --crop, then --resize, then --channels.

Example:
  qx convert photo.jpg --to display-p3 --depth 16 -o photo.png
  qx convert scan.tif --depth 8 --dither -o scan.png
  qx convert photo.jpg --crop 800x600+100+50 --resize 50% -o part.png
  qx convert logo.png --unpremultiply --matte 1,1,1 -o logo-straight.png)";

QX_PixelFloat matte_of(const ConvertOptions& options) {
    if (options.matte.empty()) return {1, 0, 0, 0};
    const auto c = real_numbers("--matte", options.matte, "a colour R,G,B", 3, 3, 0, 1);
    return {1, static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2])};
}

/// What the command line says of colours; null profiles where it says nothing.
struct Wanted {
    scene::Profile from, to, assigned;
    scene::Rendering rendering;
};

Wanted wanted_of(const ConvertOptions& options) {
    const auto profile = [](const char* option, const std::string& text, auto read) {
        return text.empty() ? scene::Profile() : value_of(option, [&] { return read(text); });
    };
    Wanted wanted{profile("--from", options.from, scene::profile_of_text),
                  profile("--to", options.to, scene::rgb_profile_of_text),
                  profile("--assign", options.assign, scene::rgb_profile_of_text),
                  {}};
    wanted.rendering.black_point = options.black_point;
    if (!options.intent.empty()) {
        wanted.rendering.intent = static_cast<standalone::Intent>(choice("--intent", options.intent, kIntents));
    }
    return wanted;
}

/// What the picture's values mean.
scene::Profile source_of(const std::string& file, const scene::Profile& from, PictureJob& job) {
    const bool inks = job.picture().cmyk;
    if (from) {
        if (scene::is_inks(from) == inks) return from;
        throw pictures::Failure(file, std::string("is ") + (inks ? "CMYK" : "RGB") + ", the profile of --from is not");
    }
    std::vector<std::string> notes;
    const scene::Meaning meaning = scene::meaning_of(job.picture(), notes);
    job.tell(notes);
    if (!meaning.profile) throw pictures::Failure(file, pictures::kCmykIsUnknown + std::string(" without --from"));
    if (!meaning.told) say_note(scene::kMeaningIsUsual);
    return meaning.profile;
}

void multiply(const ConvertOptions& options, PictureJob& job, const QX_PixelFloat& matte) {
    QX_LayerDef record{};
    job.picture().world->FillOutEffectWorld(&record);
    scene::must(QX_PremulColorFloat(nullptr, &record, &matte, options.premultiply, &record), options.file);
}

/// The deeper of the picture's and the one asked for, or else that which the file has anyway.
int working_depth(const PictureOptions& options, int own) {
    const int asked = options.asked_depth();
    return std::max(own, asked != 0 ? asked : pictures::file_depth(options.output, own));
}

/// The matte is undone in the colours that it was mixed with, at the depth that the conversion works at. Dither wants
/// what is deeper than the depth asked for.
void change_colours(const ConvertOptions& options, const Wanted& wanted, PictureJob& job, const QX_PixelFloat& matte) {
    const int asked = options.picture.asked_depth(), depth = working_depth(options.picture, job.depth());
    const scene::Profile from = source_of(options.file, wanted.from, job);
    if (options.unpremultiply && !job.picture().cmyk) {  // which has no alpha
        job.bring_to_depth(depth);
        multiply(options, job, matte);
    }
    job.convert(from, wanted.to, depth, wanted.rendering);
    if (asked != 0 && !options.dither) job.bring_to_depth(asked);
}

/// A part of the picture, then another size, then other channels.
void reshape(const ConvertOptions& options, PictureJob& job) {
    const auto extent = [&] { return scene::Extent{job.picture().world->width, job.picture().world->height}; };
    if (!options.crop.empty()) {
        const M_LRect part = crop_of("--crop", options.crop, extent());
        job.change_pixels("cropping",
                          [&](const QX_World& world, pictures::Watch&) { return cropped(options.file, world, part); });
    }
    if (!options.resize.empty()) {
        const scene::Extent size = size_of("--resize", options.resize, extent());
        job.change_pixels("resizing", [&](const QX_World& world, pictures::Watch& watch) {
            return resized(options.file, world, size, watch);
        });
    }
    if (!options.channels.empty()) {
        shuffle(options.file, job.picture(), channels_of("--channels", options.channels));
    }
}

void run(const ConvertOptions& options) {
    const QX_PixelFloat matte = matte_of(options);
    if (!options.matte.empty() && !options.premultiply && !options.unpremultiply) {
        throw WrongUsage("--matte needs --premultiply or --unpremultiply");
    }
    const Wanted wanted = wanted_of(options);
    const scene::Profile& result = wanted.to ? wanted.to : wanted.assigned;
    PictureOptions work = options.picture;
    const int asked = work.asked_depth();
    if (options.dither || wanted.to) work.depth.clear();  // what is to become noise must still be there
    PictureJob job(work, {options.file}, result ? Colours::managed : Colours::as_they_are);
    if (job.picture().cmyk && !wanted.to) pictures::refuse_cmyk(options.file, job.picture());
    if (wanted.to) change_colours(options, wanted, job, matte);
    if (options.unpremultiply && !wanted.to) multiply(options, job, matte);
    reshape(options, job);
    if (options.premultiply) multiply(options, job, matte);
    if (wanted.assigned) scene::assign(job.picture(), wanted.assigned);
    const std::string note = result ? scene::not_light(work.output, result) : "";
    if (!note.empty()) say_note(note);
    job.write(asked == 0 ? job.depth() : asked, options.dither);
}

void add_profile_options(CLI::App& command, ConvertOptions& options) {
    auto* to = command.add_option("--to", options.to, "the profile to bring colours to")->type_name("PROFILE");
    command.add_option("--from", options.from, "that of the picture (default: what its file says)")
        ->type_name("PROFILE")
        ->needs(to);
    command.add_option("--assign", options.assign, "the profile to give the picture, whose pixels stay as they are")
        ->type_name("PROFILE")
        ->excludes(to);
    command
        .add_option("--intent", options.intent,
                    "perceptual, relative, saturation or absolute: what becomes of white, and of what the other "
                    "profile has not (default: relative)")
        ->type_name("INTENT")
        ->needs(to);
    command.add_flag("--bpc", options.black_point, "bring the blacks of both profiles onto each other too")
        ->disable_flag_override()
        ->needs(to);
}

}  // namespace

void add_convert(CLI::App& app) {
    auto* command = app.add_subcommand("convert", "Convert a picture to another profile, depth, format or shape");
    const auto options = std::make_shared<ConvertOptions>();
    command->add_option("IN", options->file, "the picture")->required()->type_name("FILE");
    add_profile_options(*command, *options);
    command->add_flag("--dither", options->dither, "noise where deeper pixels become 8-bit ones")
        ->disable_flag_override();
    auto* forward = command->add_flag("--premultiply", options->premultiply, "mix colours with those of a matte");
    forward->disable_flag_override();
    command->add_flag("--unpremultiply", options->unpremultiply, "take the matte's colours off again")
        ->disable_flag_override()
        ->excludes(forward);
    command->add_option("--matte", options->matte, "the matte's colour, each from 0 to 1 (default: 0,0,0)")
        ->type_name("R,G,B");
    command->add_option("--crop", options->crop, "a part of the picture, X and Y from its left top corner (default: 0)")
        ->type_name("WxH[+X+Y]");
    command
        ->add_option("--resize", options->resize,
                     "to lie within WxH, to be WxH!, to be so wide or so high, or by a factor; what shrinks is "
                     "averaged, what grows is bicubic")
        ->type_name("WxH[!]|Wx|xH|P%");
    command
        ->add_option("--channels", options->channels,
                     "what red, green, blue and alpha become, out of r, g, b, a, 0 and 1: bgra, rgb1, or a for alpha "
                     "as grey")
        ->type_name("LETTERS");
    add_picture_options(*command, options->picture);
    set_usage(*command, "IN [options] -o OUT");
    command->footer(kConvertFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
