// SPDX-License-Identifier: Apache-2.0
// What a result cannot hold is told, and what cannot be written leaves nothing behind.
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
    const std::pair<std::string, bool> cases[] = {
        {"light.exr plain.exr --opacity 0 -o o.exr", false},
        {"light.exr plain.exr --at 9,0 -o o.exr", false},  // its first columns are clear
        {"light.exr plain.exr -o o.exr", true},
        {"light.exr plain.exr --opacity 0 -o o.tif", true},
        {"plain.exr light.exr -o o.exr", true}};
    for (const auto& [line, told] : cases) {
        const auto outcome = qx("comp " + line);
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
    other.primaries = {0.7f, 0.3f, 0.2f, 0.8f, 0.1f, 0.0f, 0.3f, 0.35f};
    write("other.exr", other, 32);
    write("q.1.exr", picture<QX_PixelFloat>(9, 9, false, colour(2)), 32);
    put("q.2.exr", bytes("q.1.exr"));
    write("half.exr", read("tame.exr"), 32);
    qx::pictures::write_picture(folder / "half.exr", read("tame.exr"), 32, {.half = true});
    write("deep.png", picture<QX_Pixel16>(9, 9, false, [](int, int) { return QX_Pixel16{32768, 5, 6, 7}; }), 16);
    gradient("a.png", 9, 9, 255);
    put_quoted("s.json",
               "{'frames': [1, 2], 'background': 'q.#.exr', 'layers': [{'file': 'deep.png', 'opacity': 0.1}]}");
    const std::string mixed = "OpenEXR is meant";
    const std::pair<std::string, Names> cases[] = {
        {"comp a.png a.png --depth 32 -o o.png", {}},
        {"comp deep.png a.png -o o.tif", {}},
        {"comp deep.png a.png --depth 8 -o o.png", {"deep.png: its 16 bits become 8 bits"}},
        {"comp a.png deep.png -o o.jpg", {"a.png: its 16 bits become 8 bits"}},
        {"comp half.exr a.png -o o.exr", {mixed}},
        {"comp half.exr deep.png --half -o o.exr", {mixed, "half.exr: its floats become half floats"}},
        {"comp half.exr half.exr -o o.png", {mixed, "half.exr: its half floats become 16 bits"}},
        {"comp tame.exr other.exr -o o.exr", {"other.exr: its primaries are not those"}},
        {"comp q.1.exr q.1.exr --mode copy -o o.tif --depth 16",
         {mixed, "q.1.exr: its floats become 16 bits", "q.1.exr: values below 0 and above 1"}},
        {"render s.json -o o.#.png --depth 32",
         {mixed, "q.1.exr: its floats become 16 bits", "q.1.exr: values below 0 and above 1"}},
        {"render s.json -o o.#.exr --depth 32", {}},
        {"render s.json -o o.#.png -j 1",
         {"q.1.exr: its floats become 8 bits", "q.1.exr: values below", "deep.png: its 16 bits become 8", mixed}}};
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
