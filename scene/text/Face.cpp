// SPDX-License-Identifier: Apache-2.0
#include "scene/text/Face.h"

#include <hb-ft.h>

#include <cmath>
#include <new>

#include FT_OUTLINE_H

#include "scene/text/Failure.h"

namespace qx::text {
namespace {

constexpr FT_Int32 kLoad = FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;

void must(FT_Error error, const char* words) {
    if (error == FT_Err_Out_Of_Memory) throw std::bad_alloc();
    if (error != 0) throw Failure(words);
}

FT_Library new_library() {
    FT_Library library = nullptr;
    must(FT_Init_FreeType(&library), "FreeType cannot be started");
    return library;
}

FT_Face new_face(FT_Library library, const std::string& file) {
    FT_Face face = nullptr;
    must(FT_New_Face(library, file.c_str(), 0, &face), "is no font that can be read");
    return face;
}

}  // namespace

Face::Face(const std::string& file, double size)
    : size_(size),
      library_(new_library(), [](FT_Library library) { FT_Done_FreeType(library); }),
      face_(new_face(library_.get(), file), [](FT_Face face) { FT_Done_Face(face); }),
      font_(nullptr, hb_font_destroy) {
    if (!FT_IS_SCALABLE(face_.get())) throw Failure("has no outlines");
    must(FT_Set_Char_Size(face_.get(), 0, std::lround(size * 64), 72, 72), "cannot be had at this size");
    font_.reset(hb_ft_font_create(face_.get(), nullptr));
    if (font_.get() == hb_font_get_empty()) throw std::bad_alloc();
    hb_ft_font_set_load_flags(font_.get(), kLoad);
}

Line Face::shape(const std::string& text) const {
    const Owner<hb_buffer_t> buffer(hb_buffer_create(), hb_buffer_destroy);
    hb_buffer_add_utf8(buffer.get(), text.data(), static_cast<int>(text.size()), 0, static_cast<int>(text.size()));
    hb_buffer_guess_segment_properties(buffer.get());
    hb_buffer_set_language(buffer.get(), hb_language_from_string("en", -1));  // not that of the machine
    hb_shape(font_.get(), buffer.get(), nullptr, 0);
    if (!hb_buffer_allocation_successful(buffer.get())) throw std::bad_alloc();
    unsigned count = 0;
    const hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer.get(), &count);
    const hb_glyph_position_t* const places = hb_buffer_get_glyph_positions(buffer.get(), &count);
    Line line;
    for (unsigned i = 0; i < count; ++i) {
        line.glyphs.push_back({infos[i].codepoint, line.width + places[i].x_offset, places[i].y_offset});
        line.width += places[i].x_advance;
        if (infos[i].codepoint == 0) line.lacks.push_back(infos[i].cluster);
    }
    return line;
}

FT_GlyphSlot Face::outline(const Glyph& glyph, long x, long y) const {
    must(FT_Load_Glyph(face_.get(), glyph.number, kLoad), "has a damaged glyph");
    const FT_GlyphSlot slot = face_->glyph;
    if (slot->format != FT_GLYPH_FORMAT_OUTLINE) throw Failure("has a glyph without an outline");
    FT_Outline_Translate(&slot->outline, x, y);
    return slot;
}

}  // namespace qx::text
