// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"

namespace qx {

inline constexpr int kDebugGlyphWidth = 6, kDebugGlyphHeight = 10;

/// A small font: ten bytes for each character of ASCII, the bottom row first. Bit 128 is the left column, and the six
/// highest bits are used. What is no visible character is blank.
struct DebugFont {
    std::uint8_t glyph[128][kDebugGlyphHeight];
};
QX_EXPORT extern const DebugFont debug_font;

/// True where the glyph of a character covers its cell; `row` counts from the top.
inline bool debug_font_covers(char character, int column, int row) {
    const auto code = static_cast<signed char>(character);
    if (code < 0) return false;
    return (debug_font.glyph[code][kDebugGlyphHeight - 1 - row] & 128 >> column) != 0;
}

}  // namespace qx
