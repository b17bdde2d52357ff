// SPDX-License-Identifier: Apache-2.0
// The commands that blur, filter, mask, adjust, fade, convert and repair pictures.
#include <nlohmann/json.hpp>

#include "tests/support/Test.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;

class EffectCommands : public QxTest {
protected:
    EffectCommands() {
        write("a.png", 20, 16, [](int x, int y) { return argb(x * 13, 97 * x, 31 * y, x * y); });
        write("b.png", 20, 16, [](int x, int y) { return argb(255 - 9 * y, 11 * y, 57 * x, 200 - x); });
    }
    /// Commands make the same pixels.
    void expect_same_results(const std::string& one, const std::string& other) const {
        SCOPED_TRACE(one + " and " + other);
        run(one);
        put("first.tif", bytes("o.tif"));
        run(other);
        EXPECT_TRUE(same("first.tif", "o.tif"));
    }
};
using EffectCommandsDeathTest = EffectCommands;  // runs before threads are there

TEST_F(EffectCommands, FaultsGiveOneLineAStatusAndNoFile) {
    put("bad.png", bytes("a.png").substr(0, 90));
    const std::pair<std::string, std::string> kernels[] = {
        {"even", "1 2\n3 4\n"}, {"ragged", "1 2 3\n4 5\n"}, {"words", "1 x 3\n"},   {"bits", "2147483648\n"},
        {"two", "1\n\n1\n"},    {"line", "1 2 3\n"},        {"none", "# no number"}};
    for (const auto& [name, text] : kernels) put(name + ".txt", text);
    put("bytes.txt", std::string("1 \0\n 3", 6));
    const Names pictures = {"blur @",
                            "blur a.png --kind disc --map @",
                            "convolve @ --filter edges",
                            "adjust @",
                            "blend @ a.png",
                            "blend a.png @",
                            "convert @",
                            "guess-alpha @",
                            "matte @",
                            "matte a.png @",
                            "matte a.png --apply @"};
    for (const std::string& line : pictures) {
        const auto with = [&](const std::string& name) { return std::string(line).replace(line.find('@'), 1, name); };
        expect_fault(with("bad.png") + " -o o.png", 1, "bad.png: damaged or cut short PNG");
        expect_fault(with("gone.png") + " -o o.png", 1, "gone.png: No such file or directory");
        expect_fault(with("a.png") + " -o o.gif", 2, "-o o.gif: its ending is none of png");
        expect_fault(with("a.png") + " -o no/o.png", 1, "no/o.png: its folder is missing");
    }
    expect_fault("convolve a.png --kernel gone.txt -o o.png", 1, "gone.txt: No such file or directory");
    expect_fault("convolve a.png --kernel /dev/null -o o.png", 1, "/dev/null: is not a regular file");
    expect_faults(
        2, "convolve a.png ", " -o o.png",
        {"--kernel even.txt => --kernel even.txt: 2 x 2: the size must be odd",
         "--kernel ragged.txt => line 2: has 2 numbers, the one before 3",
         "--kernel words.txt --row => line 1: x is no whole number of 32 bits",
         "--kernel bits.txt => line 1: 2147483648 is no whole number of 32 bits",
         "--kernel bytes.txt => line 1: this is no whole number of 32 bits\n",
         "--kernel two.txt => 2 blocks of numbers: it has one or four",
         "--kernel none.txt => 0 blocks of numbers: it has one or four", "--kernel line.txt => 3 x 1: is no square",
         "--filter sharpn => the nearest is sharpen", "--filter gaussian:182 => from 0 to 181",
         "--filter gaussian:512 --row => from 0 to 511", "--filter box:4 => must be odd",
         "--filter edges --column => is a square", "--row --column --filter box:3 => --row: excludes column",
         "--edge clea => the nearest is clear", " => --kernel: either that or a filter is needed",
         "--kernel line.txt --filter edges => --kernel: either that or a filter is needed"});
    expect_faults(2, "blur a.png ", " -o o.png",
                  {"--radius abc => --radius abc: not a number from 0 to 30000", "--radius nan => --radius nan: not a",
                   "--radius -1 => --radius -1: not a", "--radius 1e9 => --radius 1e9: not a",
                   "--radius 3,4,5 => --radius 3,4,5: not one or two numbers", "--kind gausian => nearest is gaussian",
                   "--raduis 3 => nearest is --radius", "--channels rgx => --channels rgx: not letters out of rgba",
                   "--map b.png => --map: is for the kinds mean and disc", "--gain 2 => --gain: is for the kind disc",
                   "--kind mean --passes 2 => --passes: is for the kinds", "--grow --edge keep => keep excludes grow"});
    expect_faults(1, "blur a.png --grow ", " -o o.png",
                  {"--radius 30000 => a.png: 60020 x 16 pixels: a side has 1 to 30000",
                   "--radius 9000 --passes 100 => a side has 1 to 30000",
                   "--radius 14000 --kind disc => pixels of 8 bits are above the limit of 2 GB"});
    expect_faults(
        2, "", " -o o.png",
        {"blurr a.png => blurr: no such subcommand; the nearest is blur", "blend a.png => B is required",
         "adjust a.png b.png => b.png", "matte a.png --kind lumma => the nearest is luma",
         "matte a.png --op ad => the nearest is add",
         "matte a.png --feather 1e9 => --feather 1e9: not a number from 0 to 30000",
         "matte a.png --at 3 => --at 3: not two numbers", "matte a.png --passes 2 => not one of 1, 3",
         "matte --feather 3 => MASK is required", "adjust a.png --hue abc => --hue abc: not a number",
         "blend a.png b.png --ratio 2 => --ratio 2: not a number from 0 to 1", "convert a.png --matte 1,1,1 => needs",
         "convert a.png --unpremultiply --matte 1,1 => --matte 1,1: not a colour R,G,B",
         "convert a.png --premultiply --unpremultiply => excludes", "guess-alpha a.png b.png => -o is for one file"});
    write("small.png", 3, 3, [](int, int) { return argb(255, 1, 2, 3); });
    expect_fault("blend a.png small.png -o o.png", 1, "a.png: is 20 x 16, and what it fades to is 3 x 3 pixels");
}

