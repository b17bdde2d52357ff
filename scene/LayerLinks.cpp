// SPDX-License-Identifier: Apache-2.0
#include "scene/LayerLinks.h"

#include <map>

#include "scene/LayerWords.h"
#include "scene/SceneKeys.h"

namespace qx::scene {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
constexpr int kMostParents = 256;  ///< above one another
constexpr int kMostMattes = 32;    ///< of mattes

/// The layers of a list by their names.
class Names {
public:
    explicit Names(const std::vector<SceneNode>& nodes) {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const auto name = nodes[i].find("name");
            if (!name) continue;
            known_.push_back(name->text());
            const auto [place, is_new] = places_.try_emplace(known_.back(), i);
            if (!is_new) place->second = kNone;
        }
    }
    std::size_t find(const SceneNode& node) const {
        const std::string name = node.text();
        const auto found = places_.find(name);
        if (found == places_.end()) {
            node.fault(name + ": no such layer in its list" +
                       suggestion(name, known_, known_.empty() ? "none has a name" : ""));
        }
        if (found->second == kNone) node.fault(name + ": several layers of the list have this name");
        return found->second;
    }

private:
    std::vector<std::string> known_;
    std::map<std::string, std::size_t> places_;
};

/// The layer that each one names; kNone where it names none.
using Links = std::vector<std::size_t>;

/// Throws for a layer that leads back to itself, and for one that is too far from the end of its row.
void check_links(const Links& links, const std::vector<SceneNode>& nodes, const char* key, int most) {
    std::size_t too_far = kNone;
    for (std::size_t i = 0; i < links.size(); ++i) {
        int steps = 0;
        for (std::size_t at = links[i]; at != kNone && steps <= most; at = links[at], ++steps) {
            if (at == i) nodes[i].need(key).fault("leads back to the layer itself");
        }
        if (steps > most) too_far = i;  // or it leads into a ring, which is told where it lies
    }
    if (too_far != kNone) nodes[too_far].need(key).fault("leads on to more than " + std::to_string(most) + " layers");
}

void link_parents(const std::vector<SceneNode>& nodes, const Names& names, SceneLayers& layers) {
    Links links(layers.size(), kNone);
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (const auto parent = nodes[i].find("parent")) links[i] = names.find(*parent);
    }
    check_links(links, nodes, "parent", kMostParents);
    std::map<std::size_t, std::shared_ptr<const SceneTransform>> shared;
    for (std::size_t i = 0; i < layers.size(); ++i) {
        for (std::size_t at = links[i]; at != kNone; at = links[at]) {
            if (!layers[at].transform) continue;
            auto& transform = shared[at];
            if (!transform) transform = std::make_shared<SceneTransform>(*layers[at].transform);
            layers[i].parents.push_back(transform);
        }
    }
}

void link_mattes(const std::vector<SceneNode>& nodes, const Names& names, SceneLayers& layers) {
    Links links(layers.size(), kNone);
    for (std::size_t i = 0; i < layers.size(); ++i) {
        const auto node = nodes[i].find("matte-layer");
        if (!node) continue;
        node->check_keys(kMatteLayerKeys);
        MatteLayer& matte = layers[i].matte_layer.emplace();
        matte.index = links[i] = names.find(node->need("layer"));
        if (const auto kind = node->find("kind")) matte.kind = static_cast<QX_MaskKind>(kind->choice(kMaskKindWords));
        layers[matte.index].is_matte = true;
    }
    check_links(links, nodes, "matte-layer", kMostMattes);
}

}  // namespace

void link_layers(const std::vector<SceneNode>& nodes, SceneLayers& layers) {
    const Names names(nodes);
    link_parents(nodes, names, layers);
    link_mattes(nodes, names, layers);
}

}  // namespace qx::scene
