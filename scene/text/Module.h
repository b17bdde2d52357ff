// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// What scenes ask of the module that sets text. The module links FreeType, HarfBuzz and fontconfig, the command does
/// not: it loads the module when the first text is met, so that start-up of all else is free of them.
namespace qx::text {

inline constexpr int kVersion = 1;
inline constexpr const char* kFileName = "libqxtext.so";
inline constexpr const char* kEntryName = "qx_text_routines";

enum class Align : int { left, centre, right };

struct Settings {
    const char* text;    ///< UTF-8, with line feeds
    const char* font;    ///< a file
    double size;         ///< pixels of an em
    double line_height;  ///< from line to line, in `size`; 0: as the font tells
    double width;        ///< at which lines wrap between words; 0: they do not
    Align align;
    int most_side;  ///< of the picture that becomes of it
};

/// The picture of a text: the box of its lines and what of its glyphs reaches out of that.
struct Box {
    int x, y;  ///< where its left top corner lies, seen from that of the lines
    int width, height;
};

/// Room for the words of a failure, or of a note where there was none.
struct Words {
    char text[512];
};

struct Routines {
    int version;
    /// The file of a font by its name, such as "DejaVu Sans:bold". @return null with words where there is none; else to
    /// be freed by `free_name`
    char* (*find_font)(const char* name, Words* words);
    void (*free_name)(char* name);

    /// Sets a text. @return null with words for what cannot be set; words beside a text tell what it lacks
    void* (*set)(const Settings* settings, Box* box, Words* words);
    /// Adds its coverage, 0 to 255, to that of a box of zeros.
    bool (*draw)(void* text, unsigned char* coverage, std::ptrdiff_t rowbytes, Words* words);
    void (*drop)(void* text);
};

/// Type of the entry, which has C linkage.
using Entry = const Routines* (*)();

}  // namespace qx::text
