// SPDX-License-Identifier: Apache-2.0
// qx comp: layers onto a background.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <map>
#include <memory>

#include "pictures/Light.h"
#include "pictures/Losses.h"
#include "pictures/Picture.h"
#include "scene/Composite.h"
#include "scene/Faults.h"
#include "scene/LayerWords.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/subcommands/CompMovie.h"
#include "tools/qx/subcommands/CompNotes.h"
#include "tools/qx/subcommands/CompOptions.h"
#include "tools/qx/subcommands/CompScene.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"

namespace qx::tool {
namespace {

/// The pictures of one job.
struct Inputs {
    pictures::Picture background;
    struct Layer {
        pictures::Picture picture, mask;
        QX_MaskKind mask_kind = kQX_MaskAlpha;
        scene::Settled place;
        int left = 0, top = 0;                                       ///< where effects have moved its corner to
        std::map<const scene::SceneFile*, pictures::Picture> shown;  ///< by its effects
    };
    std::vector<Layer> layers;
    std::deque<std::string> names;  ///< of pictures that effects show
};

/// Of all pictures, the background first.
Files files_of(const CompOptions& options, Inputs& inputs) {
    inputs.layers.resize(options.layers.size());
    Files files = {{&options.background, &inputs.background}};
    for (std::size_t i = 0; i < options.layers.size(); ++i) {
        const LayerOptions& layer = options.layers[i];
        files.emplace_back(&layer.file, &inputs.layers[i].picture);
        if (!layer.mask_file.empty()) files.emplace_back(&layer.mask_file, &inputs.layers[i].mask);
        for (const auto& effect : layer.effects) {
            for (const scene::SceneFile* file : effect->files()) {
                inputs.names.push_back(file->at(0));
                files.emplace_back(&inputs.names.back(), &inputs.layers[i].shown[file]);
            }
        }
    }
    return files;
}

void note_mixed_light(const CompOptions& options, const Inputs& inputs) {
    const bool linear = inputs.background.linear;
    const auto differs = [=](const Inputs::Layer& layer) { return layer.picture.linear != linear; };
    const bool mixed = std::any_of(inputs.layers.begin(), inputs.layers.end(), differs) ||
                       pictures::is_linear_format(options.output) != linear;
    if (mixed) say_note(pictures::kLightIsMixed);
}

/// Where values are taken as they are.
void note_profiles(const CompOptions& options, const Inputs& inputs, NotesOnce& once) {
    tell_losses(once, options.background, scene::unusable_profile(inputs.background));
    for (std::size_t i = 0; i < inputs.layers.size(); ++i) {
        tell_losses(once, options.layers[i].file, scene::unusable_profile(inputs.layers[i].picture));
    }
}

/// What the layers and the result lose on the way, into a file of this depth.
void note_losses(const CompOptions& options, Inputs& inputs, int depth, NotesOnce& once) {
    pictures::Picture& result = inputs.background;
    for (std::size_t i = 0; i < inputs.layers.size(); ++i) {
        const pictures::Picture& layer = inputs.layers[i].picture;
        const bool is_told = options.colours.has_space || layer.linear != result.linear;  // by `note_mixed_light`
        if (!is_told) tell_losses(once, options.layers[i].file, scene::taken_otherwise(layer, result));
        pictures::add_precision(result, layer);
    }
    tell_losses(once, options.background, lost_in_file(options.output, result, depth, options.encoding));
}

scene::Extent extent_of(const QX_World& world) { return {world.width, world.height}; }

/// Once all sizes are known.
void settle_layers(const CompOptions& options, Inputs& inputs) {
    for (std::size_t i = 0; i < inputs.layers.size(); ++i) {
        const LayerOptions& told = options.layers[i];
        Inputs::Layer& layer = inputs.layers[i];
        layer.place =
            scene::settle(told.place, told.placing ? &*told.placing : nullptr, told.matrix ? &*told.matrix : nullptr,
                          extent_of(*layer.picture.world), extent_of(*inputs.background.world));
        if (layer.mask.world == nullptr) continue;
        layer.mask_kind = told.mask_kind.value_or(layer.mask.has_alpha ? kQX_MaskAlpha : kQX_MaskLuma);
        if (!told.mask_kind && !layer.mask.has_alpha) {
            say_note(pictures::about(told.mask_file, scene::kMaskCountsByLuma));
        }
    }
}

std::vector<scene::Settled> places_of(const Inputs& inputs) {
    std::vector<scene::Settled> places;
    for (const Inputs::Layer& layer : inputs.layers) places.push_back(layer.place);
    return places;
}

scene::Transfer transfer_of(const LayerOptions& options, const Inputs::Layer& layer,
                            const QX_LinearBlendingTables* tables) {
    scene::Transfer transfer;
    transfer.layer = layer.picture.world.get();
    transfer.x = layer.place.x + layer.left;
    transfer.y = layer.place.y + layer.top;
    transfer.mode = options.mode;
    transfer.opacity = options.opacity;
    transfer.rgb_only = options.rgb_only;
    transfer.seed = options.seed;
    transfer.field = options.field;
    transfer.tables = tables;
    transfer.mask = layer.mask.world.get();
    transfer.mask_x = options.has_mask_at ? options.mask_at.x : layer.place.x;
    transfer.mask_y = options.has_mask_at ? options.mask_at.y : layer.place.y;
    transfer.mask_kind = layer.mask_kind;
    transfer.quality = options.quality;
    if (const auto& placed = layer.place.matrix) {
        const bool is_moved = layer.left != 0 || layer.top != 0;
        const M_Matrix3 corner = scene::moved(kM_IdentityMatrix, layer.left, layer.top);
        transfer.matrices = {is_moved ? M_MultiplyMatrix(corner, *placed) : *placed};
    }
    return transfer;
}

/// Lets a layer's effects work, in their order.
void apply_effects(const LayerOptions& options, int number, Inputs::Layer& layer, NotesOnce& once,
                   pictures::Watch& watch) {
    scene::Canvas canvas{std::move(layer.picture.world)};
    const auto show = [&](const scene::SceneFile& file) {
        return std::shared_ptr<const pictures::Picture>(std::shared_ptr<void>(), &layer.shown.at(&file));
    };
    const auto note = [&](const std::string& words) { tell_losses(once, options.file, {words}); };
    for (const auto& effect : options.effects) {
        effect->apply(canvas, {.frame = 0,
                               .subject = options.file,
                               .picture = show,
                               .note = note,
                               .watch = watch,
                               .layer = number,
                               .quality = options.quality});
        effect->rest();
    }
    layer.picture.world = std::move(canvas.world);
    layer.left = canvas.x;
    layer.top = canvas.y;
}

void composite_layer(const LayerOptions& options, const Inputs::Layer& layer, QX_World& background,
                     const scene::WorkingSpace* space, pictures::Watch& watch) {
    if (options.mode == xfer_dissolve && background.Depth() == 32) {
        say_note(pictures::about(options.file, scene::kDissolveIsIdle));
    }
    const auto tables = scene::tables_of(options.light, space);
    const scene::Transfer transfer = transfer_of(options, layer, tables.get());
    const M_Matrix3 placed =
        transfer.matrices.empty() ? scene::moved(kM_IdentityMatrix, transfer.x, transfer.y) : transfer.matrices.front();
    note_unseen(options.file, extent_of(*transfer.layer), placed, extent_of(background));
    scene::must(scene::composite(transfer, background, watch), options.file);
}

/// All pictures but masks.
void bring_into_space(const CompOptions& options, Inputs& inputs, int depth, NotesOnce& once,
                      std::optional<scene::WorkingSpace>& space) {
    Progress progress("converting", PartWatch::kSteps * static_cast<std::int64_t>(1 + inputs.layers.size()));
    const SignalWatch signals;
    const auto bring = [&](const std::string& file, pictures::Picture& picture, const scene::Profile& own) {
        PartWatch watch(progress, signals);
        std::vector<std::string> notes;
        space->take(file, picture, own, depth, notes, watch);
        for (const auto& note : notes) {
            note == scene::kMeaningIsUsual ? once.say({{note, note}}) : tell_losses(once, file, {note});
        }
    };
    std::vector<std::string> told_with_the_picture;
    scene::Profile profile = options.colours.space ? options.colours.space : options.background_profile;
    if (!profile) profile = scene::meaning_of(inputs.background, told_with_the_picture).profile;
    space.emplace(profile, options.colours.linearize);
    bring(options.background, inputs.background, options.background_profile);
    for (std::size_t i = 0; i < inputs.layers.size(); ++i) {
        bring(options.layers[i].file, inputs.layers[i].picture, options.layers[i].profile);
        for (auto& [file, picture] : inputs.layers[i].shown) {
            if (!file->is_data) bring(file->at(0), picture, file->profile);
        }
    }
}

void finish_colours(const CompOptions& options, const scene::WorkingSpace& space, pictures::Picture& result) {
    const scene::Profile& output = options.colours.output;
    if (output) {
        FileProgress progress("converting");
        space.give(options.output, result, output, progress);
    }
    const std::string note = scene::not_light(options.output, output ? output : space.profile());
    if (!note.empty()) say_note(note);
}

void run(const CompOptions& options) {
    apply_common_options(options.common);
    options.encoding.check(options.output);
    if (is_of_movies(options)) return comp_movies(options);
    check_output_option(options.output);
    const int asked = options.asked_depth();
    std::optional<CompScene> scene;
    if (!options.scene.empty()) scene.emplace(options);
    const Library library;
    NotesOnce once;
    Inputs inputs;
    const Files files = files_of(options, inputs);
    read_all(files, once, options.reading.read_options());
    std::optional<scene::WorkingSpace> space;
    if (options.colours.has_space) {
        bring_into_space(options, inputs, asked != 0 ? asked : deepest_of(files), once, space);
    } else {
        note_mixed_light(options, inputs);
        note_profiles(options, inputs, once);
    }
    const int depth = unify(files, asked, once);
    settle_layers(options, inputs);
    if (scene) scene->settle(depth, places_of(inputs));
    QX_World& background = *inputs.background.world;
    {
        const auto worked_on = std::count_if(options.layers.begin(), options.layers.end(),
                                             [](const LayerOptions& layer) { return !layer.effects.empty(); });
        const auto parts = static_cast<std::int64_t>(options.layers.size()) + worked_on;
        Progress progress("compositing", PartWatch::kSteps * parts);
        const SignalWatch signals;
        for (std::size_t i = 0; i < options.layers.size(); ++i) {
            if (!options.layers[i].effects.empty()) {
                PartWatch watch(progress, signals);
                apply_effects(options.layers[i], static_cast<int>(i) + 1, inputs.layers[i], once, watch);
            }
            PartWatch watch(progress, signals);
            composite_layer(options.layers[i], inputs.layers[i], background, space ? &*space : nullptr, watch);
        }
    }
    if (space) finish_colours(options, *space, inputs.background);
    note_losses(options, inputs, depth, once);
    if (scene) scene->write();
    write_result(options.output, inputs.background, depth, options.encoding);
    if (scene) scene->commit();
}

}  // namespace

void add_comp(CLI::App& app) {
    auto* command = app.add_subcommand("comp", "Composite layers onto a background");
    const auto line = std::make_shared<CompCommandLine>(*command);
    command->callback([line] { run(line->options()); });
}

}  // namespace qx::tool
