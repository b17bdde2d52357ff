// SPDX-License-Identifier: Apache-2.0
// The command qx render.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "platform/standalone/Standalone.h"
#include "tests/pictures/Support.h"
#include "tests/tools/RunQx.h"
#include "tools/qx/Commands.h"
#include "tools/qx/terminal/Progress.h"

namespace {

using qx::test::Folder;
using qx::test::run_qx;

/// A folder with two pictures, a sequence and scenes, which are written with ' for ".
class Render : public testing::Test {
protected:
    Folder folder;

    Render() {
        gradient("a.png", 40, 30, 255, 0);
        gradient("b.png", 16, 12, 100, 50);
        for (int i = 1; i <= 4; ++i) gradient("q.0" + std::to_string(i) + ".png", 16, 12, 200, 40 * i);
        scene("moving.json", R"({'frames': [1, 4], 'background': 'a.png', 'layers': [
            {'file': 'q.##.png', 'mode': 'multiply',
             'opacity': {'keys': [{'frame': 1, 'value': 0.2}, {'frame': 4, 'value': 1}]}},
            {'file': 'b.png', 'mask': 'b.png', 'transform': {'translate': {'keys': [
                {'frame': 1, 'value': [0, 0]}, {'frame': 4, 'value': [12, 9]}]}}}]})");
    }
    void gradient(const std::string& name, int width, int height, int alpha, int blue) {
        qx::test::write_bytes(
            folder / name, width, height, [=](int x, int y) { return qx::test::argb(alpha, 9 * x, 7 * y, blue); },
            alpha < 255);
    }
    void scene(const std::string& name, std::string text) const {
        std::replace(text.begin(), text.end(), '\'', '"');
        qx::test::put_contents(folder / name, text);
    }
    void run(const std::string& arguments) const {
        const auto outcome = run_qx(arguments, "cd " + (folder / "") + ";");
        EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.errors;
        EXPECT_EQ(outcome.errors, "") << arguments;
    }
    bool same(const std::string& a, const std::string& b) const {
        return qx::test::same_pixels(*qx::pictures::read_picture(folder / a).world,
                                     *qx::pictures::read_picture(folder / b).world);
    }
};

using RenderDeathTest = Render;  // runs before threads are there

TEST_F(Render, IsWhatCompMakesOfTheSamePictures) {
    scene("s.json", R"({'background': 'a.png', 'layers': [
        {'file': 'b.png', 'mode': 'screen', 'opacity': 0.5, 'linear': 2.2, 'field': 'odd'},
        {'file': 'q.##.png', 'transform': {'translate': [5, 7]}, 'rgb-only': true,
         'mask': {'file': 'b.png', 'kind': 'inverse-luma', 'at': [9, 9]}}]})");
    const std::string same_layers =
        "comp a.png b.png --mode screen --opacity 0.5 --linear 2.2 --field odd q.03.png "
        "--at 5,7 --rgb-only --mask b.png --mask-kind inverse-luma --mask-at 9,9 ";
    for (const std::string depth : {"8", "16", "32"}) {
        run("render s.json --frames 3 -o r.tif --depth " + depth);
        run(same_layers + "-o c.tif --depth " + depth);
        EXPECT_TRUE(same("r.tif", "c.tif")) << depth;
    }
}

TEST_F(Render, PlacesLayersAsCompDoes) {
    scene("placed.json", R"({'background': 'a.png', 'layers': [
        {'file': 'b.png', 'quality': 'bicubic',
         'transform': {'anchor': [8, 6], 'translate': [20.5, 14], 'scale': [1.5, 0.7], 'rotate': 33}},
        {'file': 'b.png', 'transform': {'matrix': [0.5, 0.1, 0, -0.2, 0.6, 0, 7, 8, 1]}}]})");
    run("render placed.json --frames 1 -o r.png");
    run("comp a.png b.png --quality bicubic --anchor 8,6 --at 20,13 --translate 0.5,1 --scale 1.5,0.7 --rotate 33 "
        "b.png --at 6,6 --matrix 0.5,0.1,0,-0.2,0.6,0,1,2,1 -o c.png");
    EXPECT_TRUE(same("r.png", "c.png"));
    EXPECT_FALSE(same("r.png", "a.png"));
}

