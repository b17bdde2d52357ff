// SPDX-License-Identifier: Apache-2.0
#include "pictures/ExrLayers.h"

#include <ImfStandardAttributes.h>

#include <algorithm>

namespace qx::pictures {
namespace {

/// What programs call the channels of a layer; the last two are vectors and positions.
struct Naming {
    const char *colours[3], *alpha;
};
constexpr Naming kNamings[] = {{{"R", "G", "B"}, "A"},
                               {{"r", "g", "b"}, "a"},
                               {{"red", "green", "blue"}, "alpha"},
                               {{"X", "Y", "Z"}, "A"},
                               {{"x", "y", "z"}, "a"}};
constexpr Naming kOwnNaming = kNamings[0];  // of a part's own picture

std::string layer_of(const std::string& channel) {
    const auto dot = channel.find_last_of('.');
    return dot == std::string::npos ? "" : channel.substr(0, dot);
}

std::vector<std::string> channels_of_layer(const Imf::ChannelList& channels, const std::string& layer) {
    std::vector<std::string> names;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        if (layer_of(i.name()) == layer) names.emplace_back(i.name());
    }
    return names;
}

std::optional<ExrChosen> choose_by(const Imf::ChannelList& channels, const std::string& before, const Naming& naming) {
    ExrChosen chosen;
    for (const char* colour : naming.colours) {
        if (channels.findChannel(before + colour) == nullptr) return std::nullopt;
        chosen.colours.push_back(before + colour);
    }
    if (channels.findChannel(before + naming.alpha) != nullptr) chosen.alpha = before + naming.alpha;
    return chosen;
}

/// Luminance without colour differences, or all that there is.
std::optional<ExrChosen> choose_grey(const Imf::ChannelList& channels, const std::string& layer,
                                     const std::string& before) {
    const std::string luminance = before + "Y", alpha = before + "A";
    std::vector<std::string> names = channels_of_layer(channels, layer);
    const bool is_luma = std::ranges::count(names, luminance) != 0 && channels.findChannel(before + "RY") == nullptr;
    const bool has_alpha = names.size() > 1 && std::ranges::count(names, alpha) != 0;
    if (is_luma) return ExrChosen{{luminance}, has_alpha ? alpha : ""};
    if (has_alpha) std::erase(names, alpha);
    if (names.size() != 1) return std::nullopt;
    return ExrChosen{{names.front()}, has_alpha ? alpha : ""};
}

/// What the channels of a layer make; of a part's own ones where its name is empty.
std::optional<ExrChosen> choose(const Imf::ChannelList& channels, const std::string& layer) {
    if (layer.empty()) {
        const auto own = choose_by(channels, "", kOwnNaming);
        return own ? own : choose_grey(channels, "", "");
    }
    const std::string before = layer + ".";
    for (const Naming& naming : kNamings) {
        if (auto chosen = choose_by(channels, before, naming)) return chosen;
    }
    return choose_grey(channels, layer, before);
}

std::vector<std::string> layers_in(const Imf::ChannelList& channels) {
    std::vector<std::string> layers;
    for (auto i = channels.begin(); i != channels.end(); ++i) {
        const std::string layer = layer_of(i.name());
        if (!layer.empty() && std::ranges::count(layers, layer) == 0) layers.push_back(layer);
    }
    return layers;
}

/// A part's own picture, or that of its only layer: some programs call both the same.
std::optional<ExrChosen> choose_of_part(const Imf::ChannelList& channels) {
    if (auto own = choose(channels, "")) return own;
    const std::vector<std::string> layers = layers_in(channels);
    return layers.size() == 1 && channels_of_layer(channels, "").empty() ? choose(channels, layers.front())
                                                                         : std::nullopt;
}

std::optional<ExrChosen> choose_channel(const Imf::ChannelList& channels, const std::string& name) {
    if (channels.findChannel(name) == nullptr) return std::nullopt;
    return ExrChosen{{name}, ""};
}

std::string name_of(const Imf::Header& part) { return part.hasName() ? part.name() : ""; }

/// The first part for which `look` has an answer.
template <class Look> std::optional<ExrLayer> in_parts(const Imf::MultiPartInputFile& exr, const Look& look) {
    for (int part = 0; part < exr.parts(); ++part) {
        if (auto chosen = look(exr.header(part))) return ExrLayer{part, std::move(*chosen)};
    }
    return std::nullopt;
}

}  // namespace

bool ExrChosen::uses(const std::string& channel) const {
    return channel == alpha || std::ranges::count(colours, channel) != 0;
}

std::optional<ExrLayer> find_layer(const Imf::MultiPartInputFile& exr, const std::string& name) {
    using Header = Imf::Header;
    using Chosen = std::optional<ExrChosen>;
    if (name.empty()) {
        auto own = choose_of_part(exr.header(0).channels());
        return own ? std::optional(ExrLayer{0, std::move(*own)}) : std::nullopt;
    }
    const auto by_part = [&](const Header& part) {
        return name_of(part) == name ? choose_of_part(part.channels()) : Chosen{};
    };
    const auto by_layer = [&](const Header& part) { return choose(part.channels(), name); };
    const auto by_both = [&](const Header& part) {
        const std::string before = name_of(part) + ".";
        if (before.size() == 1 || !name.starts_with(before)) return Chosen{};
        const std::string rest = name.substr(before.size());
        auto chosen = choose(part.channels(), rest);
        return chosen ? chosen : choose_channel(part.channels(), rest);
    };
    const auto by_channel = [&](const Header& part) { return choose_channel(part.channels(), name); };
    const auto by_view = [&](const Header& part) {
        return part.hasView() && part.view() == name ? choose_of_part(part.channels()) : Chosen{};
    };
    auto found = in_parts(exr, by_part);
    if (!found) found = in_parts(exr, by_layer);
    if (!found) found = in_parts(exr, by_both);
    if (!found) found = in_parts(exr, by_channel);
    return found ? found : in_parts(exr, by_view);
}

std::vector<std::string> layers_of(const Imf::MultiPartInputFile& exr) {
    std::vector<std::string> all;
    for (int i = 0; i < exr.parts(); ++i) {
        const Imf::Header& part = exr.header(i);
        const std::string name = name_of(part), before = exr.parts() > 1 && !name.empty() ? name + "." : "";
        const auto own = choose(part.channels(), "");
        if (!before.empty() && choose_of_part(part.channels())) all.push_back(name);
        for (const std::string& layer : layers_in(part.channels())) {
            if (layer != name) all.push_back(before + layer);
        }
        for (const std::string& channel : channels_of_layer(part.channels(), "")) {
            if (!own || !own->uses(channel)) all.push_back(before + channel);
        }
    }
    return all;
}

}  // namespace qx::pictures
