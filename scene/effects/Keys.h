// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "scene/Keyframes.h"
#include "scene/SceneFile.h"

// How an effect tells what it can be told: its keys with their bounds, words and help, each once. A command line and a
// scene file fill them in.
namespace qx::scene {

/// Numbers that may move in a scene; where one is enough, it stands for all.
struct NumbersKey {
    std::size_t fewest;
    double least, most;
    std::variant<Track<1>*, Track<2>*> to;
};
struct WholeKey {
    int least, most;
    int* to;
};
struct ChoiceKey {
    std::span<const char* const> words;
    int* to;
};
struct FlagKey {
    bool* to;
};
/// Red, green, blue and perhaps alpha, from 0 to 1.
struct ColourKey {
    std::array<double, 4>* to;  ///< alpha first
};
/// A text that `read` makes something of. It throws BadText.
struct TextKey {
    std::function<void(const std::string& text)> read;
};
/// A text file.
struct Document {
    std::string name, contents;
};
struct DocumentKey {
    Document* to;
};
/// A picture, or in a scene a sequence of them.
struct PictureKey {
    std::optional<SceneFile>* to;
    bool is_data = false;  ///< a mask, whose values are no colours
};

struct Key;
using Keys = std::vector<Key>;
/// Things of one kind; `next` makes one more and gives its keys.
struct ListKey {
    std::function<Keys()> next;
};

struct Key {
    const char* name;   ///< in kebab case; an option has -- before it
    const char* value;  ///< what stands for the value in a help text; of a flag null
    const char* help;
    std::variant<NumbersKey, WholeKey, ChoiceKey, FlagKey, ColourKey, TextKey, DocumentKey, PictureKey, ListKey> kind;
};

}  // namespace qx::scene
