// SPDX-License-Identifier: Apache-2.0
// What a result cannot hold is told, and what cannot be written leaves nothing behind.
#include <tiffio.h>

#include "pictures/Exr.h"
#include "pictures/Light.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;
using Losses = QxTest;

/// Colour of some alpha in all but the first two columns and the last two rows; with alpha 0 it is light.
qx::pictures::Picture corner(float alpha) {
    auto made = picture<QX_PixelFloat>(10, 5, true, [=](int x, int y) {
        return x >= 2 && y <= 2 ? QX_PixelFloat{alpha, 0.25f, 0.5f, 0.75f} : QX_PixelFloat{};
    });
    qx::pictures::mark_light(made);
    return made;
}

TEST_F(Losses, LightIsNotLostInSilence) {
    write("light.exr", corner(0), 32);
    write("plain.exr", corner(0.5f), 32);
    put_quoted("light.json", "{'frames': [1, 1], 'depth': 32, 'background': 'light.exr', 'layers': []}");
    const std::pair<std::string, bool> cases[] = {
        {"comp light.exr plain.exr --opacity 0 -o o.exr", false},
        {"comp light.exr plain.exr --at 9,0 -o o.exr", false},  // its first columns are clear
        {"comp light.exr plain.exr -o o.exr", true},
        {"comp light.exr plain.exr --opacity 0 -o o.tif", true},
        {"comp plain.exr light.exr -o o.exr", true},
        {"render light.json -o o.exr", false},
        {"render light.json -o o.exr --depth 8", false},
        {"render light.json -o o.png", true}};
    for (const auto& [line, told] : cases) {
        const auto outcome = qx(line);
        EXPECT_EQ(outcome.status, 0) << line << outcome.errors;
        const char* words = told ? "light.exr: light under" : "light under";
        EXPECT_EQ(outcome.errors.find(words) != std::string::npos, told) << line << outcome.errors;
    }
    EXPECT_EQ(read("o.exr").world->width, 10);
}

