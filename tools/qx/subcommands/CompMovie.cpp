// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/subcommands/CompMovie.h"

#include <algorithm>

#include "pictures/Movie.h"
#include "scene/Clip.h"
#include "tools/qx/subcommands/CompScene.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/RenderJob.h"

namespace qx::tool {
namespace {

/// What the head of a file tells of what it shows.
struct Material {
    scene::Extent size;
    int depth = 8;
    scene::Rational rate = 0;  ///< frames a second; 0 for a picture
    scene::Rational seconds = 0, start = 0;
    bool has_audio = false;
    bool is_turned = false, has_aspect = false;
    bool moves() const { return rate > scene::Rational(0); }
};

Material movie_of(const std::string& file) {
    const auto clip = scene::open_movie_clip(file);
    const scene::ClipFacts& facts = clip->facts();
    return {.size = {facts.width, facts.height},
            .depth = facts.depth,
            .rate = facts.rate,
            .seconds = clip->end() - clip->time_of(0),
            .start = clip->time_of(0),
            .has_audio = facts.has_audio,
            .is_turned = facts.orientation != 1,
            .has_aspect = facts.aspect != scene::Rational(1)};
}

Material material_of(const std::string& file, const CompOptions& options) {
    if (pictures::is_read_as_movie(file)) return movie_of(file);
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

int depth_of(const CompOptions& options, const std::vector<Material>& materials) {
    if (const int asked = options.asked_depth(); asked != 0) return asked;
    return std::ranges::max(materials, {}, &Material::depth).depth;
}

/// Frames are composited as they are stored.
void note_showing(const std::string& file, const Material& shown) {
    if (shown.is_turned) say_note(pictures::about(file, "is to be turned, which the result does not tell"));
    if (shown.has_aspect)
        say_note(pictures::about(file, "has pixels that are not square, which the result does not tell"));
}

RenderOptions render_options(const CompOptions& options, const Material& background) {
    RenderOptions render;
    render.common = options.common;
    render.encoding = options.encoding;
    render.output = options.output;
    if (background.has_audio && pictures::is_movie(options.output))
        render.audio = {options.background, background.start};
    return render;
}

}  // namespace

bool is_of_movies(const CompOptions& options) {
    const auto moves = [](const LayerOptions& layer) { return pictures::is_read_as_movie(layer.file); };
    return pictures::is_movie(options.output) || pictures::is_read_as_movie(options.background) ||
           std::ranges::any_of(options.layers, moves);
}

void comp_movies(const CompOptions& options) {
    CompScene told(options);
    const std::vector<Material> materials = materials_of(options);
    const Material& leader = leader_of(options, materials);
    told.settle(depth_of(options, materials), places_of(options, materials));
    note_showing(options.background, materials.front());
    for (std::size_t i = 0; i < options.layers.size(); ++i) note_showing(options.layers[i].file, materials[i + 1]);
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
