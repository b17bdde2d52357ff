// SPDX-License-Identifier: Apache-2.0
// Text, by the module that sets it and a font of the machine.
#include <ft2build.h>

#include "tests/scene/SceneFolder.h"
#include FT_FREETYPE_H

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

constexpr const char* kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

class Text : public SceneFolder {
protected:
    /// @param words  more keys, in front of which a comma stands
    static std::string text(const std::string& text, const std::string& words = "") {
        return "{'text': '" + text + "', 'font': '" + kFont + "', 'size': 20" + words + "}";
    }
    /// Columns from the first to behind the last that is covered, in a frame that is large enough.
    std::pair<int, int> columns(const std::string& layer, int first_row = 0, int end_row = 200) const {
        const Picture picture = large(layer);
        std::pair<int, int> found{picture.world->width, 0};
        for (int y = first_row; y < end_row; ++y) {
            for (int x = 0; x < picture.world->width; ++x) {
                if (channels(picture, x, y)[0] == 0) continue;
                found = {std::min(found.first, x), std::max(found.second, x + 1)};
            }
        }
        return found;
    }
    Picture large(const std::string& layer, const std::string& more = "") const {
        put_quoted("large.json", "{'size': [300, 200]" + more + ", 'layers': [" + layer + "]}");
        return frame(read_scene(folder / "large.json"));
    }
    int width(const std::string& words) const {
        const auto [first, end] = columns(text(words));
        return end - first;
    }
};

/// The letter I of this font is a rectangle, whose corners the font's file tells: how far it covers a pixel is a
/// product of two lengths.
TEST_F(Text, CoverageIsTheAreaOfTheOutline) {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    ASSERT_EQ(FT_Init_FreeType(&library), 0);
    ASSERT_EQ(FT_New_Face(library, kFont, 0, &face), 0);
    ASSERT_EQ(FT_Load_Char(face, 'I', FT_LOAD_NO_SCALE), 0);
    ASSERT_EQ(face->glyph->outline.n_points, 4);
    double left = 1e9, right = 0, low = 1e9, high = 0;
    const double scale = 37.0 / face->units_per_EM;
    for (int i = 0; i < 4; ++i) {
        const FT_Vector& point = face->glyph->outline.points[i];
        const double x = double(point.x) * scale, y = double(point.y) * scale;
        left = std::min(left, x), right = std::max(right, x);
        low = std::min(low, y), high = std::max(high, y);
    }
    const double baseline = std::round(face->ascender * scale);
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    const Picture found =
        large("{'text': 'I', 'font': '" + std::string(kFont) + "', 'size': 37, 'colour': [1, 0.5, 0]}");
    const auto overlap = [](double from, double to, int pixel) {
        return std::max(0.0, std::min(to, pixel + 1.0) - std::max(from, pixel + 0.0));
    };
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 30; ++x) {
            const double area = overlap(left, right, x) * overlap(baseline - high, baseline - low, y);
            const List pixel = channels(found, x, y);
            // Points are rounded to 64ths of a pixel: at most 4 of 255 a side.
            ASSERT_NEAR(pixel[0], 255 * area, 5) << x << ", " << y;
            if (pixel[0] == 0) continue;
            ASSERT_EQ((List{pixel[1], pixel[2], pixel[3]}), (List{255, 128, 0})) << x << ", " << y;
        }
    }
}

TEST_F(Text, PairsAreKernedAndCharactersAreOfSeveralBytes) {
    EXPECT_LT(width("AV"), width("AI") - width("I") + width("V") + 1) << "V moves under the arm of A";
    EXPECT_LT(width("AVAVAVAV"), 4 * (width("AA") + width("VV")) / 2);
    EXPECT_EQ(width("\xC3\x84"), width("A")) << "two bytes are one letter, with dots";
    EXPECT_FALSE(same_pixels(large(text("\xC3\x84")), large(text("A"))));
}

