// SPDX-License-Identifier: Apache-2.0
// Scenes from JSON.
#include <climits>
#include <cmath>
#include <filesystem>

#include "pictures/Picture.h"
#include "scene/EffectRead.h"
#include "scene/Faults.h"
#include "scene/LayerWords.h"
#include "scene/Modes.h"
#include "scene/Scene.h"
#include "scene/SceneNode.h"
#include "scene/SceneValues.h"

namespace qx::scene {
namespace {

namespace fs = std::filesystem;

constexpr double kMostAngle = 3600;
constexpr int kMostMatrices = 257;

class Reader {
public:
    Reader(const std::string& path, EffectSource* others)
        : folder_(fs::path(path).parent_path().string()), others_(others) {
        scene_.file = path;
    }

    Scene read(const SceneNode& root) {
        root.check_keys({"size", "depth", "dither", "rate", "frames", "space", "linearize", "output-space",
                         "background", "layers", "comment"});
        read_comment(root);
        read_frame(root);
        read_colours(root);
        if (const auto background = root.find("background")) read_background(*background);
        if (scene_.width == 0 && !scene_.background) root.need("size");
        for (const SceneNode& layer : root.need("layers").items(0, kMostItems))
            scene_.layers.push_back(read_layer(layer));
        return std::move(scene_);
    }

private:
    void read_frame(const SceneNode& root) {
        if (const auto size = root.find("size")) {
            const auto sides = size->items(2, 2);
            scene_.width = sides[0].whole(1, pictures::kMostSide);
            scene_.height = sides[1].whole(1, pictures::kMostSide);
        }
        if (const auto depth = root.find("depth")) {
            scene_.depth = depth->whole(8, 32);
            if (scene_.depth != 8 && scene_.depth != 16 && scene_.depth != 32) depth->fault("is none of 8, 16, 32");
        }
        if (const auto dither = root.find("dither")) scene_.dither = dither->flag();
        if (const auto rate = root.find("rate")) read_rate(*rate);
        if (const auto frames = root.find("frames")) {
            const auto ends = frames->items(2, 2);
            scene_.frames = FrameRange{ends[0].whole(0, kMostFrame), ends[1].whole(0, kMostFrame), 1};
            if (scene_.frames->last < scene_.frames->first) frames->fault("ends before it begins");
        }
    }

    void read_colours(const SceneNode& root) {
        ColourChoices& colours = scene_.colours;
        if (const auto space = root.find("space")) {
            colours.has_space = true;
            if (space->text() != kOfBackground) colours.space = read_profile(*space, folder_);
        }
        if (const auto linearize = root.find("linearize")) colours.linearize = linearize->flag();
        if (const auto output = root.find("output-space")) colours.output = read_profile(*output, folder_);
    }

    void read_rate(const SceneNode& rate) {
        constexpr int most = 1000, fine = 1000;
        if (rate.is_list()) {
            const auto parts = rate.items(2, 2);
            scene_.rate = {parts[0].whole(1, most * 1001), parts[1].whole(1, most * 1001)};
        } else {
            const double number = std::nearbyint(rate.number(1.0 / fine, most) * fine);
            scene_.rate = {static_cast<int>(number), fine};
        }
    }

    void read_background(const SceneNode& node) {
        if (node.is_text() || node.is_object()) {
            scene_.background = read_file(node);
            return;
        }
        const auto c = node.numbers(3, 4, 0, 1);
        const auto channel = [&](std::size_t i) { return static_cast<float>(c[i]); };
        scene_.colour = {c.size() == 4 ? channel(3) : 1.0f, channel(0), channel(1), channel(2)};
    }

    SceneFile read_file(const SceneNode& node) const { return scene::read_file(node, folder_); }

    SceneMask read_mask(const SceneNode& node) {
        SceneMask mask;
        if (!node.is_object()) {
            mask.file = read_data_file(node, folder_);
            return mask;
        }
        node.check_keys({"file", "kind", "at"});
        mask.file = read_data_file(node.need("file"), folder_);
        if (const auto kind = node.find("kind")) mask.kind = static_cast<QX_MaskKind>(kind->choice(kMaskKindWords));
        if (const auto at = node.find("at")) {
            const auto place = at->items(2, 2);
            mask.x = place[0].whole(-kFarthest, kFarthest);
            mask.y = place[1].whole(-kFarthest, kFarthest);
        }
        return mask;
    }

    static SceneTransform read_transform(const SceneNode& node) {
        node.check_keys({"anchor", "translate", "scale", "rotate", "matrix"});
        SceneTransform transform;
        read_track(node, "anchor", 2, -kMostPlacing, kMostPlacing, transform.anchor);
        read_track(node, "translate", 2, -kMostPlacing, kMostPlacing, transform.translate);
        read_track(node, "scale", 1, -kMostPlacing, kMostPlacing, transform.scale);
        read_track(node, "rotate", 1, -kMostPlacing, kMostPlacing, transform.rotate);
        if (const auto matrix = node.find("matrix")) {
            for (const char* other : {"anchor", "translate", "scale", "rotate"}) {
                if (node.find(other)) matrix->fault(std::string("excludes ") + other);
            }
            transform.matrix.emplace(Track<9>::Value{});
            read_track(node, "matrix", 9, -kMostPlacing, kMostPlacing, *transform.matrix);
        }
        return transform;
    }

