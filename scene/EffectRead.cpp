// SPDX-License-Identifier: Apache-2.0
#include "scene/EffectRead.h"

#include <algorithm>
#include <filesystem>

#include "scene/SceneValues.h"

namespace qx::scene {
namespace {

/// Reads the values of keys, and learns whether they move.
class EffectReader {
public:
    explicit EffectReader(const std::string& folder) : folder_(folder) {}
    bool moves() const { return moves_; }

    /// @param more  keys that are known besides
    void read(const SceneNode& node, const Keys& keys, std::vector<std::string> more) {
        for (const Key& key : keys) more.emplace_back(key.name);
        const bool has_own = std::find(more.begin(), more.end(), "comment") != more.end();
        if (!has_own) more.emplace_back("comment");
        node.check_keys(more);
        if (const auto comment = node.find("comment"); comment && !has_own) static_cast<void>(comment->text());
        for (const Key& key : keys) {
            if (!node.find(key.name)) continue;
            std::visit([&](const auto& kind) { take(node, key.name, kind); }, key.kind);
        }
    }

private:
    void take(const SceneNode& node, const char* name, const NumbersKey& key) {
        std::visit(
            [&](auto* track) {
                read_track(node, name, key.fewest, key.least, key.most, *track);
                moves_ = moves_ || track->moves();
            },
            key.to);
    }
    void take(const SceneNode& node, const char* name, const WholeKey& key) {
        *key.to = node.need(name).whole(key.least, key.most);
    }
    void take(const SceneNode& node, const char* name, const ChoiceKey& key) {
        const SceneNode value = node.need(name);
        const std::string text = value.is_number() ? words(value.number(-1e9, 1e9)) : value.text();
        *key.to = value.read_by([&] { return choice(text, key.words); });
    }
    void take(const SceneNode& node, const char* name, const FlagKey& key) { *key.to = node.need(name).flag(); }
    void take(const SceneNode& node, const char* name, const ColourKey& key) { *key.to = read_colour(node.need(name)); }
    void take(const SceneNode& node, const char* name, const TextKey& key) {
        const SceneNode value = node.need(name);
        value.read_by([&] { key.read(value.text()); });
    }
    void take(const SceneNode& node, const char* name, const DocumentKey& key) {
        const SceneNode value = node.need(name);
        const std::string path = (std::filesystem::path(folder_) / value.text()).string();
        if (!pictures::is_there(path)) value.fault(path + ": no such file");
        *key.to = {path, text_of_file(path)};
    }
    void take(const SceneNode& node, const char* name, const PictureKey& key) {
        *key.to = (key.is_data ? read_data_file : read_file)(node.need(name), folder_, Missing::error);
        moves_ = moves_ || (*key.to)->moves();
    }
    void take(const SceneNode& node, const char* name, const ListKey& key) {
        for (const SceneNode& item : node.need(name).items(1, kMostItems)) read(item, key.next(), {});
    }

    const std::string& folder_;
    bool moves_ = false;
};

/// {"plugin": NAME, "parameters": {KEY: VALUE, ...}}
SceneEffect read_plug_in(const SceneNode& node, const std::string& folder, EffectSource* others) {
    node.check_keys(kPlugInKeys);
    const SceneNode name = node.need("plugin");
    if (others == nullptr) name.fault("cannot be had here");
    std::shared_ptr<Effect> effect = name.read_by([&] { return others->find(name.text()); });
    EffectReader reader(folder);
    if (const auto parameters = node.find("parameters")) reader.read(*parameters, effect->keys(), {});
    node.read_by([&] { effect->settle(); });
    return {node.place(), effect, reader.moves() || effect->depends_on_frame()};
}

}  // namespace

SceneEffect read_effect(const SceneNode& node, const std::string& folder, EffectSource* others) {
    if (!node.is_object()) node.fault("is not an object");
    if (node.find("plugin")) return read_plug_in(node, folder, others);
    const SceneNode name = node.need("effect");
    std::shared_ptr<Effect> effect = name.read_by([&] { return new_effect(name.text()); });
    EffectReader reader(folder);
    reader.read(node, effect->keys(), {"effect"});
    node.read_by([&] { effect->settle(); });
    return {node.place(), effect, reader.moves() || effect->depends_on_frame()};
}

}  // namespace qx::scene
