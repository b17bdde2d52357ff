// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/subcommands/CompMovie.h"

#include <algorithm>

#include "pictures/Movie.h"
#include "scene/Clip.h"
#include "scene/Placing.h"
#include "tools/qx/subcommands/CompNotes.h"
#include "tools/qx/subcommands/CompScene.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/RenderJob.h"

namespace qx::tool {
namespace {

/// What the head of a file tells of what it shows.
struct Material {
    scene::Extent size;
    int depth = 8;
    scene::Rational rate = 0;  ///< frames a second; 0 for a picture
    scene::Rational seconds = 0, start = 0, aspect = 1;
    bool has_audio = false, is_even = true;
    std::string time_code = "";
    bool moves() const { return rate > scene::Rational(0); }
};

Material movie_of(const std::string& file, const CompOptions& options) {
    const auto clip = scene::open_movie_clip(file, {.orient = !options.reading.as_stored});
    const scene::ClipFacts& facts = clip->facts();
    return {.size = {facts.width, facts.height},
            .depth = facts.depth,
            .rate = facts.rate,
            .seconds = clip->end() - clip->time_of(0),
            .start = clip->time_of(0),
            .aspect = facts.aspect,
            .has_audio = facts.has_audio,
            .is_even = facts.is_even,
            .time_code = facts.time_code};
}

Material material_of(const std::string& file, const CompOptions& options) {
    if (options.reading.reads_movie(file)) return movie_of(file, options);
    SignalWatch watch;
    pictures::ReadOptions head = options.reading.read_options();
    head.pixels = false;
    const pictures::Picture picture = pictures::read_picture(file, watch, head);
    const auto size = head.orient ? pictures::turned_size(picture.in_file) : picture.in_file.size;
    return {.size = {size.width, size.height}, .depth = picture.in_file.depth};
}

/// Of the background, then of the layers.
std::vector<Material> materials_of(const CompOptions& options) {
    std::vector<Material> all = {material_of(options.background, options)};
    for (const LayerOptions& layer : options.layers) all.push_back(material_of(layer.file, options));
    return all;
}

std::vector<scene::Settled> places_of(const CompOptions& options, const std::vector<Material>& materials) {
    std::vector<scene::Settled> places;
    for (std::size_t i = 0; i < options.layers.size(); ++i) {
        const LayerOptions& layer = options.layers[i];
        places.push_back(scene::settle(layer.place, layer.placing ? &*layer.placing : nullptr,
                                       layer.matrix ? &*layer.matrix : nullptr, materials[i + 1].size,
                                       materials.front().size));
    }
    return places;
}

/// The movie that gives the result its rate and length.
const Material& leader_of(const CompOptions& options, const std::vector<Material>& materials) {
    if (materials.front().moves()) return materials.front();
    const auto longest = std::ranges::max_element(materials, {}, &Material::seconds);
    if (!longest->moves())
        throw WrongUsage("-o " + options.output + ": no movie is composited; qx render makes movies of scenes");
    return *longest;
}

int depth_of_work(const CompOptions& options, const std::vector<Material>& materials) {
    if (const int asked = options.asked_depth(); asked != 0) return asked;
    return std::ranges::max(materials, {}, &Material::depth).depth;
}

void note_unseen_layers(const CompOptions& options, const std::vector<Material>& materials,
                        const std::vector<scene::Settled>& places) {
    for (std::size_t i = 0; i < options.layers.size(); ++i) {
        if (!options.layers[i].effects.empty()) continue;  // which move what they make
        const scene::Settled& place = places[i];
        const M_Matrix3 placed = place.matrix.value_or(scene::moved(kM_IdentityMatrix, place.x, place.y));
        note_unseen(options.layers[i].file, materials[i + 1].size, placed, materials.front().size);
    }
}

/// What the result does not take over. @param leader  of its rate
void note_showing(const std::string& file, const Material& shown, const Material& background, const Material& leader,
                  const CompOptions& options) {
    const auto note = [&](const std::string& words) { say_note(pictures::about(file, words)); };
    if (shown.aspect != background.aspect) note("its pixels have another shape than those of the result");
    if (shown.aspect != scene::Rational(1) && !pictures::is_movie(options.output))
        note("has pixels that are not square, which the result does not tell");
    if (shown.moves() && !shown.is_even)
        note("its frames do not last equally long, the result has " + scene::words(leader.rate.real()) +
             " a second, each of them the one that is shown then");
}

RenderOptions render_options(const CompOptions& options, const Material& background) {
    RenderOptions render;
    render.common = options.common;
    render.encoding = options.encoding;
    render.output = options.output;
    render.lead = {.audio = background.has_audio && pictures::is_movie(options.output) ? options.background : "",
                   .start = background.start,
                   .aspect = background.aspect,
                   .time_code = background.time_code};
    return render;
}

/// A movie is read while the result is written.
void check_inputs_stay(const CompOptions& options) {
    const std::string own = place_of(options.output);
    const auto check = [&](const std::string& input, const char* what) {
        if (!input.empty() && place_of(input) == own)
            throw WrongUsage("-o " + options.output + ": is " + what + ", which is read while the result is written");
    };
    check(options.background, "the BACKGROUND");
    for (const LayerOptions& layer : options.layers) {
        check(layer.file, "a LAYER");
        check(layer.mask_file, "a mask");
    }
}

}  // namespace

bool is_of_movies(const CompOptions& options) {
    const auto moves = [&](const LayerOptions& layer) { return options.reading.reads_movie(layer.file); };
    return pictures::is_movie(options.output) || options.reading.reads_movie(options.background) ||
           std::ranges::any_of(options.layers, moves);
}

void comp_movies(const CompOptions& options) {
    check_inputs_stay(options);
    CompScene told(options);
    const std::vector<Material> materials = materials_of(options);
    const Material& leader = leader_of(options, materials);
    if (!materials.front().time_code.empty() && !pictures::is_movie(options.output))
        say_note(pictures::about(options.background, "its time code is left out"));
    const auto places = places_of(options, materials);
    told.settle(depth_of_work(options, materials), places);
    note_unseen_layers(options, materials, places);
    note_showing(options.background, materials.front(), materials.front(), leader, options);
    for (std::size_t i = 0; i < options.layers.size(); ++i)
        note_showing(options.layers[i].file, materials[i + 1], materials.front(), leader, options);
    const scene::Rational frames = leader.seconds * leader.rate + scene::Rational(1, 2);
    told.set_frames(static_cast<int>(std::clamp<std::int64_t>(frames.floor(), 1, scene::kMostFrame)), leader.rate);
    host::EffectFolders folders(options.effect_folders);
    const std::string place = options.scene.empty() ? "comp" : options.scene;
    const scene::Scene scene = scene::read_scene_text(told.text(), place, &folders);
    if (!options.scene.empty()) told.write();
    render_scene(scene, *scene.frames, render_options(options, materials.front()));
    if (!options.scene.empty()) told.commit();
}

}  // namespace qx::tool
