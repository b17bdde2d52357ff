// SPDX-License-Identifier: Apache-2.0
// Layers from JSON.
#include "scene/LayerRead.h"

#include <climits>

#include "scene/EffectRead.h"
#include "scene/LayerLinks.h"
#include "scene/LayerWords.h"
#include "scene/Modes.h"
#include "scene/SceneValues.h"
#include "scene/sources/SourceRead.h"

namespace qx::scene {
namespace {

constexpr double kMostAngle = 3600;
constexpr int kMostMatrices = 257;

SceneTransform read_transform(const SceneNode& node) {
    node.check_keys(kTransformKeys);
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

/// A position that stays is of whole pixels; one that moves is rounded to them.
void read_mask_place(const SceneNode& node, SceneMask& mask) {
    const auto at = node.find("at");
    if (at) {
        mask.at = track_of<2>(*at, 2, -kFarthest, kFarthest);
        if (!at->is_object()) {
            for (const SceneNode& place : at->items(2, 2)) static_cast<void>(place.whole(-kFarthest, kFarthest));
        }
    }
    if (const auto transform = node.find("transform")) {
        if (at) transform->fault("excludes at");
        mask.transform = read_transform(*transform);
    }
}

SceneMask read_mask(const SceneNode& node, const std::string& folder, Missing missing) {
    SceneMask mask;
    if (!node.is_object()) {
        mask.file = read_data_file(node, folder, missing);
        return mask;
    }
    node.check_keys(kMaskKeys);
    mask.file = read_data_file(node.need("file"), folder, missing);
    if (const auto kind = node.find("kind")) mask.kind = static_cast<QX_MaskKind>(kind->choice(kMaskKindWords));
    read_mask_place(node, mask);
    return mask;
}

Shutter read_shutter(const SceneNode& node) {
    node.check_keys(kShutterKeys);
    Shutter shutter;
    if (const auto angle = node.find("angle")) shutter.angle = angle->number(0, kMostAngle);
    if (const auto phase = node.find("phase")) shutter.phase = phase->number(-kMostAngle, kMostAngle);
    if (const auto matrices = node.find("matrices")) shutter.matrices = matrices->whole(2, kMostMatrices);
    return shutter;
}

int read_mode(const SceneNode& node) {
    const std::string text = node.is_number() ? std::to_string(node.whole(-100, 100)) : node.text();
    return node.read_by([&] { return mode_number(text); });
}

void read_look(const SceneNode& node, SceneLayer& layer) {
    read_track(node, "opacity", 1, 0, 1, layer.opacity);
    if (const auto mode = node.find("mode")) layer.mode = read_mode(*mode);
    if (const auto field = node.find("field")) layer.field = field->choice(kFieldWords);
    if (const auto quality = node.find("quality")) layer.quality = quality->choice(kQualityWords);
    if (const auto keep = node.find("rgb-only")) layer.rgb_only = keep->flag();
    if (const auto gamma = node.find("linear")) {
        layer.light.by_profile = gamma->is_text() && gamma->choice(kLinearWords) == 0;
        if (!layer.light.by_profile) layer.light.gamma = static_cast<float>(gamma->number(kLeastGamma, kMostGamma));
    }
    if (const auto seed = node.find("seed")) layer.seed = seed->whole(INT_MIN, INT_MAX);
}

void read_life(const SceneNode& node, SceneLayer& layer) {
    if (const auto in = node.find("in")) layer.in = in->whole(-kMostFrame, kMostFrame);
    if (const auto out = node.find("out")) {
        layer.out = out->whole(-kMostFrame, kMostFrame);
        if (layer.out < layer.in) out->fault("comes before in");
    }
    if (const auto visible = node.find("visible")) layer.visible = visible->flag();
    if (const auto at = node.find("at")) {
        const auto place = at->items(2, 2);
        layer.x = place[0].whole(-kFarthest, kFarthest);
        layer.y = place[1].whole(-kFarthest, kFarthest);
    }
}

/// @param node  gets the layer's name as its title
SceneLayer read_layer(SceneNode& node, const ReadContext& context) {
    const auto own = source_keys(node);
    std::vector<std::string> keys(own.begin(), own.end());
    keys.insert(keys.end(), std::begin(kLayerKeys), std::end(kLayerKeys));
    node.check_keys(keys);
    read_comment(node);
    if (const auto name = node.find("name")) node.set_title(name->text());
    SceneLayer layer;
    layer.place = node.place();
    layer.source = read_source(node, context);
    read_life(node, layer);
    read_look(node, layer);
    if (const auto mask = node.find("mask")) layer.mask = read_mask(*mask, context.folder, read_missing(node));
    if (layer.mode == xfer_mask_crossfade && !layer.mask && !node.find("matte-layer")) node.need("mask");
    if (const auto effects = node.find("effects")) {
        for (const SceneNode& effect : effects->items(0, kMostItems)) {
            layer.effects.push_back(read_effect(effect, context.folder, context.others));
        }
    }
    if (const auto transform = node.find("transform")) layer.transform = read_transform(*transform);
    if (const auto shutter = node.find("shutter")) layer.shutter = read_shutter(*shutter);
    return layer;
}

}  // namespace

void read_comment(const SceneNode& node) {
    if (const auto comment = node.find("comment")) static_cast<void>(comment->text());
}

SceneLayers read_layers(const SceneNode& node, const ReadContext& context) {
    SceneLayers layers;
    std::vector<SceneNode> nodes = node.items(0, kMostItems);
    for (SceneNode& layer : nodes) {
        layers.emplace_back();
        context.part([&] { layers.back() = read_layer(layer, context); });
    }
    const bool all_read = context.faults == nullptr || context.faults->empty();
    if (all_read) context.part([&] { link_layers(nodes, layers); });
    return layers;
}

}  // namespace qx::scene
