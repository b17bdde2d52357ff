// SPDX-License-Identifier: Apache-2.0
#include "scene/Modes.h"

#include <charconv>

#include "QX/compositing/QX_CompositeMode.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

/// What spellings of a name have in common.
std::string bare(const std::string& text) {
    std::string name;
    for (const char c : text) {
        if (c == '-' || c == '_' || c == ' ') continue;
        name += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    if (name.rfind("xfer", 0) == 0) name.erase(0, 4);
    if (const auto at = name.find("color"); at != std::string::npos) name.insert(at + 4, 1, 'u');
    return name;
}

const Mode* mode_named(const std::string& text) {
    const std::string name = bare(text);
    for (const Mode& mode : all_modes()) {
        if (name == bare(mode.name)) return &mode;
    }
    for (const Mode& mode : all_modes()) {
        for (const char* alias : mode.aliases) {
            if (name == bare(alias)) return &mode;
        }
    }
    return nullptr;
}

std::vector<std::string> all_names() {
    std::vector<std::string> names;
    for (const Mode& mode : all_modes()) names.emplace_back(mode.name);
    for (const Mode& mode : all_modes()) names.insert(names.end(), mode.aliases.begin(), mode.aliases.end());
    return names;
}

}  // namespace

int mode_number(const std::string& text) {
    int number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec == std::errc() && parsed.ptr == text.data() + text.size()) {
        if (QX_IsTransferMode(number)) return number;
        throw BadText(text, "mode numbers are -3, -2 and 0 to " + std::to_string(kQX_LastMode));
    }
    if (const Mode* mode = mode_named(text)) return mode->number;
    throw BadText(text, "no such mode" + suggestion(text, all_names(), "see qx modes --list"));
}

}  // namespace qx::scene
