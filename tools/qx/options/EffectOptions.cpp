// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/EffectOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>

#include "scene/SceneValues.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

/// Gives one key the value that a text tells.
class Taker {
public:
    Taker(std::string option, const std::string& text) : option_(std::move(option)), text_(text) {}

    void operator()(const scene::NumbersKey& key) const {
        std::visit([&](auto* track) { take_numbers(key, *track); }, key.to);
    }
    void operator()(const scene::WholeKey& key) const { *key.to = whole_number(option_, text_, key.least, key.most); }
    void operator()(const scene::ChoiceKey& key) const { *key.to = choice(option_, text_, key.words); }
    void operator()(const scene::FlagKey& key) const { *key.to = flag(option_, text_); }
    void operator()(const scene::ColourKey& key) const {
        const auto c = real_numbers(option_, text_, "a colour R,G,B or R,G,B,A", 3, 4, 0, 1);
        *key.to = {c.size() == 4 ? c[3] : 1, c[0], c[1], c[2]};
    }
    void operator()(const scene::TextKey& key) const {
        value_of(option_, [&] { key.read(text_); });
    }
    void operator()(const scene::DocumentKey& key) const { *key.to = {text_, scene::text_of_file(text_)}; }
    void operator()(const scene::PictureKey& key) const {
        *key.to = file_named(text_);
        (*key.to)->is_data = key.is_data;
    }
    void operator()(const scene::ListKey&) const {}

private:
    static const char* form_of(std::size_t fewest, std::size_t most) {
        return most == 1 ? "a number" : fewest == 1 ? "one or two numbers" : "two numbers";
    }
    template <std::size_t N> void take_numbers(const scene::NumbersKey& key, scene::Track<N>& track) const {
        const auto numbers = real_numbers(option_, text_, form_of(key.fewest, N), key.fewest, N, key.least, key.most);
        typename scene::Track<N>::Value value;
        for (std::size_t i = 0; i < N; ++i) value[i] = numbers[std::min(i, numbers.size() - 1)];
        track = scene::Track<N>(value);
    }
    const std::string option_;
    const std::string& text_;
};

}  // namespace

EffectOptions::EffectOptions(CLI::App& command, const scene::Keys& keys, const char* group, const char* left_out)
    : command_(command) {
    for (const scene::Key& key : keys) {
        const bool list = std::holds_alternative<scene::ListKey>(key.kind);
        if (list || (left_out != nullptr && std::strcmp(key.name, left_out) == 0)) continue;
        const std::string name = std::string("--") + key.name;
        CLI::Option* added = key.value == nullptr
                                 ? command.add_flag(name, key.help)
                                 : command.add_option(name, key.help)->type_name(key.value)->expected(1);
        added_.emplace_back(added->take_all()->group(group), key.name);
    }
}

bool EffectOptions::has(const CLI::Option* option) const {
    return std::any_of(added_.begin(), added_.end(), [&](const auto& one) { return one.first == option; });
}

EffectOptions::Texts EffectOptions::texts() const {
    Texts texts;
    for (const auto& [option, name] : added_) {
        for (const std::string& text : option->results()) texts.emplace_back(option, text);
    }
    return texts;
}

void EffectOptions::read(const Texts& texts, const scene::Keys& keys) const {
    for (const auto& [option, text] : texts) {
        for (const auto& [added, name] : added_) {
            if (added != option) continue;
            for (const scene::Key& key : keys) {
                if (key.name == name) read_key(key, "--" + name, text);
            }
        }
    }
}

void read_key(const scene::Key& key, const std::string& option, const std::string& text) {
    std::visit(Taker(option, text), key.kind);
}

void settle(scene::Effect& effect) {
    try {
        effect.settle();
    } catch (const scene::BadText& bad) {
        throw WrongUsage(std::string("--") + bad.what());
    }
}

scene::SceneFile file_named(const std::string& path) {
    scene::SceneFile file;
    file.name = scene::FramePattern::plain(path);
    return file;
}

}  // namespace qx::tool
