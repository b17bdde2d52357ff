// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Modes.h"

#include <algorithm>
#include <charconv>

#include "QX/compositing/QX_CompositeMode.h"
#include "tools/qx/Messages.h"

namespace qx::tool {
namespace {

/// Insertions, deletions and exchanges that make one word of the other.
std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t exchange = diagonal + (a[i - 1] != b[j - 1] ? 1 : 0);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, exchange});
        }
    }
    return row[b.size()];
}

std::string plain_name(std::string text) {
    for (char& c : text) c = static_cast<char>(c == '-' ? '_' : c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text.rfind("xfer_", 0) == 0 ? text.substr(5) : text;
}

const ModeName& nearest(const std::string& name) {
    const auto farther = [&](const ModeName& a, const ModeName& b) {
        return edit_distance(name, a.name) < edit_distance(name, b.name);
    };
    return *std::min_element(all_modes().begin(), all_modes().end(), farther);
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
        throw WrongUsage("--mode " + text + ": mode numbers are -3, -2 and 0 to 40");
    }
    const std::string name = plain_name(text);
    for (const ModeName& mode : all_modes()) {
        if (name == mode.name) return mode.number;
    }
    throw WrongUsage("--mode " + text + ": no such mode; the nearest is " + nearest(name).name);
}

}  // namespace qx::tool
