// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/subcommands/CompScene.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "platform/standalone/Colour.h"
#include "scene/LayerWords.h"
#include "scene/Modes.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/work/Files.h"

namespace qx::tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// The shortest number that is this float again.
double short_number(float number) {
    char text[32];
    *std::to_chars(text, text + sizeof text - 1, number).ptr = 0;
    const double brief = std::strtod(text, nullptr);
    return static_cast<float>(brief) == number ? brief : number;
}

const char* mode_name(int number) {
    const auto& modes = scene::all_modes();
    return std::find_if(modes.begin(), modes.end(), [&](const auto& mode) { return mode.number == number; })->name;
}

template <std::size_t N> Json numbers_of(const std::array<double, N>& numbers) {
    if constexpr (N == 1) return numbers[0];
    return numbers;
}

/// Null where nothing is chosen.
Json json_of(const scene::OutputChoices& choices) {
    Json told;
    for (const auto& [key, text] : choices.texts) told[key] = text;
    if (choices.half) told["half"] = *choices.half;
    return told;
}

bool is_own_effect(const std::string& name) {
    const auto kinds = scene::effect_kinds();
    return std::any_of(kinds.begin(), kinds.end(), [&](const auto& kind) { return name == kind.name; });
}

}  // namespace

CompScene::CompScene(const CompOptions& options) : options_(options) {
    if (!options.scene.empty()) check_place();
    scene_["depth"] = 8;
    scene_["frames"] = {0, 0};
    if (options.reading.as_stored) scene_["orient"] = false;
    if (const Json output = json_of(options.encoding.choices()); !output.is_null()) scene_["output"] = output;
    const ColourOptions& colours = options.colour_texts;
    if (!colours.space.empty()) scene_["space"] = profile_of(colours.space);
    if (colours.linearize) scene_["linearize"] = true;
    if (!colours.to.empty()) scene_["output-space"] = profile_of(colours.to);
    scene_["background"] = file_of(options.background, options.background_profile_text);
    scene_["layers"] = Json::array();
    for (const LayerOptions& layer : options.layers) scene_["layers"].push_back(layer_of(layer, {}));
    try {
        static_cast<void>(scene_.dump());
    } catch (const Json::exception&) {
        refuse("a name is no UTF-8, which scenes are");
    }
}

void CompScene::refuse(const std::string& words) const {
    throw WrongUsage((options_.scene.empty() ? "-o " + options_.output : "--emit-scene " + options_.scene) + ": " +
                     words);
}

/// It is none of the files that the line reads or writes.
void CompScene::check_place() const {
    pictures::check_folder(options_.scene);
    const std::string own = place_of(options_.scene);
    const auto check = [&](const std::string& path) {
        if (!path.empty() && place_of(path) == own) refuse("is a picture of this line");
    };
    check(options_.output);
    check(options_.background);
    for (const LayerOptions& layer : options_.layers) {
        check(layer.file);
        check(layer.mask_file);
        for (const auto& effect : layer.effects) {
            for (const scene::SceneFile* file : effect->files()) check(file->at(0));
        }
    }
}

std::string CompScene::name_of(const std::string& path) const {
    if (options_.scene.empty()) return path;
    const fs::path folder = fs::absolute(options_.scene).parent_path();
    return fs::absolute(path).lexically_proximate(folder).string();
}

std::string CompScene::profile_of(const std::string& text) const {
    const bool is_name = text == scene::kOfBackground || standalone::NamedProfile(text, nullptr) != nullptr;
    return is_name ? text : name_of(text);
}

Json CompScene::file_of(const std::string& path, const std::string& profile) const {
    const bool is_clip = options_.reading.reads_movie(path);
    if (profile.empty() && !is_clip) return name_of(path);
    Json file{{is_clip ? "clip" : "name", name_of(path)}};
    if (is_clip) file["method"] = "nearest";  // of another rate: whole frames, as players show them
    if (!profile.empty()) file["profile"] = profile_of(profile);
    return file;
}

