// SPDX-License-Identifier: Apache-2.0
// Values of scene files that stand in several places: numbers that may move, files.
#pragma once

#include <algorithm>
#include <string>

#include "scene/Keyframes.h"
#include "scene/SceneFile.h"
#include "scene/SceneNode.h"

namespace qx::scene {

inline constexpr std::size_t kMostItems = 100'000;
inline constexpr const char* kBetweenWords[] = {"linear", "smooth"};

template <std::size_t N>
typename Track<N>::Value track_value(const SceneNode& node, std::size_t fewest, double least, double most) {
    const auto numbers = node.numbers(fewest, N, least, most);
    typename Track<N>::Value value;
    for (std::size_t i = 0; i < N; ++i) value[i] = numbers[std::min(i, numbers.size() - 1)];  // one stands for all
    return value;
}

template <std::size_t N>
std::vector<typename Track<N>::Key> track_keys(const SceneNode& node, std::size_t fewest, double least, double most) {
    node.check_keys({"keys", "interpolation"});
    const auto whole = node.find("interpolation");
    const auto common = static_cast<Between>(whole ? whole->choice(kBetweenWords) : 0);
    std::vector<typename Track<N>::Key> keys;
    for (const SceneNode& item : node.need("keys").items(1, kMostItems)) {
        item.check_keys({"frame", "value", "interpolation"});
        const SceneNode frame = item.need("frame");
        const double at = frame.number(-kMostFrame, kMostFrame);
        if (!keys.empty() && at <= keys.back().frame) frame.fault("does not come after the key before");
        const auto own = item.find("interpolation");
        keys.push_back({at, track_value<N>(item.need("value"), fewest, least, most),
                        own ? static_cast<Between>(own->choice(kBetweenWords)) : common});
    }
    return keys;
}

/// Numbers that may move: a value, or an object with keys.
/// @param fewest  numbers that a value has at least
template <std::size_t N>
void read_track(const SceneNode& node, const char* key, std::size_t fewest, double least, double most, Track<N>& to) {
    const auto found = node.find(key);
    if (!found) return;
    if (found->is_object()) {
        to = Track<N>(track_keys<N>(*found, fewest, least, most));
    } else {
        to = Track<N>(track_value<N>(*found, fewest, least, most));
    }
}

/// A name, an object of a name, an offset and a profile, or one of a clip.
/// @param folder  that names count from
SceneFile read_file(const SceneNode& node, const std::string& folder);
/// The same of a mask, which has no profile.
SceneFile read_data_file(const SceneNode& node, const std::string& folder);
/// A profile's name, or the path of an ICC file.
Profile read_profile(const SceneNode& node, const std::string& folder);

/// Throws pictures::Failure.
std::string text_of_file(const std::string& path);

}  // namespace qx::scene
