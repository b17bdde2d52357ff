// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scene/text/Module.h"

// Text by the module that sets it, which is loaded when the first text is met.
namespace qx::scene {

struct TextChoice {
    std::string text, font;  ///< the font's file
    double size = 0, line_height = 0, width = 0;
    text::Align align = text::Align::left;
};

/// A text in lines. One thread at a time.
class SetText {
public:
    /// Throws pictures::Failure in the name of the font.
    explicit SetText(const TextChoice& choice);
    const text::Box& box() const { return box_; }
    const std::string& note() const { return note_; }  ///< what the font lacks; empty where there is nothing
    /// Of each pixel of the box, row by row, 0 to 255. Throws pictures::Failure.
    std::vector<unsigned char> coverage() const;

private:
    std::string font_, note_;
    text::Box box_{};
    std::unique_ptr<void, void (*)(void*)> text_;
};

/// The file of a font that the machine has. Throws BadText, which names the nearest one.
std::string file_of_font(const std::string& name);

}  // namespace qx::scene