TEST_F(EffectCommands, MakeWhatTheLayerOfASceneBecomes) {
    put("k.txt", "0 1 2\n1 9 1\n-2 1 0\n");
    const Names rows = {
        "blur a.png --radius 2.5,1 => 'blur', 'radius': [2.5, 1]",
        "blur a.png --kind box --passes 3 --edge clear => 'blur', 'kind': 'box', 'passes': 3, 'edge': 'clear'",
        "blur a.png --kind mean --map b.png => 'blur', 'kind': 'mean', 'map': 'b.png'",
        "blur a.png --kind disc --gain 2 --rotate 9 => 'blur', 'kind': 'disc', 'gain': 2, 'rotate': 9",
        "convolve a.png --kernel k.txt --normalise => 'convolve', 'kernel': 'k.txt', 'normalise': true",
        "adjust a.png --hue 40 --saturation 1.2 => 'adjust', 'hue': 40, 'saturation': 1.2",
        "blend a.png b.png --ratio 0.25 => 'blend', 'with': 'b.png', 'ratio': 0.25",
        "matte b.png --feather 3 a.png --op subtract --at 2,3 --apply a.png => 'matte', 'masks': [{'file': "
        "'b.png', 'feather': 3}, {'file': 'a.png', 'op': 'subtract', 'at': [2, 3]}]"};
    for (const std::string& row : rows) {
        const auto [command, keys] = halves(row);
        put_quoted("s.json",
                   "{'size': [20, 16], 'frames': [1, 1], 'layers': [{'file': 'a.png', 'mode': 'copy', "
                   "'effects': [{'effect': " +
                       keys + "}]}]}");
        for (const std::string depth : {"8", "16", "32"}) {
            const std::string after = " -o o.tif --depth " + depth;
            expect_same_results(command + after, "render s.json" + after);
        }
    }
}

TEST_F(EffectCommands, BandsAndThreadsDoNotShow) {
    put("k.txt", "70000 -3 2\n1 9 1\n-20000 1 0\n");
    for (const std::string line : {"convolve a.png --kernel k.txt", "convolve a.png --filter gaussian:9 --no-clamp",
                                   "matte a.png --feather 7 b.png --at 3,5 --op difference", "blur a.png --radius 9"}) {
        for (const std::string bands : {"2", "7 -j 2", "32 -j 3"}) {
            expect_same_results(line + " -o o.tif --bands 1", line + " -o o.tif --bands " + bands);
        }
    }
}