TEST_F(Text, LinesBreakAndAlign) {
    EXPECT_TRUE(same_pixels(large(text("one two three four", ", 'width': 100")),
                            large(text("one two\\nthree four", ", 'width': 100"))));
    EXPECT_TRUE(same_pixels(large(text("one two")), large(text("one two", ", 'width': 250"))));
    const auto first = columns(text("I\\nwide")), line = columns(text("I\\nwide"), 0, 20);
    for (const auto& [align, shift] : {std::pair{"left", 0.0}, {"center", 0.5}, {"right", 1.0}}) {
        const std::string words = std::string(", 'width': 120, 'align': '") + align + "'";
        const auto found = columns(text("I", words)), left = columns(text("I", ", 'width': 120"));
        const auto alone = columns("{'text': 'I', 'font': '" + std::string(kFont) + "', 'size': 20}");
        EXPECT_EQ(left, alone);
        EXPECT_NEAR(found.first - left.first, shift * (120 - 20 * 0.295), 1.01) << align;  // of an advance of 0.295 ems
    }
    EXPECT_LT(line.second, first.second);
    const auto second_row = [&](const std::string& words) {
        const Picture picture = large(text("\\nI", words));
        for (int y = 0; y < 200; ++y) {
            for (int x = 0; x < 20; ++x) {
                if (channels(picture, x, y)[0] > 0) return y;
            }
        }
        return -1;
    };
    EXPECT_EQ(second_row(", 'line-height': 3") - second_row(", 'line-height': 1"), 40);
}

/// What reaches out of the box of the lines is there, and nothing moves by it.
TEST_F(Text, LiesWhereItsLinesBegin) {
    const Picture plain = large(text("Ij", ", 'line-height': 1"));
    const Picture moved = large("{'text': 'Ij', 'font': '" + std::string(kFont) +
                                "', 'size': 20, 'line-height': 1, 'transform': {'translate': [31, 17]}}");
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 60; ++x) EXPECT_EQ(channels(plain, x, y), channels(moved, x + 31, y + 17));
    }
}

TEST_F(Text, ColourMovesAndDepthsAgree) {
    put_quoted("moving.json", "{'size': [60, 40], 'layers': [{'mode': 'copy', 'text': 'Qx', 'font': '" +
                                  std::string(kFont) +
                                  "', 'size': 30, 'colour': {'keys': [{'frame': 0, 'value': [1, 0, 0]}, {'frame': 4, "
                                  "'value': [0, 0, 1, 0.5]}]}}]}");
    const Scene scene = read_scene(folder / "moving.json");
    SceneRender shared(scene, nullptr);
    Picture found[8];
    in_threads(8, [&](int i) { found[i] = shared.frame(i % 5, unwatched()); });
    for (int i = 0; i < 8; ++i) EXPECT_TRUE(same_pixels(found[i], frame(scene, i % 5))) << i;
    EXPECT_FALSE(same_pixels(found[0], found[4]));
    const Picture eight = large(text("Qx")), sixteen = large(text("Qx"), ", 'depth': 16");
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 60; ++x) {
            EXPECT_NEAR(channels(eight, x, y)[0] / 255, channels(sixteen, x, y)[0] / 32768, 1e-4);
        }
    }
}

TEST_F(Text, FontsHaveNamesAndLackGlyphs) {
    EXPECT_TRUE(same_pixels(large("{'text': 'Ab', 'font': 'DejaVu Sans', 'size': 20}"), large(text("Ab"))));
    EXPECT_TRUE(same_pixels(large("{'text': 'Ab', 'size': 20}"), large(text("Ab"))));
    EXPECT_FALSE(same_pixels(large("{'text': 'Ab', 'font': 'DejaVu Sans:bold', 'size': 20}"), large(text("Ab"))));
    const Scene scene = scene_of(text("a\xF0\x9F\xA6\x84"));  // an animal
    Names notes;
    SceneRender render(scene, [&](const std::string& note) { notes.push_back(note); });
    render.frame(1, unwatched());
    render.frame(2, unwatched());
    EXPECT_EQ(notes, Names{scene.file + ": /layers/0: the font has no glyph for U+1F984"});
}

TEST_F(Text, WrongUses) {
    put("no.ttf", "no font");
    expect_faults(
        {"{'text': ''} => /layers/0/text is an empty text", "{'text': 'a'} => /layers/0/size is missing",
         "{'text': 'a', 'size': 0} => /layers/0/size is not a number from 1 to 10000",
         "{'text': 'a', 'size': 9, 'font': 'none.ttf'} => none.ttf: no such file",
         "{'text': 'a', 'size': 9, 'font': 'no.ttf'} => no.ttf: is no font that can be read",
         "{'text': 'a', 'size': 9, 'font': 'DejaVoo'} => /layers/0/font DejaVoo: no such font; the nearest is",
         "{'text': 'a', 'size': 9, 'align': 'middle'} => align middle: not one of left, center, right",
         "{'text': 'a', 'size': 9, 'width': 0} => /layers/0/width is not a number from 1 to 30000",
         "{'text': 'a', 'size': 9, 'solid': [0, 0, 0]} => /layers/0/text excludes solid",
         text(std::string(30000, 'W')) + " => is too large for a picture"});
}

}  // namespace
