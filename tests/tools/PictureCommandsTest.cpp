// SPDX-License-Identifier: Apache-2.0
// The commands that compare, tell apart, lay out and reshape pictures.
#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class PictureCommands : public QxTest {
protected:
    PictureCommands() {
        write("a.png", 20, 16, [](int x, int y) { return argb(255 - x, 13 * x, 15 * y, x * y); });
        write("deep.png",
              picture<QX_Pixel16>(
                  20, 16, true,
                  [](int x, int y) {
                      const auto step = [](int v) { return static_cast<std::uint16_t>(v); };
                      return QX_Pixel16{step(32768 - 31 * x), step(1571 * x), step(2003 * y), step(97 * x * y)};
                  }),
              16);
    }
    std::string said(const std::string& arguments, int status = 0) const {
        const auto outcome = qx(arguments);
        EXPECT_EQ(outcome.status, status) << arguments << outcome.errors;
        return outcome.output;
    }
    nlohmann::json told(const std::string& arguments, int status = 0) const {
        return nlohmann::json::parse(said(arguments + " --json", status));
    }
    std::string hash(const std::string& file) const { return told("hash " + file)[0]["hash"]; }
};

TEST_F(PictureCommands, DiffTellsWhereAndHowFar) {
    write("b.png", 20, 16, [](int x, int y) {
        const int more = (x == 7 && y == 3) ? 10 : (x == 2 && y == 9) ? 4 : 0;
        return argb(255 - x, 13 * x, 15 * y + more, x * y);
    });
    const auto found = told("diff a.png b.png", 1);
    EXPECT_EQ(found["equal"], false);
    EXPECT_EQ(found["differing"], 2);
    EXPECT_EQ(found["pixels"], 320);
    EXPECT_EQ(found["at"], nlohmann::json({7, 3}));
    EXPECT_EQ(found["channel"], "green");
    EXPECT_NEAR(found["largest"], 10 / 255.0, 1e-7);
    EXPECT_NEAR(found["mean"], 14 / 255.0 / 1280, 1e-9);
    EXPECT_NEAR(found["psnr"], 10 * std::log10(255.0 * 255 * 1280 / (100 + 16)), 1e-3);
    EXPECT_EQ(told("diff a.png b.png --tolerance 0.02", 1)["differing"], 1);
    EXPECT_EQ(told("diff a.png b.png --tolerance 0.04")["equal"], true);
    EXPECT_EQ(said("diff a.png a.png"), "equal\n");
    EXPECT_HOLDS(said("diff a.png b.png", 1), "differing  2 of 320 pixels\n");
    write("wide.png", 21, 16, [](int, int) { return argb(255, 0, 0, 0); });
    EXPECT_EQ(said("diff a.png wide.png", 1), "sizes differ: 20 x 16 and 21 x 16\n");
    said("diff a.png b.png --picture heat.png", 1);
    EXPECT_EQ(channels(read("heat.png"), 0, 0), (List{255, 0, 0, 0}));
    EXPECT_EQ(channels(read("heat.png"), 7, 3), (List{255, 255, 255, 255}));
    EXPECT_EQ(channels(read("heat.png"), 2, 9)[1], 255) << "less than the largest, and seen";
    EXPECT_LT(channels(read("heat.png"), 2, 9)[3], 128);
}

TEST_F(PictureCommands, ValuesCountWhateverHoldsThem) {
    for (const std::string file : {"a", "deep"}) {
        for (const std::string other : {"o.tif", "o.png"}) {
            run("convert " + file + ".png -o " + other + (other == "o.png" ? " --compression 0" : ""));
            EXPECT_EQ(hash(file + ".png"), hash(other)) << file << other;
            EXPECT_EQ(said("diff " + file + ".png " + other), "equal\n");
        }
    }
    qx("convert a.png --depth 16 -o o.png");
    said("diff a.png o.png --tolerance 0.00002");  // a step of 65535, as depth 16 works in 32769
    EXPECT_NE(hash("a.png"), hash("o.png")) << "the depth counts";
    qx("convert deep.png --depth 32 -o o.tif");
    EXPECT_EQ(said("diff deep.png o.tif"), "equal\n");
    write(
        "opaque.png", 3, 2, [](int x, int y) { return argb(255, x, y, 9); }, false);
    write(
        "full.tif", 3, 2, [](int x, int y) { return argb(255, x, y, 9); }, true);
    EXPECT_EQ(hash("opaque.png"), hash("full.tif"));
    write("turned.png", 2, 3, [](int x, int y) { return argb(255, (2 * y + x) % 3, (2 * y + x) / 3, 9); });
    EXPECT_NE(hash("opaque.png"), hash("turned.png")) << "the size counts";
}