/// Words that a run says, in their order and each once, and that it says nothing else.
TEST_F(Losses, EachIsToldOnceAJob) {
    const auto colour = [](float v) { return [=](int, int) { return QX_PixelFloat{1, v, 0.5f, 0}; }; };
    write("tame.exr", picture<QX_PixelFloat>(9, 9, false, colour(0.5f)), 32);
    auto other = picture<QX_PixelFloat>(9, 9, false, colour(0.5f));
    other.colours.primaries = {0.7f, 0.29f, 0.17f, 0.8f, 0.13f, 0.05f, 0.3127f, 0.329f};
    write("other.exr", other, 32);
    write("q.1.exr", picture<QX_PixelFloat>(9, 9, false, colour(2)), 32);
    put("q.2.exr", bytes("q.1.exr"));
    write("half.exr", read("tame.exr"), 32);
    qx::pictures::write_picture(folder / "half.exr", read("tame.exr"), 32, {.half = true});
    write("deep.png", picture<QX_Pixel16>(9, 9, false, [](int, int) { return QX_Pixel16{32768, 5, 6, 7}; }), 16);
    gradient("a.png", 9, 9, 255);
    put_quoted("s.json",
               "{'frames': [1, 2], 'background': 'q.#.exr', 'layers': [{'file': 'deep.png', 'opacity': 0.1}]}");
    TIFF* tiff = TIFFOpen((folder / "pages.tif").c_str(), "w");
    for (int page = 0; page < 2; ++page) {
        for (const int tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH}) TIFFSetField(tiff, tag, 8);
        for (std::uint32_t y = 0; y < 8; ++y) TIFFWriteScanline(tiff, const_cast<char*>("a row   "), y, 0);
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    for (const char* name : {"p.1.tif", "p.2.tif"}) put(name, bytes("pages.tif"));
    put_quoted("pages.json",
               "{'frames': [1, 2], 'size': [8, 8], 'layers': [{'file': 'p.#.tif'}, {'file': 'p.#.tif'}]}");
    auto wide = picture<QX_PixelFloat>(9, 9, false, colour(0.5f));
    wide.window = std::make_shared<qx::pictures::ExrWindow>(qx::pictures::ExrWindow{
        Imath::Box2i({5, 5}, {13, 13}), Imath::Box2i({4, 5}, {13, 13}), false, std::vector<QX_PixelFloat>(9)});
    write("wide.exr", wide, 32);
    put_quoted("wide.json", "{'frames': [1, 2], 'depth': 32, 'background': 'wide.exr', 'layers': []}");
    put_quoted("cut.json", "{'frames': [1, 2], 'depth': 32, 'size': [9, 8], 'background': 'wide.exr', 'layers': []}");
    const std::string mixed = "OpenEXR is meant";
    const std::string encoded = "deep.png: its profile (sRGB) is not the background's (sRGB (linear))";
    const std::pair<std::string, Names> cases[] = {
        {"comp a.png a.png --depth 32 -o o.png", {}},
        {"comp deep.png a.png -o o.tif", {}},
        {"comp deep.png a.png --depth 8 -o o.png", {"deep.png: its 16 bits become 8 bits"}},
        {"comp a.png deep.png -o o.jpg", {"a.png: its 16 bits become 8 bits"}},
        {"comp half.exr a.png -o o.exr", {mixed}},
        {"comp half.exr deep.png --half -o o.exr", {mixed, "half.exr: its floats become half floats"}},
        {"comp half.exr half.exr -o o.png", {mixed, "half.exr: its half floats become 16 bits"}},
        {"comp tame.exr other.exr -o o.exr",
         {"other.exr: its profile (linear light of 0.7 0.29 0.17 0.8 0.13 0.05 0.3127 0.329) is not the background's "
          "(sRGB (linear))"}},
        {"comp wide.exr tame.exr -o o.exr", {}},
        {"comp wide.exr tame.exr -o o.tif", {mixed, "wide.exr: what lies outside"}},
        {"comp tame.exr wide.exr --mask wide.exr -o o.exr", {"wide.exr: what lies outside"}},
        {"render wide.json -o o.#.exr", {}},
        {"render cut.json -o o.#.exr", {"wide.exr: what lies outside"}},
        {"comp pages.tif pages.tif --mask pages.tif --mask-kind alpha -o o.tif",
         {"pages.tif: only its first page is used"}},
        {"render pages.json -o o.#.tif -j 1", {"p.1.tif: only its first page is used"}},
        {"comp q.1.exr q.1.exr --mode copy -o o.tif --depth 16",
         {mixed, "q.1.exr: its floats become 16 bits", "q.1.exr: values below 0 and above 1"}},
        {"render s.json -o o.#.png --depth 32",
         {encoded, mixed, "q.1.exr: its floats become 16 bits", "q.1.exr: values below 0 and above 1"}},
        {"render s.json -o o.#.exr --depth 32", {encoded}},
        {"render s.json -o o.#.png -j 1",
         {"q.1.exr: its floats become 8 bits", "q.1.exr: values below", "deep.png: its 16 bits become 8", encoded,
          mixed}}};
    for (const auto& [line, words] : cases) {
        const auto outcome = qx(line);
        EXPECT_EQ(outcome.status, 0) << line;
        std::size_t end = 0;
        for (const std::string& word : words) {
            end = outcome.errors.find("qx: note: " + word, end);
            EXPECT_NE(end, std::string::npos) << line << ": " << word << "\n" << outcome.errors;
            end = outcome.errors.find('\n', end) + 1;
        }
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), words.size()) << line << "\n"
                                                                                                << outcome.errors;
    }
}

/// A limit on the size of files stands for a full disk: a write fails in the midst, or at the very end.
TEST_F(Losses, FullDiskFailsAndLeavesTheOldFile) {
    write("in.png", noise(200, 200));
    for (const std::string name : {"out.png", "out.jpg", "out.tif", "out.exr"}) {
        for (const char* limit : {"ulimit -f 1;", "ulimit -f 16;"}) {
            put(name, "old");
            expect_fault("comp -q in.png in.png --depth 32 -o " + name, 1, "qx: " + name + ": File too large\n", limit);
            EXPECT_EQ(bytes(name), "old") << name << limit;
            std::filesystem::remove(folder / name);
        }
    }
}

}  // namespace