TEST_F(Render, PartsOfTheFramesAreThoseOfTheWhole) {
    run("render moving.json -o whole.%d.png");
    run("render moving.json -o part.%d.png --frames 3-4");
    run("render moving.json -o part.%d.png --frames 1-2 --bands 3 -j 1");
    run("render moving.json -o odd.%d.png --frames 1-4x2");
    for (const std::string frame : {"1", "2", "3", "4"}) {
        EXPECT_TRUE(same("whole." + frame + ".png", "part." + frame + ".png")) << frame;
    }
    EXPECT_TRUE(same("whole.3.png", "odd.3.png"));
    EXPECT_FALSE(std::filesystem::exists(folder / "odd.2.png"));
    EXPECT_FALSE(same("whole.1.png", "whole.2.png"));
}

TEST_F(Render, ResumeKeepsWholeFramesAndMakesTheOthersAnew) {
    run("render moving.json -o f.#.png");
    run("render moving.json -o g.#.png");
    const auto old = qx::test::contents(folder / "f.1.png");
    gradient("f.1.png", 40, 30, 255, 77);                                           // whole, so it stays
    gradient("f.2.png", 41, 30, 255, 77);                                           // of another size
    qx::test::put_contents(folder / "f.3.png", old.substr(0, old.size() * 3 / 4));  // cut off
    std::filesystem::remove(folder / "f.4.png");
    const auto kept = qx::test::contents(folder / "f.1.png");
    run("render moving.json -o f.#.png --resume");
    EXPECT_EQ(qx::test::contents(folder / "f.1.png"), kept);
    for (const std::string frame : {"2", "3", "4"}) EXPECT_TRUE(same("f." + frame + ".png", "g." + frame + ".png"));
    run("render moving.json -o f.#.png");
    EXPECT_TRUE(same("f.1.png", "g.1.png"));
}

/// A fifth of (0.8, 0, 0) over the matte comes back as that colour, at the depth of the file.
TEST_F(Render, MatteIsTakenOut) {
    qx::test::write_bytes(folder / "m.png", 4, 4, [](int, int) { return qx::test::argb(51, 204, 204, 0); });
    const auto real = [](int, int) { return QX_PixelFloat{0.2f, 0.8f, 0.8f, 0}; };
    qx::pictures::write_picture(folder / "m.exr", qx::test::picture<QX_PixelFloat>(4, 4, true, real), 32);
    for (const auto& [file, depth, full, step] : {std::tuple{"m.png", "8", 255.0, 5.0}, {"m.exr", "32", 1.0, 1e-5}}) {
        scene("matte.json", "{'size': [4, 4], 'layers': [{'file': '" + std::string(file) +
                                "', 'mode': 'copy', 'matte': [0.8, 1, 0]}]}");
        run(std::string("render matte.json -q --frames 1 -o m.tif --depth ") + depth);
        const auto found = qx::test::channels(*qx::pictures::read_picture(folder / "m.tif").world, 3, 3);
        const double expected[] = {0.2, 0.8, 0, 0};
        for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(found[i], expected[i] * full, step) << file << " " << i;
    }
}

TEST_F(Render, BackgroundsOfColourAndOfAnotherSize) {
    scene("colour.json", "{'size': [5, 4], 'background': [1, 0.5, 0, 0.2], 'layers': []}");
    run("render colour.json --frames 1 -o c.png");
    EXPECT_EQ(qx::test::channels(*qx::pictures::read_picture(folder / "c.png").world, 4, 3),
              (std::vector<double>{51, 255, 128, 0}));
    scene("large.json", "{'size': [50, 20], 'background': 'a.png', 'layers': []}");
    run("render large.json --frames 1 -o l.png");
    const auto large = qx::pictures::read_picture(folder / "l.png");
    EXPECT_EQ(qx::test::channels(*large.world, 39, 19), (std::vector<double>{255, 95, 133, 0}));
    EXPECT_EQ(qx::test::channels(*large.world, 40, 19), (std::vector<double>{0, 0, 0, 0}));
}

