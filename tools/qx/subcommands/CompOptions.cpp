// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/subcommands/CompOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <climits>
#include <map>

#include "pictures/Picture.h"
#include "scene/Frames.h"
#include "scene/LayerWords.h"
#include "scene/Modes.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/options/PlaceOptions.h"

namespace qx::tool {

/// An option of a layer: its name, its help, and what its value does.
struct LayerOption {
    const char* name;
    const char* value;  ///< null for a switch
    const char* help;
    void (*set)(LayerOptions& layer, const std::string& option, const std::string& text);
};

namespace {

scene::Placing& placing_of(LayerOptions& layer, const std::string& option) {
    layer.placing_option = option;
    return layer.placing ? *layer.placing : layer.placing.emplace();
}

void set_scale(LayerOptions& layer, const std::string& option, const std::string& text) {
    const auto scale = real_numbers(option, text, "a scale S or S,SY", 1, 2);
    scene::Placing& placing = placing_of(layer, option);
    placing.scale[0] = scale.front();
    placing.scale[1] = scale.back();
    layer.has_scale = true;
}

void set_pair(double (&pair)[2], const std::string& option, const std::string& text) {
    const auto numbers = real_numbers(option, text, "a position X,Y", 2, 2);
    std::copy(numbers.begin(), numbers.end(), pair);
}

void set_matrix(LayerOptions& layer, const std::string& option, const std::string& text) {
    const auto numbers = real_numbers(option, text, "nine numbers M11,M12,...,M33", 9, 9);
    std::array<double, 9> elements{};
    std::copy(numbers.begin(), numbers.end(), elements.begin());
    layer.matrix = scene::matrix_of(elements);
}

void set_light(LayerOptions& layer, const std::string& option, const std::string& text) {
    layer.light = {};
    layer.light.by_profile = text == scene::kLinearWords[0];
    if (layer.light.by_profile) return;
    layer.light.gamma = static_cast<float>(real_number(option, text, scene::kLeastGamma, scene::kMostGamma));
}

using L = LayerOptions;
using S = const std::string&;
const LayerOption kLayerOptions[] = {
    {"--mode", "NAME|NUMBER", "transfer mode, such as over, multiply, soft-light or 5 (default: over)",
     [](L& l, S option, S text) { l.mode = value_of(option, [&] { return scene::mode_number(text); }); }},
    {"--opacity", "0..1", "opacity (default: 1)",
     [](L& l, S option, S text) { l.opacity = static_cast<float>(real_number(option, text, 0, 1)); }},
    {"--at", "X,Y",
     "where the layer's left top corner lands, or the origin of its transform, in pixels, which need not be whole, or "
     "in per cent of the background, such as 50%,25% (default: 0,0)",
     [](L& l, S option, S text) { read_at(option, text, l.place); }},
    {"--gravity", "SIDE",
     "north-west, north, north-east, west, center, east, south-west, south or south-east: the layer is put there, and "
     "--at counts from there inwards",
     [](L& l, S option, S text) { l.place.gravity = gravity_of(option, text); }},
    {"--fit", "WxH|contain|cover",
     "scale the layer by one factor: to lie within so many pixels or within the background, or to cover that",
     [](L& l, S option, S text) { l.place.fit = fit_of(option, text); }},
    {"--mask", "FILE", "picture whose alpha or luma limits the layer", [](L& l, S, S text) { l.mask_file = text; }},
    {"--mask-kind", "KIND", "alpha, inverse, luma or inverse-luma (default: alpha; luma of a mask without alpha)",
     [](L& l, S option, S text) {
         l.mask_kind = static_cast<QX_MaskKind>(choice(option, text, scene::kMaskKindWords));
         l.mask_option = option;
     }},
    {"--mask-at", "X,Y", "where the mask's left top corner lands (default: the layer's place)",
     [](L& l, S option, S text) {
         l.mask_at = place(option, text);
         l.has_mask_at = true;
         l.mask_option = option;
     }},
    {"--linear", "GAMMA|profile", "blend in linear light, by this exponent of the values or by the curve of --space",
     set_light},
    {"--profile", "PROFILE", "profile of the layer's values (default: what its file says)",
     [](L& l, S option, S text) {
         l.profile = value_of(option, [&] { return scene::rgb_profile_of_text(text); });
         l.profile_text = text;
     }},
    {"--rgb-only", nullptr, "keep the background's alpha",
     [](L& l, S option, S text) { l.rgb_only = flag(option, text); }},
    {"--seed", "N", "start of the noise of mode dissolve (default: 0)",
     [](L& l, S option, S text) { l.seed = whole_number(option, text, INT_MIN, INT_MAX); }},
    {"--field", "FIELD", "rows of the background that change: all, even or odd (default: all)",
     [](L& l, S option, S text) { l.field = choice(option, text, scene::kFieldWords); }},
    {"--translate", "X,Y", "where the layer's anchor lands, counted from --at; need not be whole (default: 0,0)",
     [](L& l, S option, S text) { set_pair(placing_of(l, option).translate, option, text); }},
    {"--scale", "S[,SY]", "factor of width and height, or one of each (default: 1)", set_scale},
    {"--rotate", "DEGREES", "turn about the anchor, clockwise (default: 0)",
     [](L& l, S option, S text) {
         placing_of(l, option).degrees = real_number(option, text, -scene::kMostPlacing, scene::kMostPlacing);
     }},
    {"--anchor", "X,Y", "point of the layer that scale and turn leave in place (default: its left top corner, 0,0)",
     [](L& l, S option, S text) { set_pair(placing_of(l, option).anchor, option, text); }},
    {"--matrix", "M11,...,M33", "in place of these four: rows of a matrix, (x', y', w') = (x, y, 1) * M", set_matrix},
    {"--quality", "QUALITY", "of transformed layers: draft, bilinear or bicubic (default: bilinear)",
     [](L& l, S option, S text) { l.quality = choice(option, text, scene::kQualityWords); }},
    {"--effect", "NAME[:KEY=VALUE]...", "what is done to the layer before it is placed, in order; see `qx effects`",
     [](L& l, S, S text) { l.effect_texts.push_back(text); }},
};

const char* const kCompOptionsFooter =
    R"(A LAYER takes the options that follow it, up to the next LAYER; options before the
first LAYER hold for all layers. Layers are composited in the order given. Mode names are
those of `qx modes`, with - or _. With movies among them, each frame is composited: as many as the
background has, or of layers the longest, at its rate and with the audio of the background. Other
movies show the frame that is nearest in time, and their last one behind their end. Pictures of the
frames are numbered from 0. Movies need even sides, unless --pixel-format is one such as yuv444p.

Example:
  qx comp photo.jpg logo.png --mode screen --opacity 0.5 --at 40,40 -o out.png
  qx comp photo.jpg logo.png --anchor 64,64 --scale 0.5 --rotate 30 --at 200,150 -o out.png
  qx comp a.tif b.tif --mode multiply c.exr --mode add --depth 32 -o out.exr
  qx comp photo.jpg wide.png --space srgb --linear profile -o out.png
  qx comp photo.jpg logo.png --effect blur:radius=4 --effect ./shadow.so:opacity=0.6 -o out.png
  qx comp photo.jpg logo.png --at 40,40 --emit-scene scene.json -o out.png
  qx comp clip.mp4 logo.png --gravity south-east --at 16,16 --opacity 0.5 -o marked.mp4)";

void check(const LayerOptions& layer) {
    if (layer.matrix && layer.placing) {
        throw WrongUsage(layer.file + ": --matrix and " + layer.placing_option + " exclude each other");
    }
    if (layer.place.fit && layer.matrix) throw WrongUsage(layer.file + ": --fit and --matrix exclude each other");
    if (layer.place.fit && layer.has_scale) throw WrongUsage(layer.file + ": --fit and --scale exclude each other");
    if (!layer.mask_file.empty()) return;
    if (layer.mode == xfer_mask_crossfade) {
        throw WrongUsage(layer.file + ": mode mask_crossfade (-2) needs --mask FILE");
    }
    if (!layer.mask_option.empty()) throw WrongUsage(layer.file + ": " + layer.mask_option + " needs --mask FILE");
}

std::vector<std::string> inputs_of(const CompOptions& options) {
    std::vector<std::string> all = {options.background};
    for (const LayerOptions& layer : options.layers) {
        all.push_back(layer.file);
        if (!layer.mask_file.empty()) all.push_back(layer.mask_file);
    }
    return all;
}

/// A name for many pictures, where one is wanted.
void refuse_numbered(const std::string& input) {
    if (pictures::is_there(input)) return;
    bool is_numbered = false;
    try {
        is_numbered = scene::FramePattern(input).has_place();
    } catch (const scene::BadText&) {  // then it is the name of a file, which is missing
    }
    if (is_numbered) throw WrongUsage(input + ": numbered pictures are for scenes (qx render) and for qx retime");
}

}  // namespace