TEST_F(PictureCommands, CropsAndShufflesKeepEveryValue) {
    for (const std::string file : {"a.png", "deep.png"}) {
        run("convert " + file + " --crop 7x5+4+9 --channels bgra -o part.png");
        run("convert part.png --channels bgr -o part.png");
        const auto whole = read(file), part = read("part.png");
        ASSERT_EQ(part.world->width, 7);
        ASSERT_EQ(part.world->height, 5);
        for (int y = 0; y < 5; ++y) {
            for (int x = 0; x < 7; ++x) EXPECT_EQ(channels(part, x, y), channels(whole, x + 4, y + 9));
        }
        run("convert " + file + " --crop 7x5 -o part.png");
        EXPECT_EQ(channels(read("part.png"), 6, 4), channels(whole, 6, 4));
        run("convert " + file + " --channels a -o grey.png");
        EXPECT_EQ(channels(read("grey.png"), 3, 2)[1], channels(whole, 3, 2)[0]);
        run("convert " + file + " --channels 0g1 -o mixed.png");
        const double full = file == "a.png" ? 255 : 32768;
        EXPECT_EQ(channels(read("mixed.png"), 3, 2),
                  (List{channels(whole, 3, 2)[0], 0, channels(whole, 3, 2)[2], full}));
    }
    const auto values = contents(folder / "deep.png");
    run("convert deep.png --channels bgra -o o.png");
    run("convert o.png --channels bgra -o o.png");
    EXPECT_EQ(hash("o.png"), hash("deep.png")) << "all 65,536 steps";
}

TEST_F(PictureCommands, ResizeMeansWhatShrinksAndLeavesNoEdge) {
    write("flat.png", 30, 20, [](int, int) { return argb(255, 10, 200, 77); });
    for (const auto& [size, width, height] : Cases<std::string, int, int>{
             {"15x90", 15, 10}, {"15x90!", 15, 90}, {"61x", 61, 41}, {"x7", 11, 7}, {"250%", 75, 50}, {"1x1", 1, 1}}) {
        run("convert flat.png --resize " + size + " -o o.png");
        const auto made = read("o.png");
        EXPECT_EQ(made.world->width, width) << size;
        EXPECT_EQ(made.world->height, height) << size;
        EXPECT_FALSE(qx::pictures::any_pixel<QX_Pixel8>(*made.world, [](const QX_Pixel8& p, int, int) {
            return p.alpha != 255 || p.red != 10 || p.green != 200 || p.blue != 77;
        })) << size;
    }
    write("halves.png", 4, 2, [](int x, int y) { return argb(255, 40 * x + 4 * y, 0, 100 * y); });
    run("convert halves.png --resize 50% -o o.png");
    EXPECT_EQ(channels(read("o.png"), 0, 0), (List{255, 22, 0, 50}));
    EXPECT_EQ(channels(read("o.png"), 1, 0), (List{255, 102, 0, 50}));
}

TEST_F(PictureCommands, SheetsShowAllThatThereIs) {
    for (const int number : {3, 11, 12}) {
        write("f." + std::to_string(number) + ".png", 30, 30, [=](int, int) { return argb(255, 20 * number, 0, 0); });
    }
    run("sheet 'f.#.png' --size 20 --columns 2 -o s.png");
    const auto sheet = read("s.png");
    EXPECT_EQ(sheet.world->width, 12 + 2 * 32);
    EXPECT_EQ(sheet.world->height, 12 + 2 * 32);
    const List reds = {channels(sheet, 22, 22)[1], channels(sheet, 54, 22)[1], channels(sheet, 22, 54)[1]};
    EXPECT_EQ(reds, (List{60, 220, 240}));
    const auto paper = channels(sheet, 54, 54);
    run("sheet f.3.png f.11.png --size 20 --columns 5 --label -o s.png");
    EXPECT_EQ(read("s.png").world->width, 12 + 2 * 32) << "no room for pictures that are not there";
    EXPECT_NE(channels(read("s.png"), 22, 22), paper);
}