Json CompScene::layer_of(const LayerOptions& layer, const scene::Settled& place) const {
    Json told{{"file", file_of(layer.file, layer.profile_text)}, {"mode", mode_name(layer.mode)}};
    if (layer.opacity != 1) told["opacity"] = short_number(layer.opacity);
    if (!layer.mask_file.empty()) {
        const Place at = layer.has_mask_at ? layer.mask_at : Place{place.x, place.y};
        told["mask"] = {{"file", file_of(layer.mask_file, "")}, {"at", {at.x, at.y}}};
        if (layer.mask_kind) told["mask"]["kind"] = scene::kMaskKindWords[*layer.mask_kind];
    }
    host::EffectFolders folders(options_.effect_folders);
    for (const std::string& text : layer.effect_texts) told["effects"].push_back(effect_of(layer, text, folders));
    const Json transform = transform_of(layer, place);
    if (!transform.is_null()) {
        told["transform"] = transform;
    } else if (place.x != 0 || place.y != 0) {
        told["at"] = {place.x, place.y};
    }
    if (layer.quality != 1) told["quality"] = scene::kQualityWords[layer.quality];
    if (layer.field != 0) told["field"] = scene::kFieldWords[layer.field];
    if (layer.rgb_only) told["rgb-only"] = true;
    if (layer.light.by_profile) told["linear"] = scene::kLinearWords[0];
    if (layer.light.gamma > 0) told["linear"] = short_number(layer.light.gamma);
    if (layer.seed != 0) told["seed"] = layer.seed;
    return told;
}

/// In words where they give the very numbers, else as a matrix.
Json CompScene::transform_of(const LayerOptions& layer, const scene::Settled& place) const {
    if (!place.matrix) return {};
    const M_Matrix3& placed = *place.matrix;
    if (!layer.matrix) {
        scene::Placing p = layer.placing.value_or(scene::Placing{});
        p.translate[0] += layer.place.x.number;
        p.translate[1] += layer.place.y.number;
        const M_Matrix3 by_words = scene::matrix_of(p);
        if (std::memcmp(&by_words, &placed, sizeof placed) == 0) {
            return {{"anchor", p.anchor}, {"translate", p.translate}, {"scale", p.scale}, {"rotate", p.degrees}};
        }
    }
    Json elements = Json::array();
    for (const auto& row : placed.m) {
        for (const double element : row) {
            if (!(std::abs(element) <= scene::kMostPlacing)) {
                refuse("a scene cannot tell where " + layer.file + " lies, a number of its matrix is above " +
                       scene::words(scene::kMostPlacing));
            }
            elements.push_back(element);
        }
    }
    return {{"matrix", elements}};
}

Json CompScene::effect_of(const LayerOptions& layer, const std::string& text, host::EffectFolders& folders) const {
    const EffectArgument told = effect_argument("--effect", text, folders);
    if (told.name.find('/') != std::string::npos) {
        refuse("a scene names no effect by its file, as " + layer.file + " has it: " + told.name);
    }
    const bool is_own = is_own_effect(told.name);
    Json values = Json::object();
    if (is_own) values["effect"] = told.name;
    const scene::Keys keys = told.effect->keys();
    for (const auto& [name, value] : told.values) {
        const auto key = std::find_if(keys.begin(), keys.end(),
                                      [&, told_name = name](const scene::Key& one) { return told_name == one.name; });
        values[name] = value_of_key(*key, value);
    }
    if (is_own) return values;
    return {{"plugin", told.name}, {"parameters", values}};
}

/// What an effect has made of a text.
Json CompScene::value_of_key(const scene::Key& key, const std::string& text) const {
    struct Value {
        const CompScene& scene;
        const std::string& text;
        Json operator()(const scene::NumbersKey& own) const {
            return std::visit([](const auto* track) { return numbers_of(track->at(0)); }, own.to);
        }
        Json operator()(const scene::WholeKey& own) const { return *own.to; }
        Json operator()(const scene::ChoiceKey& own) const { return own.words[static_cast<std::size_t>(*own.to)]; }
        Json operator()(const scene::FlagKey& own) const { return *own.to; }
        Json operator()(const scene::ColourKey& own) const {
            const auto& c = *own.to;
            return {c[1], c[2], c[3], c[0]};
        }
        Json operator()(const scene::TextKey&) const { return text; }
        Json operator()(const scene::DocumentKey& own) const { return scene.name_of(own.to->name); }
        Json operator()(const scene::PictureKey& own) const { return scene.name_of((*own.to)->at(0)); }
        Json operator()(const scene::ListKey&) const { return {}; }
    };
    return std::visit(Value{*this, text}, key.kind);
}

void CompScene::settle(int depth, const std::vector<scene::Settled>& places) {
    scene_["depth"] = depth;
    for (std::size_t i = 0; i < places.size(); ++i) scene_["layers"][i] = layer_of(options_.layers[i], places[i]);
}

void CompScene::set_frames(int count, const scene::Rational& rate) {
    scene_["frames"] = {0, count - 1};
    scene_["rate"] = {rate.number(), rate.per()};
}

void CompScene::write() {
    const std::string text = this->text();
    file_ = std::make_unique<pictures::OutputFile>(options_.scene);
    file_->write(text.data(), text.size());
    file_->finish();
}

}  // namespace qx::tool