TEST_F(EffectCommands, AFileMayBeNamedTwice) {
    expect_same_results("convert a.png --depth 16 -o o.tif", "blend a.png a.png --ratio 0 --depth 16 -o o.tif");
    put("c.png", bytes("a.png"));
    expect_same_results("blur a.png --kind mean --map c.png -o o.tif", "blur a.png --kind mean --map a.png -o o.tif");
    expect_same_results("matte c.png c.png --op max --apply a.png -o o.tif",
                        "matte a.png a.png --op max --apply a.png -o o.tif");
    run("blur c.png --radius 3 -o c.png");
    run("blur a.png --radius 3 -o o.png");
    EXPECT_TRUE(same("c.png", "o.png"));
}

TEST_F(EffectCommands, AMaskWithoutAlphaCountsByItsLuma) {
    write("grey.png", picture<QX_Pixel8>(8, 6, false, [](int x, int y) {
              const int v = 30 * x + y;
              return argb(255, v, v, v);
          }));
    const auto outcome = qx("matte grey.png -o m.png");
    EXPECT_HOLDS(outcome.errors, "mask grey.png has no alpha and counts by its luma");
    EXPECT_TRUE(same("m.png", "grey.png"));
    run("matte grey.png --kind alpha -o m.png");
    EXPECT_EQ(channels(read("m.png"), 1, 1), (List{255, 255, 255, 255}));
    put_contents(folder / "s.json", R"({"size": [8, 6], "background": [1, 0, 0], "layers": [{"solid": [1, 1, 1], )"
                                    R"("effects": [{"effect": "matte", "masks": [{"file": "grey.png"}]}]}]})");
    EXPECT_HOLDS(qx("render s.json --frames 1 -o r.png").errors, "counts by its luma");
    EXPECT_EQ(channels(read("r.png"), 5, 3), (List{255, 255, 153, 153}));
}

/// Options belong to the mask before them, those in front of the first to all. Where no picture is told the matte is
/// grey, opaque and of the first mask's size.
TEST_F(EffectCommands, MasksTakeTheOptionsBehindThem) {
    write("clear.png", 3, 1, [](int, int) { return argb(0, 9, 9, 9); });
    write("x.png", 1, 1, [](int, int) { return argb(255, 0, 0, 0); });
    const std::pair<std::string, List> cases[] = {{"clear.png x.png --at 1,0", {0, 255, 0}},
                                                  {"clear.png x.png --at 1,0 x.png --opacity 0.4", {102, 255, 0}},
                                                  {"--at 2,0 clear.png x.png x.png --at 0,0", {255, 0, 255}},
                                                  {"clear.png --invert x.png --at 1,0 --op subtract", {255, 0, 255}},
                                                  {"clear.png --invert x.png --op=intersect --at 2,0", {0, 0, 255}}};
    for (const auto& [masks, grey] : cases) {
        run("matte " + masks + " -o out.png");
        const auto made = read("out.png");
        EXPECT_FALSE(made.has_alpha) << masks;
        for (std::size_t x = 0; x < 3; ++x)
            EXPECT_EQ(first_row(made)[x], (List{255, grey[x], grey[x], grey[x]})) << masks;
    }
}

TEST_F(EffectCommands, WhatIsMultipliedComesBack) {
    run("convert a.png --depth 32 -o deep.tif");
    for (const std::string matte : {"", " --matte 0.2,0.4,1"}) {
        run("convert deep.tif --premultiply" + matte + " -o mixed.tif");
        EXPECT_FALSE(same("deep.tif", "mixed.tif"));
        run("convert mixed.tif --unpremultiply" + matte + " -o back.tif");
        const auto own = read("deep.tif"), back = read("back.tif");
        for (int y = 0; y < 16; ++y) {
            for (int x = 1; x < 20; ++x) {  // the first column is clear
                for (std::size_t c = 0; c < 4; ++c) ASSERT_NEAR(channels(back, x, y)[c], channels(own, x, y)[c], 2e-5);
            }
        }
    }
}

