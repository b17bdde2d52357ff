// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/sheet/Font.h"

#include <algorithm>

#include "QX/drawing/QX_DebugFont.h"
#include "pictures/Picture.h"

namespace qx::tool {
namespace {

static_assert(kGlyphAdvance == kDebugGlyphWidth);

void fill_square(QX_World& world, int x, int y, int side, const QX_Pixel8& colour) {
    for (int row = std::max(y, 0); row < std::min(y + side, world.height); ++row) {
        auto* pixels = pictures::row_of<QX_Pixel8>(world, row);
        for (int column = std::max(x, 0); column < std::min(x + side, world.width); ++column) pixels[column] = colour;
    }
}

/// Letters begin in the second row of their cells, which stands on y here.
void draw_glyph(QX_World& world, int x, int y, int scale, const QX_Pixel8& colour, char character) {
    for (int row = 1; row < kDebugGlyphHeight; ++row) {
        for (int column = 0; column < kDebugGlyphWidth; ++column) {
            if (!debug_font_covers(character, column, row)) continue;
            fill_square(world, x + column * scale, y + (row - 1) * scale, scale, colour);
        }
    }
}

}  // namespace

void draw_text(QX_World& world, int x, int y, int scale, const QX_Pixel8& colour, const std::string& text) {
    for (const char character : text) {
        draw_glyph(world, x, y, scale, colour, character);
        x += kGlyphAdvance * scale;
    }
}

}  // namespace qx::tool
