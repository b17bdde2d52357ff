// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/SourceRead.h"

#include "scene/LayerWords.h"
#include "scene/SceneValues.h"
#include "scene/sources/FileSource.h"
#include "scene/sources/GradientSource.h"
#include "scene/sources/GroupSource.h"
#include "scene/sources/SolidSource.h"
#include "scene/sources/TextSource.h"

namespace qx::scene {
namespace {

constexpr const char* kGradientWords[] = {"linear", "radial"};

QX_PixelFloat read_matte(const SceneNode& node) {
    const auto c = node.numbers(3, 3, 0, 1);
    return {1, static_cast<float>(c[0]), static_cast<float>(c[1]), static_cast<float>(c[2])};
}

std::shared_ptr<const Source> read_file_source(const SceneNode& layer, const ReadContext& context) {
    SceneFile file = read_file(layer.need("file"), context.folder, read_missing(layer));
    std::optional<QX_PixelFloat> matte;
    if (const auto node = layer.find("matte")) matte = read_matte(*node);
    return std::make_shared<FileSource>(std::move(file), matte);
}

SourceSize read_size(const SceneNode& layer) {
    const auto size = layer.find("size");
    if (!size) return {};
    const auto sides = size->items(2, 2);
    return {sides[0].whole(1, pictures::kMostSide), sides[1].whole(1, pictures::kMostSide)};
}

std::shared_ptr<const Source> read_solid(const SceneNode& layer, const ReadContext&) {
    return std::make_shared<SolidSource>(read_colour_track(layer.need("solid")), read_size(layer));
}

void read_stops(const SceneNode& node, GradientTracks& gradient) {
    for (const SceneNode& item : node.items(1, kMostItems)) {
        item.check_keys(kStopKeys);
        const SceneNode at = item.need("at");
        const double place = at.number(0, 1);
        if (!gradient.stops.empty() && place < gradient.stops.back().at) at.fault("comes before the stop before it");
        gradient.stops.push_back({place, read_colour_track(item.need("colour"))});
    }
}

std::shared_ptr<const Source> read_gradient(const SceneNode& layer, const ReadContext&) {
    const SceneNode node = layer.need("gradient");
    node.check_keys(kGradientKeys);
    GradientTracks gradient;
    if (const auto kind = node.find("kind")) gradient.radial = kind->choice(kGradientWords) == 1;
    gradient.from = track_of<2>(node.need("from"), 2, -kFarthest, kFarthest);
    gradient.to = track_of<2>(node.need("to"), 2, -kFarthest, kFarthest);
    read_stops(node.need("stops"), gradient);
    return std::make_shared<GradientSource>(std::move(gradient), read_size(layer));
}

std::shared_ptr<const Source> read_group(const SceneNode& layer, const ReadContext& context) {
    const SceneNode layers = layer.need("layers");
    ReadContext inner = context;
    if (++inner.nested > kMostNested) layers.fault("lies in more than " + std::to_string(kMostNested) + " groups");
    return std::make_shared<GroupSource>(read_layers(layers, inner), read_size(layer));
}

/// What a layer may show, by the key that tells it.
struct SourceKind {
    const char* key;
    std::span<const char* const> keys;
    std::shared_ptr<const Source> (*read)(const SceneNode& layer, const ReadContext& context);
};
constexpr SourceKind kSourceKinds[] = {{"file", kFileSourceKeys, read_file_source},
                                       {"solid", kSolidSourceKeys, read_solid},
                                       {"gradient", kGradientSourceKeys, read_gradient},
                                       {"text", kTextSourceKeys, read_text},
                                       {"layers", kGroupSourceKeys, read_group}};

/// That of a file where nothing is told.
const SourceKind& kind_of(const SceneNode& layer) {
    const SourceKind* told = nullptr;
    for (const SourceKind& kind : kSourceKinds) {
        const auto node = layer.is_object() ? layer.find(kind.key) : std::nullopt;
        if (!node) continue;
        if (told != nullptr) node->fault(std::string("excludes ") + told->key);
        told = &kind;
    }
    return told != nullptr ? *told : kSourceKinds[0];
}

}  // namespace

Missing read_missing(const SceneNode& layer) {
    const auto node = layer.find("missing");
    return node ? static_cast<Missing>(node->choice(kMissingWords)) : Missing::error;
}

std::span<const char* const> source_keys(const SceneNode& layer) { return kind_of(layer).keys; }

std::shared_ptr<const Source> read_source(const SceneNode& layer, const ReadContext& context) {
    return kind_of(layer).read(layer, context);
}

}  // namespace qx::scene