CompCommandLine::CompCommandLine(CLI::App& command) : command_(command) {
    files_option_ = command.add_option("files", files_, "the background, then its layers from back to front")
                        ->type_name("BACKGROUND LAYER")
                        ->required();
    for (const LayerOption& option : kLayerOptions) {
        CLI::Option* added = option.value == nullptr
                                 ? command.add_flag(option.name, option.help)
                                 : command.add_option(option.name, option.help)->type_name(option.value)->expected(1);
        layer_options_.emplace_back(added->take_all()->group("Options of a layer"), &option);
    }
    add_colour_options(command, colours_);
    command
        .add_option("--background-profile", background_profile_,
                    "profile of the background's values (default: what its file says)")
        ->type_name("PROFILE");
    add_effect_folders_option(command, common_.effect_folders);
    command
        .add_option("--emit-scene", common_.scene,
                    "also write a scene file of which `qx render` makes the same picture")
        ->type_name("FILE.json");
    add_picture_options(command, common_);
    command.get_option("--output")
        ->description("file to write: " + pictures::known_endings() +
                      "; of movies NAME.####.png and so on, or a movie: " + pictures::movie_endings());
    add_movie_options(command, common_.encoding);
    command.footer(kCompOptionsFooter);
    set_usage(command, "BACKGROUND LAYER [options] [LAYER [options]]... -o OUT");
}

