// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/SourceRead.h"

#include "scene/SceneValues.h"
#include "scene/sources/FileSource.h"

namespace qx::scene {
namespace {

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

}  // namespace

Missing read_missing(const SceneNode& layer) {
    const auto node = layer.find("missing");
    return node ? static_cast<Missing>(node->choice(kMissingWords)) : Missing::error;
}

std::span<const char* const> source_keys(const SceneNode&) { return kFileSourceKeys; }

std::shared_ptr<const Source> read_source(const SceneNode& layer, const ReadContext& context) {
    return read_file_source(layer, context);
}

}  // namespace qx::scene
