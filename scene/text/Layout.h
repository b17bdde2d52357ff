// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "scene/text/Face.h"
#include "scene/text/Module.h"

namespace qx::text {

/// A text in lines, and the picture of it.
class Layout {
public:
    /// Throws Failure.
    explicit Layout(const Settings& settings);
    const Box& box() const { return box_; }
    const std::string& note() const { return note_; }  ///< what it lacks; empty where there is nothing
    void draw(unsigned char* coverage, std::ptrdiff_t rowbytes) const;

private:
    struct Placed {
        Line line;
        long left = 0;     ///< in 64ths of a pixel
        int baseline = 0;  ///< in whole pixels, where horizontal edges are sharpest
    };
    void break_lines(const Settings& settings);
    void add_line(const std::string& text);
    void place_lines(const Settings& settings);
    void find_box(const Settings& settings, double width, double height);
    /// Calls work(slot, x, y) for all glyphs: their outlines, within a pixel, and the pixel.
    template <class Work> void each_glyph(const Work& work) const;

    Face face_;
    std::vector<Placed> lines_;
    Box box_{};
    std::string note_;
};

}  // namespace qx::text
