// SPDX-License-Identifier: Apache-2.0
#include "scene/text/Layout.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include FT_OUTLINE_H

#include "scene/text/Failure.h"

namespace qx::text {
namespace {

/// Parts between signs.
std::vector<std::string> parts_of(const std::string& text, char sign) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == sign) {
            parts.emplace_back();
        } else if (c != '\r') {
            parts.back() += c;
        }
    }
    return parts;
}

/// The number of a character of UTF-8, as people write it.
std::string name_of(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0u;
    };
    const unsigned first = byte(0);
    const std::size_t more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    unsigned number = more == 0 ? first : first & (0x3Fu >> more);
    for (std::size_t i = 1; i <= more; ++i) number = number << 6 | (byte(i) & 0x3F);
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", number);
    return name;
}

}  // namespace

Layout::Layout(const Settings& settings) : face_(settings.font, settings.size) {
    break_lines(settings);
    place_lines(settings);
}

void Layout::add_line(const std::string& text) {
    Placed placed{.line = face_.shape(text)};
    if (note_.empty() && !placed.line.lacks.empty()) {
        note_ = "has no glyph for " + name_of(text, placed.line.lacks.front());
    }
    lines_.push_back(std::move(placed));
}

/// A word that is longer than a line has one for itself.
void Layout::break_lines(const Settings& settings) {
    for (const std::string& paragraph : parts_of(settings.text, '\n')) {
        if (settings.width <= 0) {
            add_line(paragraph);
            continue;
        }
        std::string line;
        bool is_first = true;
        for (const std::string& word : parts_of(paragraph, ' ')) {
            const std::string longer = is_first ? word : line + " " + word;
            const bool fits = is_first || static_cast<double>(face_.shape(longer).width) <= settings.width * 64;
            if (!fits) add_line(line);
            line = fits ? longer : word;
            is_first = false;
        }
        add_line(line);
    }
}

void Layout::place_lines(const Settings& settings) {
    long widest = 0;
    for (const Placed& placed : lines_) widest = std::max(widest, placed.line.width);
    const double width = settings.width > 0 ? settings.width : static_cast<double>(widest) / 64;
    const double step = settings.line_height > 0 ? settings.line_height * settings.size : face_.distance();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const double room = width * 64 - static_cast<double>(lines_[i].line.width);
        const double left = settings.align == Align::left ? 0 : settings.align == Align::right ? room : room / 2;
        const double baseline = face_.ascender() + static_cast<double>(i) * step;
        if (std::abs(left) > 64.0 * settings.most_side || baseline > settings.most_side) {
            throw Failure("is too large for a picture");
        }
        lines_[i].left = std::lround(left);
        lines_[i].baseline = static_cast<int>(std::lround(baseline));
    }
    find_box(settings, width, lines_.back().baseline - face_.descender());
}

template <class Work> void Layout::each_glyph(const Work& work) const {
    for (const Placed& placed : lines_) {
        for (const Glyph& glyph : placed.line.glyphs) {
            const long x = placed.left + glyph.x, whole = x >> 6;
            work(face_.outline(glyph, x - whole * 64, glyph.y), static_cast<int>(whole), placed.baseline);
        }
    }
}

void Layout::find_box(const Settings& settings, double width, double height) {
    long left = 0, top = 0, right = std::lround(std::ceil(width)), bottom = std::lround(std::ceil(height));
    each_glyph([&](FT_GlyphSlot slot, int x, int y) {
        if (slot->outline.n_points == 0) return;
        FT_BBox ink;
        FT_Outline_Get_CBox(&slot->outline, &ink);
        left = std::min(left, x + (ink.xMin >> 6));
        right = std::max(right, x + ((ink.xMax + 63) >> 6));
        top = std::min(top, y - ((ink.yMax + 63) >> 6));
        bottom = std::max(bottom, y - (ink.yMin >> 6));
    });
    right = std::max(right, left + 1);
    bottom = std::max(bottom, top + 1);
    if (right - left > settings.most_side || bottom - top > settings.most_side) {
        throw Failure("is too large for a picture");
    }
    box_ = {static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
            static_cast<int>(bottom - top)};
}

/// Glyphs that meet within a pixel cover the sum of both.
void Layout::draw(unsigned char* coverage, std::ptrdiff_t rowbytes) const {
    each_glyph([&](FT_GlyphSlot slot, int x, int y) {
        if (slot->outline.n_points == 0) return;
        const FT_Error error = FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL);
        if (error == FT_Err_Out_Of_Memory) throw std::bad_alloc();
        if (error != 0) throw Failure("has a glyph that cannot be drawn");
        const FT_Bitmap& bitmap = slot->bitmap;
        const int left = x + slot->bitmap_left - box_.x, top = y - slot->bitmap_top - box_.y;
        for (int row = 0; row < static_cast<int>(bitmap.rows); ++row) {
            for (int column = 0; column < static_cast<int>(bitmap.width); ++column) {
                const int to_x = left + column, to_y = top + row;
                if (to_x < 0 || to_y < 0 || to_x >= box_.width || to_y >= box_.height) continue;
                unsigned char& to = coverage[to_y * rowbytes + to_x];
                to = static_cast<unsigned char>(std::min(255, to + bitmap.buffer[row * bitmap.pitch + column]));
            }
        }
    });
}

}  // namespace qx::text
