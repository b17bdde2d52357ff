// SPDX-License-Identifier: Apache-2.0
#include "scene/Modes.h"

#include <charconv>

#include "QX/compositing/QX_CompositeMode.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

std::string plain_name(std::string text) {
    for (char& c : text) c = static_cast<char>(c == '-' ? '_' : c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text.rfind("xfer_", 0) == 0 ? text.substr(5) : text;
}

std::string nearest(const std::string& name) {
    std::vector<std::string> names;
    for (const ModeName& mode : all_modes()) names.emplace_back(mode.name);
    return nearest_word(name, names);
}

}  // namespace

const std::vector<ModeName>& all_modes() {
    static const std::vector<ModeName> modes = {
#define X(number, name) {number, #name},
        QX_TRANSFER_MODES(X)
#undef X
    };
    return modes;
}

int mode_number(const std::string& text) {
    int number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec == std::errc() && parsed.ptr == text.data() + text.size()) {
        if (QX_IsTransferMode(number)) return number;
        throw BadText(text, "mode numbers are -3, -2 and 0 to " + std::to_string(kQX_LastMode));
    }
    const std::string name = plain_name(text);
    for (const ModeName& mode : all_modes()) {
        if (name == mode.name) return mode.number;
    }
    throw BadText(text, "no such mode; the nearest is " + nearest(name));
}

}  // namespace qx::scene