CompOptions CompCommandLine::options() const {
    CompOptions options = common_;
    LayerOptions defaults;
    std::map<const CLI::Option*, std::size_t> used;
    for (const CLI::Option* option : command_.parse_order()) {
        const std::size_t turn = used[option]++;
        if (option == files_option_) {
            if (turn > 0) options.layers.push_back(defaults);
            (turn > 0 ? options.layers.back().file : options.background) = option->results().at(turn);
            continue;
        }
        for (const auto& [added, own] : layer_options_) {
            if (added != option) continue;
            own->set(options.layers.empty() ? defaults : options.layers.back(), own->name, option->results().at(turn));
        }
    }
    if (options.layers.empty()) throw WrongUsage("comp needs a background and at least one layer");
    for (const LayerOptions& layer : options.layers) check(layer);
    const auto inputs = inputs_of(options);
    options.reading.check(inputs);
    for (const std::string& input : inputs) refuse_numbered(input);
    host::EffectFolders folders(options.effect_folders);
    for (LayerOptions& layer : options.layers) {
        for (const std::string& text : layer.effect_texts) {
            layer.effects.push_back(effect_of("--effect", text, folders));
        }
    }
    read_colours(options);
    return options;
}

void CompCommandLine::read_colours(CompOptions& options) const {
    if (const char* option = colours_.without_space()) throw WrongUsage(option + std::string(kNeedsSpaceOption));
    colours_.apply(options.colours);
    options.colour_texts = colours_;
    options.background_profile_text = background_profile_;
    if (!background_profile_.empty()) {
        options.background_profile =
            value_of("--background-profile", [&] { return scene::rgb_profile_of_text(background_profile_); });
    }
    if (options.colours.has_space) return;
    if (options.background_profile) throw WrongUsage(std::string("--background-profile") + kNeedsSpaceOption);
    for (const LayerOptions& layer : options.layers) {
        if (layer.light.by_profile) throw WrongUsage(layer.file + ": --linear profile" + kNeedsSpaceOption);
        if (layer.profile) throw WrongUsage(layer.file + ": --profile" + kNeedsSpaceOption);
    }
}

}  // namespace qx::tool