/// A ramp whose steps at 8 bits are twenty pixels wide.
TEST_F(EffectCommands, DitherRepeatsAndKeepsTheMean) {
    const auto value = [](int x) { return static_cast<std::uint16_t>(12000 + 6 * x); };
    write("ramp.png",
          picture<QX_Pixel16>(400, 50, false,
                              [&](int x, int) {
                                  return QX_Pixel16{32768, value(x), value(x), value(x)};
                              }),
          16);
    run("convert ramp.png -q --depth 8 -o plain.png");
    run("convert ramp.png -q --depth 8 --dither -j 1 -o o.png");
    run("convert ramp.png -q --depth 8 --dither --bands 7 -j 3 -o again.png");
    EXPECT_EQ(bytes("o.png"), bytes("again.png"));
    const auto plain = read("plain.png"), dithered = read("o.png");
    int levels_apart = 0;
    for (int x = 0; x < 400; ++x) {
        double mean = 0;
        for (int y = 0; y < 50; ++y) {
            ASSERT_EQ(channels(plain, x, y)[1], channels(plain, x, 0)[1]);
            levels_apart += channels(dithered, x, y)[1] != channels(plain, x, 0)[1];
            mean += channels(dithered, x, y)[1] / 50;
        }
        ASSERT_NEAR(mean, value(x) * 255 / 32768.0, 0.4) << x;  // more than five deviations of such a mean
    }
    EXPECT_GT(levels_apart, 400 * 50 / 8);
}

TEST_F(EffectCommands, GuessTellsWhatAlphaMeansAndRepairs) {
    const auto spot = [](int x, int y) {
        return std::clamp(380 - 24 * static_cast<int>(std::hypot(x - 15, y - 15)), 0, 255);
    };
    write("straight.png", 30, 30, [&](int x, int y) { return argb(spot(x, y), 240 - x, 40 + 5 * y, 90); });
    write(
        "opaque.png", 30, 30, [](int x, int y) { return argb(255, x, y, 90); }, false);
    run("convert straight.png --premultiply -o black.png");
    run("convert straight.png --premultiply --matte 1,0.2,0 -o colour.png");
    const auto told = [&](const std::string& name) {
        return nlohmann::json::parse(qx("guess-alpha --json " + name).output)[0];
    };
    for (const auto& [name, alpha, matte] :
         Cases<std::string, std::string, List>{{"straight.png", "straight", {}},
                                               {"opaque.png", "opaque", {}},
                                               {"black.png", "premultiplied", {0, 0, 0}},
                                               {"colour.png", "premultiplied", {255, 51, 0}}}) {
        const auto json = told(name);
        EXPECT_EQ(json["file"], name);
        EXPECT_EQ(json["alpha"], alpha) << name;
        EXPECT_EQ(json.value("matte", List{}), matte) << name;
        EXPECT_EQ(json["tag"], name == "opaque.png" ? "no alpha" : "straight");
        const auto outcome = qx("guess-alpha -o repaired.png " + name);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_HOLDS(outcome.output, name + ": " + alpha);
        const auto want = read(matte.empty() ? name : "straight.png"), made = read("repaired.png");
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 30; ++x) {
                const List w = channels(want, x, y), m = channels(made, x, y);
                ASSERT_EQ(m[0], w[0]) << name;
                const double steps = w[0] == 0 ? 255 : matte.empty() ? 0 : 0.5 + 255 / w[0];  // of rounding, undone
                for (std::size_t c = 1; c < 4; ++c) ASSERT_NEAR(m[c], w[c], steps) << name << " " << x << " " << y;
            }
        }
    }
    EXPECT_EQ(nlohmann::json::parse(qx("guess-alpha --json black.png opaque.png").output).size(), 2);
    EXPECT_HOLDS(qx("guess-alpha straight.png -o o.jpg").errors, "JPEG cannot hold");
}

/// As CommandTest has it for qx comp.
TEST_F(EffectCommandsDeathTest, InterruptLeavesNoFile) {
    GTEST_FLAG_SET(death_test_style, "fast");
    gradient("large.png", 64, 64, 200);
    put("o.png", "old");
    const auto names = folder.names();
    const std::string a = folder / "large.png", o = folder / "o.png";
    for (Names words : {Names{"blur", a}, Names{"blur", a, "--kind", "box"}, Names{"blur", a, "--kind", "mean"},
                        Names{"blur", a, "--kind", "disc"}, Names{"convolve", a, "--filter", "sharpen"},
                        Names{"matte", a, "--feather", "9"}, Names{"adjust", a, "--hue", "9"}, Names{"blend", a, a},
                        Names{"convert", a, "-q", "--to", "rec2020"}}) {
        SCOPED_TRACE(words[0] + " " + words.back());
        words.insert(words.end(), {"-o", o});
        EXPECT_EXIT(run_interrupted({SIGINT}, a, words), testing::ExitedWithCode(130), "^qx: interrupted\n$");
        EXPECT_EQ(bytes("o.png"), "old");
        EXPECT_EQ(folder.names(), names);
    }
}

}  // namespace