    static Shutter read_shutter(const SceneNode& node) {
        node.check_keys({"angle", "phase", "matrices"});
        Shutter shutter;
        if (const auto angle = node.find("angle")) shutter.angle = angle->number(0, kMostAngle);
        if (const auto phase = node.find("phase")) shutter.phase = phase->number(-kMostAngle, kMostAngle);
        if (const auto matrices = node.find("matrices")) shutter.matrices = matrices->whole(2, kMostMatrices);
        return shutter;
    }

    static QX_PixelFloat read_matte(const SceneNode& node) {
        const auto c = node.numbers(3, 3, 0, 1);
        return {1, static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2])};
    }

    static int read_mode(const SceneNode& node) {
        const std::string text = node.is_number() ? std::to_string(node.whole(-100, 100)) : node.text();
        return node.read_by([&] { return mode_number(text); });
    }

    static void read_look(const SceneNode& node, SceneLayer& layer) {
        read_track(node, "opacity", 1, 0, 1, layer.opacity);
        if (const auto mode = node.find("mode")) layer.mode = read_mode(*mode);
        if (const auto matte = node.find("matte")) layer.matte = read_matte(*matte);
        if (const auto field = node.find("field")) layer.field = field->choice(kFieldWords);
        if (const auto quality = node.find("quality")) layer.quality = quality->choice(kQualityWords);
        if (const auto keep = node.find("rgb-only")) layer.rgb_only = keep->flag();
        if (const auto gamma = node.find("linear")) {
            layer.light.by_profile = gamma->is_text() && gamma->choice(kLinearWords) == 0;
            if (!layer.light.by_profile) layer.light.gamma = static_cast<float>(gamma->number(kLeastGamma, kMostGamma));
        }
        if (const auto seed = node.find("seed")) layer.seed = seed->whole(INT_MIN, INT_MAX);
    }

    static void read_comment(const SceneNode& node) {
        if (const auto comment = node.find("comment")) static_cast<void>(comment->text());
    }

    SceneLayer read_layer(SceneNode node) {
        node.check_keys({"file", "mode", "opacity", "mask", "matte", "effects", "field", "quality", "transform",
                         "shutter", "rgb-only", "linear", "seed", "name", "comment"});
        read_comment(node);
        if (const auto name = node.find("name")) node.set_title(name->text());
        SceneLayer layer;
        layer.place = node.place();
        layer.file = read_file(node.need("file"));
        read_look(node, layer);
        if (const auto mask = node.find("mask")) layer.mask = read_mask(*mask);
        if (layer.mode == xfer_mask_crossfade && !layer.mask) node.need("mask");
        if (const auto effects = node.find("effects")) {
            for (const SceneNode& effect : effects->items(0, kMostItems)) {
                layer.effects.push_back(read_effect(effect, folder_, others_));
            }
        }
        if (const auto transform = node.find("transform")) layer.transform = read_transform(*transform);
        if (const auto shutter = node.find("shutter")) layer.shutter = read_shutter(*shutter);
        return layer;
    }

    const std::string folder_;
    EffectSource* const others_;
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

void check_file(const Scene& scene, const SceneFile& file) {
    if (file.profile && !scene.colours.has_space) throw SceneFault(scene.file, file.place + "/profile", kNeedsSpace);
}

}  // namespace

void check_colours(const Scene& scene) {
    const ColourChoices& colours = scene.colours;
    if (colours.has_space) {
        if (colours.space || scene.background) return;
        throw SceneFault(scene.file, "/space", "is that of the background, which is no picture");
    }
    if (colours.linearize) throw SceneFault(scene.file, "/linearize", kNeedsSpace);
    if (colours.output) throw SceneFault(scene.file, "/output-space", kNeedsSpace);
    if (scene.background) check_file(scene, *scene.background);
    for (const SceneLayer& layer : scene.layers) {
        if (layer.light.by_profile) throw SceneFault(scene.file, layer.place + "/linear", kNeedsSpace);
        check_file(scene, layer.file);
        for (const SceneEffect& effect : layer.effects) {
            for (const SceneFile* file : effect.effect->files()) check_file(scene, *file);
        }
    }
}

Scene read_scene(const std::string& path, EffectSource* others) {
    const Tree tree{parse_json(text_of_file(path), path)};
    Scene scene = Reader(path, others).read(SceneNode(tree.value, path));
    scene.text = tree.value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return scene;
}

}  // namespace qx::scene
