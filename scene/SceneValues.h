// SPDX-License-Identifier: Apache-2.0
// Values of scene files that stand in several places: numbers that may move, files.
#pragma once

#include <algorithm>
#include <string>

#include "scene/Keyframes.h"
#include "scene/SceneFile.h"
#include "scene/SceneKeys.h"
#include "scene/SceneNode.h"

namespace qx::scene {

inline constexpr std::size_t kMostItems = 100'000;
inline constexpr const char* kBetweenWords[] = {"linear", "smooth", "hold"};

/// A word, or {"bezier": [x1, y1, x2, y2]}.
Ease read_ease(const SceneNode& node);

template <std::size_t N>
typename Track<N>::Value track_value(const SceneNode& node, std::size_t fewest, double least, double most) {
    const auto numbers = node.numbers(fewest, N, least, most);
    typename Track<N>::Value value;
    for (std::size_t i = 0; i < N; ++i) value[i] = numbers[std::min(i, numbers.size() - 1)];  // one stands for all
    return value;
}

/// @param read  makes a value of its node
template <std::size_t N, class Read>
std::vector<typename Track<N>::Key> track_keys(const SceneNode& node, const Read& read) {
    node.check_keys(kTrackKeys);
    const auto whole = node.find("interpolation");
    const Ease common = whole ? read_ease(*whole) : Ease{};
    std::vector<typename Track<N>::Key> keys;
    for (const SceneNode& item : node.need("keys").items(1, kMostItems)) {
        item.check_keys(kKeyKeys);
        const SceneNode frame = item.need("frame");
        const double at = frame.number(-kMostFrame, kMostFrame);
        if (!keys.empty() && at <= keys.back().frame) frame.fault("does not come after the key before");
        const auto own = item.find("interpolation");
        keys.push_back({at, read(item.need("value")), own ? read_ease(*own) : common});
    }
    return keys;
}

/// Numbers that may move: a value, or an object with keys.
/// @param fewest  numbers that a value has at least
template <std::size_t N> Track<N> track_of(const SceneNode& node, std::size_t fewest, double least, double most) {
    const auto read = [&](const SceneNode& value) { return track_value<N>(value, fewest, least, most); };
    if (!node.is_object()) return Track<N>(read(node));
    return Track<N>(track_keys<N>(node, read), least, most);
}
template <std::size_t N>
void read_track(const SceneNode& node, const char* key, std::size_t fewest, double least, double most, Track<N>& to) {
    if (const auto found = node.find(key)) to = track_of<N>(*found, fewest, least, most);
}

/// Red, green, blue and perhaps alpha, from 0 to 1, as alpha first.
std::array<double, 4> read_colour(const SceneNode& node);
/// A colour that may move.
Track<4> read_colour_track(const SceneNode& node);

/// A name, an object of a name, an offset and a profile, or one of a clip.
/// @param folder   that names count from
/// @param missing  what becomes of pictures that are not there
SceneFile read_file(const SceneNode& node, const std::string& folder, Missing missing = Missing::error);
/// The same of a mask, which has no profile.
SceneFile read_data_file(const SceneNode& node, const std::string& folder, Missing missing = Missing::error);
/// A profile's name, or the path of an ICC file.
Profile read_profile(const SceneNode& node, const std::string& folder);

/// Throws pictures::Failure.
std::string text_of_file(const std::string& path);

}  // namespace qx::scene
