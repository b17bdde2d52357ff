// SPDX-License-Identifier: Apache-2.0
// Scenes from JSON.
#include <cmath>
#include <filesystem>

#include "pictures/Picture.h"
#include "scene/LayerRead.h"
#include "scene/LayerWords.h"
#include "scene/Scene.h"
#include "scene/SceneValues.h"

namespace qx::scene {
namespace {

namespace fs = std::filesystem;

constexpr int kMostOutputNumber = 1'000'000'000;

class SceneReader {
public:
    SceneReader(const std::string& path, EffectSource* others, std::vector<std::string>* faults)
        : context_{fs::path(path).parent_path().string(), others, 0, faults} {
        scene_.file = path;
    }

    Scene read(const SceneNode& root) {
        if (!root.is_object()) root.fault("is not an object");
        constexpr void (SceneReader::*parts[])(const SceneNode&) = {
            &SceneReader::check_keys,      &SceneReader::read_size,    &SceneReader::read_depth,
            &SceneReader::read_rate,       &SceneReader::read_frames,  &SceneReader::read_colours,
            &SceneReader::read_background, &SceneReader::check_ground, &SceneReader::read_output,
            &SceneReader::read_all_layers,
        };
        for (const auto part : parts) context_.part([&] { (this->*part)(root); });
        return std::move(scene_);
    }

private:
    void check_keys(const SceneNode& root) {
        root.check_keys(kSceneKeys);
        if (const auto schema = root.find("$schema")) static_cast<void>(schema->text());  // for editors
        read_comment(root);
        if (const auto orient = root.find("orient")) scene_.orient = orient->flag();
        if (const auto dither = root.find("dither")) scene_.dither = dither->flag();
    }

    void read_size(const SceneNode& root) {
        const auto size = root.find("size");
        if (!size) return;
        const auto sides = size->items(2, 2);
        scene_.width = sides[0].whole(1, pictures::kMostSide);
        scene_.height = sides[1].whole(1, pictures::kMostSide);
    }

    void read_depth(const SceneNode& root) {
        const auto depth = root.find("depth");
        if (!depth) return;
        scene_.depth = depth->whole(8, 32);
        if (scene_.depth != 8 && scene_.depth != 16 && scene_.depth != 32) depth->fault("is none of 8, 16, 32");
    }

    void check_ground(const SceneNode& root) {
        const auto ground = root.find("background");
        if (!ground || ground->is_list()) root.need("size");
    }

    void read_all_layers(const SceneNode& root) { scene_.layers = read_layers(root.need("layers"), context_); }

    void read_frames(const SceneNode& root) {
        const auto node = root.find("frames");
        if (!node) return;
        if (node->is_text()) {
            scene_.frames = node->read_by([&] { return frame_list(node->text()); });
            return;
        }
        const auto ends = node->items(2, 2);
        const FrameRange range{ends[0].whole(-kMostFrame, kMostFrame), ends[1].whole(-kMostFrame, kMostFrame), 1};
        if (range.last < range.first) node->fault("ends before it begins");
        scene_.frames = range;
    }

    void read_colours(const SceneNode& root) {
        ColourChoices& colours = scene_.colours;
        if (const auto space = root.find("space")) {
            colours.has_space = true;
            if (space->text() != kOfBackground) colours.space = read_profile(*space, context_.folder);
        }
        if (const auto linearize = root.find("linearize")) colours.linearize = linearize->flag();
        if (const auto output = root.find("output-space")) colours.output = read_profile(*output, context_.folder);
    }

    /// Numbers become texts: their meaning is that of the options.
    void read_output(const SceneNode& root) {
        const auto node = root.find("output");
        if (!node) return;
        node->check_keys(kOutputKeys);
        for (const char* key : kOutputKeys) {
            const auto value = node->find(key);
            if (!value) continue;
            if (key == std::string("half")) {
                scene_.output.half = value->flag();
            } else {
                scene_.output.texts[key] =
                    value->is_text() ? value->text() : std::to_string(value->whole(0, kMostOutputNumber));
            }
        }
    }

    void read_rate(const SceneNode& root) {
        constexpr int most = 1000, fine = 1000;
        const auto rate = root.find("rate");
        if (!rate) return;
        if (rate->is_list()) {
            const auto parts = rate->items(2, 2);
            scene_.rate = {parts[0].whole(1, most * 1001), parts[1].whole(1, most * 1001)};
        } else {
            const double number = std::nearbyint(rate->number(1.0 / fine, most) * fine);
            scene_.rate = {static_cast<int>(number), fine};
        }
    }

    void read_background(const SceneNode& root) {
        const auto node = root.find("background");
        if (!node) return;
        if (node->is_text() || node->is_object()) {
            scene_.background = read_file(*node, context_.folder);
            return;
        }
        const auto c = read_colour(*node);
        const auto channel = [&](std::size_t i) { return static_cast<float>(c[i]); };
        scene_.colour = {channel(0), channel(1), channel(2), channel(3)};
    }

    const ReadContext context_;
    Scene scene_;
};

/// Takes a value apart from its leaves on: the library takes memory to end what holds others, where it may not throw.
void take_apart(nlohmann::json& value) noexcept {
    if (auto* const list = value.get_ptr<nlohmann::json::array_t*>()) {
        for (auto& part : *list) take_apart(part);
        list->clear();
    } else if (auto* const object = value.get_ptr<nlohmann::json::object_t*>()) {
        for (auto& [name, part] : *object) take_apart(part);
        object->clear();
    }
}

struct Tree {
    nlohmann::json value;
    ~Tree() { take_apart(value); }
};

}  // namespace

Scene read_scene(const std::string& path, EffectSource* others, std::vector<std::string>* faults) {
    return read_scene_text(text_of_file(path), path, others, faults);
}

Scene read_scene_text(const std::string& text, const std::string& path, EffectSource* others,
                      std::vector<std::string>* faults) {
    const Tree tree{parse_json(text, path)};
    Scene scene = SceneReader(path, others, faults).read(SceneNode(tree.value, path));
    scene.text = tree.value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return scene;
}

}  // namespace qx::scene
