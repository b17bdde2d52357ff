// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include <hb.h>

#include <memory>
#include <string>
#include <vector>

namespace qx::text {

/// A glyph of a line, in 64ths of a pixel from the begin of its baseline, y upwards.
struct Glyph {
    unsigned number;
    long x, y;
};

struct Line {
    std::vector<Glyph> glyphs;
    long width = 0;                 ///< in 64ths of a pixel
    std::vector<unsigned> lacks{};  ///< characters that the font has no glyph for
};

/// A font at a size, not hinted: glyphs are the outlines that their makers drew.
class Face {
public:
    /// Throws Failure.
    Face(const std::string& file, double size);

    // In pixels, y upwards.
    double ascender() const { return in_pixels(face_->ascender); }
    double descender() const { return in_pixels(face_->descender); }
    double distance() const { return in_pixels(face_->height); }

    /// Glyphs of one line of text of one direction, with kerning and ligatures.
    Line shape(const std::string& text) const;
    /// Loads a glyph's outline, moved by parts of a pixel, into the face's slot.
    FT_GlyphSlot outline(const Glyph& glyph, long x, long y) const;

private:
    double in_pixels(long units) const {
        return static_cast<double>(units) * size_ / static_cast<double>(face_->units_per_EM);
    }
    template <class Thing> using Owner = std::unique_ptr<Thing, void (*)(Thing*)>;

    double size_;
    Owner<FT_LibraryRec_> library_;
    Owner<FT_FaceRec_> face_;
    Owner<hb_font_t> font_;
};

}  // namespace qx::text