TEST_F(Render, FaultsGiveOneLineAStatusAndNoFile) {
    scene("bad.json", "{'size': [8, 8], 'layers': [{'file': 'a.png', 'mod': 2}]}");
    scene("odd.json", "{'size': [9, 8], 'layers': [], 'frames': [1, 2]}");
    scene("endless.json", "{'size': [8, 8], 'layers': []}");
    const auto before = folder.names();
    const struct {
        const char* arguments;
        int status;
        const char* words;
    } cases[] = {
        {"moving.json", 2, "--output"},
        {"no.json -o x.#.png", 1, "no.json: No such file"},
        {"a.png -o x.#.png", 1, "a.png: parse error at line 1"},
        {"bad.json -o x.#.png", 1, "bad.json: /layers/0/mod is an unknown key; the nearest is mode"},
        {"endless.json -o x.#.png", 2, "--frames A-B is needed"},
        {"moving.json -o x.png", 2, "more than one frame"},
        {"moving.json -o x.#.gif", 2, "none of png"},
        {"moving.json -o no/x.#.png", 1, "its folder is missing"},
        {"moving.json -o no/x.mp4", 1, "no/x.mp4: "},
        {"moving.json -o x.#.png --frames 4-5", 1, "/layers/0/file q.05.png: no such file, frame 5 needs it"},
        {"moving.json -o ../$(basename $PWD)/q.%02d.png --frames 3-4", 2, "q.03.png: is a picture of the scene"},
        {"moving.json -o x.mp4 --resume", 2, "--resume is for pictures"},
        {"odd.json -o x.mp4", 1, "x.mp4: frames of 9 x 8: a movie needs even sides"},
        {"moving.json -o x.#.png --frame 1", 2, "--frame; the nearest is --frames"},
    };
    for (const auto& c : cases) {
        const auto outcome = run_qx(std::string("render ") + c.arguments, "cd " + (folder / "") + ";");
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_NE(outcome.errors.find(c.words), std::string::npos) << c.arguments << "\n" << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
        EXPECT_EQ(folder.names(), before) << c.arguments;
    }
}

/// The signal comes while a movie is open, then while the second picture is made: of those the first is there.
TEST_F(RenderDeathTest, InterruptLeavesWholeFramesOnly) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child works in this folder, not in one of its own
    scene("still.json", "{'frames': [1, 3], 'background': 'a.png', 'layers': [{'file': 'b.png'}]}");
    const std::string file = folder / "still.json";
    const auto interrupted_run = [&](const std::string& out, const std::string& sign) {
        standalone::SetExecutor([&sign](const boost::function<void(int)>& task, int count) {
            for (int i = 0; i < count; ++i) {
                if (i == 2 && std::filesystem::exists(sign)) std::raise(SIGINT);
                task(i);
            }
        });
        const char* const arguments[] = {"qx", "render", file.c_str(), "-o", out.c_str()};
        std::exit(qx::tool::run_command(5, arguments));
    };
    const auto before = folder.names().size();
    EXPECT_EXIT(interrupted_run(folder / "i.mp4", file), testing::ExitedWithCode(130), "^qx: interrupted\n$");
    EXPECT_EQ(folder.names().size(), before);
    EXPECT_EXIT(interrupted_run(folder / "i.#.png", folder / "i.1.png"), testing::ExitedWithCode(130),
                "^qx: interrupted\n$");
    EXPECT_EQ(folder.names().size(), before + 1);
    EXPECT_NO_THROW(qx::pictures::read_picture(folder / "i.1.png"));
}

TEST(RenderProgress, TellsSpeedAndTimeLeft) {
    EXPECT_EQ(qx::tool::speed_words(12, 100, 24), "0.50 frames/s, 2:56 left");
    EXPECT_EQ(qx::tool::speed_words(50, 65, 2), "25 frames/s, 0:01 left");
    EXPECT_EQ(qx::tool::speed_words(100, 100, 30), "3.33 frames/s, 0:00 left");
}

}  // namespace
