// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "QX/indep/QX_Pixel.h"
#include "QX/world/QX_World.h"

namespace qx::tool {

/// Of a letter without what hangs below the line, and from a letter to the next.
inline constexpr int kGlyphHeight = 7, kGlyphAdvance = 6;

// Sheets of pictures with words below each.
inline constexpr int kCaptionScale = 2, kCaptionHeight = kGlyphHeight * kCaptionScale + 10;
inline constexpr QX_Pixel8 kPaper{255, 32, 32, 36}, kInk{255, 235, 235, 235};

/// Draws ASCII text in the library's own font into an 8-bit world; other characters are blanks.
/// @param x  left edge; what does not fit is left out
/// @param y  top
void draw_text(QX_World& world, int x, int y, int scale, const QX_Pixel8& colour, const std::string& text);

}  // namespace qx::tool