TEST_F(PictureCommands, WrongUseIsToldInALine) {
    put("bad.png", bytes("a.png").substr(0, 90));
    expect_faults(
        2, "diff ", "",
        {"a.png => B is required", "a.png bad.png => bad.png: damaged", "a.png gone.png => gone.png: No such",
         "a.png a.png --tolerance -1 => --tolerance -1: not a number", "a.png a.png --picture x.y => -o x.y"});
    expect_faults(1, "", "",
                  {"hash bad.png => bad.png: damaged", "sheet 'g.#.png' -o o.png => g.#.png: no frame is there",
                   "sheet a.png bad.png -o o.png => bad.png: damaged"});
    expect_faults(
        2, "convert a.png ", " -o o.png",
        {"--crop 10 => --crop 10: not a part", "--crop 10x5+3 => not a part", "--crop 10x5+3+4x => not a part",
         "--crop 0x5 => not a part", "--crop 3x5+-2+0 => not a part",
         "--crop 10x5+11+0 => goes beyond the picture, which has 20 x 16", "--crop 21x1 => goes beyond",
         "--resize 0x => --resize 0: not a whole number from 1 to 30000", "--resize 9 => not a size",
         "--resize x => not a size", "--resize 30001x1! => not a whole number", "--resize -5% => not a number",
         "--channels rgbx => --channels rgbx: not one to four", "--channels rgbar => not one to four"});
    expect_faults(2, "sheet a.png ", " -o o.png",
                  {"--columns 0 => --columns 0", "--size 8 => --size 8: not a whole number from 16 to 4096"});
}

/// Positions that are told by sides and parts are those told in pixels.
TEST_F(PictureCommands, LayersAreFittedAndPulledToSides) {
    write("back.png", 101, 60, [](int x, int y) { return argb(255, 2 * x, 4 * y, 99); });
    const auto expect_same = [&](const std::string& one, const std::string& other) {
        run("comp back.png a.png " + one + " -o one.png");
        run("comp back.png a.png " + other + " -o other.png");
        EXPECT_TRUE(same("one.png", "other.png")) << one << " and " << other;
    };
    expect_same("--gravity south-east --at 5,7", "--at 76,37");
    expect_same("--gravity centre", "--at 41,22");
    expect_same("--at 50%,25%", "--at 51,15");
    expect_same("--at 3.25,4", "--translate 3.25,4");
    expect_same("--gravity east --fit 40x40", "--scale 2 --at 61,14");
    expect_same("--fit cover", "--scale 5.05,5.0625 --at 0,-10");
    expect_same("--gravity south --mask deep.png", "--at 41,44 --mask deep.png");
    expect_faults(2, "comp back.png a.png ", " -o o.png",
                  {"--gravity sout => --gravity sout: not one of north-west, north", "--fit 3x => not a whole number",
                   "--fit fill => --fit fill: not one of contain, cover", "--fit 3x3 --scale 2 => exclude each other",
                   "--fit cover --matrix 1,0,0,0,1,0,0,0,1 => exclude each other", "--at 5%,x => --at x: not a number",
                   "--fit 12 => not a size WxH"});
}

TEST_F(PictureCommands, MasksWithoutAlphaCountByTheirLuma) {
    write(
        "luma.png", 20, 16, [](int x, int y) { return argb(255, 12 * x, 12 * x, 12 * x + 0 * y); }, false);
    const auto outcome = qx("comp deep.png a.png --mask luma.png -o by.png");
    EXPECT_HOLDS(outcome.errors, "note: luma.png: has no alpha and counts by its luma");
    run("comp deep.png a.png --mask luma.png --mask-kind luma -o luma-out.png");
    EXPECT_TRUE(same("by.png", "luma-out.png"));
    run("comp deep.png a.png --mask luma.png --mask-kind alpha -o alpha.png");
    run("comp deep.png a.png -o plain.png");
    EXPECT_TRUE(same("alpha.png", "plain.png"));
}

TEST_F(PictureCommands, LayersThatCannotBeSeenAreTold) {
    for (const auto& [how, words] :
         Cases<std::string, std::string>{{"--at 20,0", "a.png: lies outside of the picture"},
                                         {"--at -20,0", "a.png: lies outside of the picture"},
                                         {"--scale 0", "a.png: its scale leaves nothing of it"},
                                         {"--rotate 180 --at 0,-3", "a.png: lies outside of the picture"},
                                         {"--at 19,0", ""}}) {
        const auto outcome = qx("comp a.png a.png " + how + " -o o.png");
        EXPECT_EQ(outcome.errors, words.empty() ? "" : "qx: note: " + words + "\n") << how;
    }
}

}  // namespace
