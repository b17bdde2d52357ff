// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/EffectArgument.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>

#include "scene/Words.h"
#include "tools/qx/options/EffectOptions.h"
#include "tools/qx/options/Options.h"

namespace qx::tool {
namespace {

/// Parts between colons.
std::vector<std::string> parts_of(const std::string& text) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == ':') {
            parts.back() += text[++i];
        } else if (text[i] == ':') {
            parts.emplace_back();
        } else {
            parts.back() += text[i];
        }
    }
    return parts;
}

std::unique_ptr<scene::Effect> named(const std::string& option, const std::string& name, host::EffectFolders& folders) {
    std::vector<std::string> known = folders.names();
    for (const scene::EffectKind& kind : scene::effect_kinds()) {
        if (name == kind.name) return kind.make();
        known.emplace_back(kind.name);
    }
    if (name.find('/') != std::string::npos || folders.has(name)) return folders.find_or_load(name);
    throw WrongUsage(option + " " + name + ": no such effect" + scene::suggestion(name, known, "see qx effects"));
}

const scene::Key& key_named(const std::string& option, const std::string& name, const scene::Keys& keys) {
    std::vector<std::string> known;
    for (const scene::Key& key : keys) {
        if (std::holds_alternative<scene::ListKey>(key.kind)) continue;
        if (name == key.name) return key;
        known.emplace_back(key.name);
    }
    throw WrongUsage(option + ": " + name + ": no such parameter" + scene::suggestion(name, known));
}

}  // namespace

void add_effect_folders_option(CLI::App& command, std::vector<std::string>& folders) {
    command.add_option("--effects", folders, "folder of effects, before those of QX_EFFECT_PATH")
        ->type_name("FOLDER")
        ->expected(1)
        ->take_all();
}

std::shared_ptr<const scene::Effect> effect_of(const std::string& option, const std::string& text,
                                               host::EffectFolders& folders) {
    return effect_argument(option, text, folders).effect;
}

EffectArgument effect_argument(const std::string& option, const std::string& text, host::EffectFolders& folders) {
    const std::vector<std::string> parts = parts_of(text);
    EffectArgument told{parts.front(), named(option, parts.front(), folders), {}};
    const std::string about = option + " " + parts.front();
    const scene::Keys keys = told.effect->keys();
    std::set<std::string> known;
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        const std::size_t equals = part->find('=');
        const std::string name = part->substr(0, equals);
        const scene::Key& key = key_named(about, name, keys);
        if (!known.insert(name).second) throw WrongUsage(about + ": " + name + " is told twice");
        const bool is_switch = std::holds_alternative<scene::FlagKey>(key.kind);
        if (equals == std::string::npos && !is_switch)
            throw WrongUsage(about + ": " + name + " needs a value: " + name + "=" + key.value);
        told.values.emplace_back(name, equals == std::string::npos ? "true" : part->substr(equals + 1));
        read_key(key, about + ": " + name, told.values.back().second);
    }
    try {
        told.effect->settle();
    } catch (const scene::BadText& bad) {
        throw WrongUsage(about + ": " + bad.what());
    }
    return told;
}

}  // namespace qx::tool
