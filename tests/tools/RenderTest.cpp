// SPDX-License-Identifier: Apache-2.0
// The command qx render.
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tools/RunQx.h"
#include "tools/qx/terminal/Progress.h"

namespace {

using namespace qx::test;

/// A folder with two pictures, a sequence and scenes.
class Render : public QxTest {
protected:
    Render() {
        gradient("a.png", 40, 30, 255);
        gradient("b.png", 16, 12, 100, 50);
        for (int i = 1; i <= 4; ++i) gradient("q.0" + std::to_string(i) + ".png", 16, 12, 200, 40 * i);
        put_quoted("moving.json", R"({'frames': [1, 4], 'background': 'a.png', 'layers': [
            {'file': 'q.##.png', 'mode': 'multiply',
             'opacity': {'keys': [{'frame': 1, 'value': 0.2}, {'frame': 4, 'value': 1}]}},
            {'file': 'b.png', 'mask': 'b.png', 'transform': {'translate': {'keys': [
                {'frame': 1, 'value': [0, 0]}, {'frame': 4, 'value': [12, 9]}]}}}]})");
    }
    /// The given frames of both patterns are the same.
    void expect_same(const std::string& a, const std::string& b, const std::string& frames) const {
        for (const char frame : frames) {
            const auto name = [&](const std::string& pattern) { return pattern + "." + frame + ".png"; };
            EXPECT_TRUE(same(name(a), name(b))) << name(b);
        }
    }
};

using RenderDeathTest = Render;  // runs before threads are there

TEST_F(Render, IsWhatCompMakesOfTheSamePictures) {
    put_quoted("s.json", R"({'background': 'a.png', 'layers': [
        {'file': 'b.png', 'mode': 'screen', 'opacity': 0.5, 'linear': 2.2, 'field': 'odd'},
        {'file': 'q.##.png', 'transform': {'translate': [5, 7]}, 'rgb-only': true,
         'mask': {'file': 'b.png', 'kind': 'inverse-luma', 'at': [9, 9]}}]})");
    for (const std::string depth : {"8", "16", "32"}) {
        run("render s.json --frames 3 -o r.tif --depth " + depth);
        run("comp a.png b.png --mode screen --opacity 0.5 --linear 2.2 --field odd q.03.png --at 5,7 --rgb-only "
            "--mask b.png --mask-kind inverse-luma --mask-at 9,9 -o c.tif --depth " +
            depth);
        EXPECT_TRUE(same("r.tif", "c.tif")) << depth;
    }
    put_quoted("placed.json", R"({'background': 'a.png', 'layers': [
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
    for (const char* frames : {"whole.%d.png", "part.%d.png --frames 3-4", "part.%d.png --frames 1-2 --bands 3 -j 1",
                               "odd.%d.png --frames 1-4x2"}) {
        run(std::string("render moving.json -o ") + frames);
    }
    expect_same("whole", "part", "1234");
    expect_same("whole", "odd", "13");
    EXPECT_FALSE(std::filesystem::exists(folder / "odd.2.png"));
    EXPECT_FALSE(same("whole.1.png", "whole.2.png"));
}

/// Lists in any order, with repeats, below 0, on the line and in the scene.
TEST_F(Render, ListsOfFrames) {
    run("render moving.json -o whole.%d.png");
    run("render moving.json -o l.%d.png --frames 4-3,1,4,3");
    expect_same("whole", "l", "134");
    EXPECT_FALSE(std::filesystem::exists(folder / "l.2.png"));
    put_quoted("below.json", R"({'frames': '-1--2', 'background': 'a.png', 'layers': [
        {'file': {'name': 'q.##.png', 'offset': 4}}]})");
    run("render below.json -o n.####.png");
    run("render below.json -o m.%04d.png --frames -2");
    put_quoted("above.json", R"({'background': 'a.png', 'layers': [{'file': 'q.##.png'}]})");
    run("render above.json -o p.#.png --frames 2,3");
    EXPECT_TRUE(same("n.-0001.png", "p.3.png"));
    EXPECT_TRUE(same("n.-0002.png", "p.2.png"));
    EXPECT_TRUE(same("m.-002.png", "p.2.png"));
}

TEST_F(Render, FilesAreTheSameHoweverManyFramesAreAtWork) {
    const Names ways{"-j 1", "-j 2", "-j 7", "-j 7 --memory 1"};
    for (const std::string name : {"f.#.png", "f.#.tif", "f.#.exr", "f.#.jpg", "f.mp4"}) {
        std::vector<std::string> first;
        for (const std::string& way : ways) {
            run("render moving.json -q " + way + " -o " + name);
            std::vector<std::string> files;
            for (const std::string& file : folder.names()) {
                if (!file.starts_with("f.")) continue;
                files.push_back(bytes(file));
                std::filesystem::remove(folder / file);
            }
            EXPECT_EQ(files.size(), name == "f.mp4" ? 1u : 4u);
            if (first.empty()) first = files;
            EXPECT_TRUE(files == first) << name << way;
        }
    }
}

TEST_F(Render, AFrameThatFailsLeavesThoseBeforeItAlone) {
    put("q.03.png", bytes("q.03.png").substr(0, 60));
    put("f.4.png", "old");
    for (const char* threads : {"1", "2", "7"}) {
        const auto outcome = qx(std::string("render moving.json -o f.#.png -j ") + threads);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(outcome.errors.starts_with("qx: q.03.png: damaged") && outcome.errors.ends_with("\n"))
            << outcome.errors;
        EXPECT_EQ(bytes("f.4.png"), "old");
        EXPECT_FALSE(std::filesystem::exists(folder / "f.3.png"));
        for (const char* whole : {"f.1.png", "f.2.png"}) {
            EXPECT_NO_THROW(read(whole));
            std::filesystem::remove(folder / whole);
        }
        for (const std::string& name : folder.names()) EXPECT_FALSE(name.starts_with(".qx")) << name;
    }
}

TEST_F(Render, ResumeKeepsWholeFramesAndMakesTheOthersAnew) {
    const auto changed_at = [&](const std::string& name) { return std::filesystem::last_write_time(folder / name); };
    for (const std::string ending : {"png", "tif", "exr", "jpg"}) {
        SCOPED_TRACE(ending);
        const std::string out = "f.#." + ending, quiet = " -q ";
        run("render moving.json -o " + out + quiet);
        run("render moving.json -o g.#." + ending + quiet);
        const auto whole = changed_at("f.1." + ending);
        const auto bytes_of = [&](const char* name) { return bytes(name + ending); };
        put("f.2." + ending, bytes("g.1.png"));  // another frame, or another kind of file
        put("f.3." + ending, bytes_of("g.1.").substr(0, bytes_of("g.1.").size() * 3 / 4));  // cut off
        std::filesystem::remove(folder / ("f.4." + ending));
        run("render moving.json --resume -o " + out + quiet);
        EXPECT_EQ(changed_at("f.1." + ending), whole);
        for (const char* number : {"1.", "2.", "3.", "4."}) {
            EXPECT_EQ(bytes_of((std::string("f.") + number).c_str()), bytes_of((std::string("g.") + number).c_str()));
        }
        run("render moving.json --resume --depth 16 -o " + out + quiet);
        EXPECT_NE(changed_at("f.1." + ending), whole) << "another depth";
    }
    const auto before = changed_at("f.1.png");
    std::string scene = bytes("moving.json");
    put("moving.json", "\n " + scene);
    run("render moving.json --resume --depth 16 -q -o f.#.png");
    EXPECT_EQ(changed_at("f.1.png"), before) << "laid out otherwise, the same scene";
    put_quoted("moving.json", scene.insert(scene.find('{') + 1, "'comment': 'new', "));
    run("render moving.json --resume --depth 16 -q -o f.#.png");
    EXPECT_NE(changed_at("f.1.png"), before) << "another scene";
}

TEST_F(Render, ResumeMakesAnewWhatIsOlderThanItsPictures) {
    const auto changed_at = [&](int frame) {
        return std::filesystem::last_write_time(folder / ("f." + std::to_string(frame) + ".png"));
    };
    run("render moving.json -q -o f.#.png");
    std::vector<std::filesystem::file_time_type> before;
    for (int frame = 1; frame <= 4; ++frame) before.push_back(changed_at(frame));
    std::filesystem::last_write_time(folder / "q.03.png", std::filesystem::file_time_type::clock::now());
    run("render moving.json --resume -q -o f.#.png");
    int anew = 0;
    for (int frame = 1; frame <= 4; ++frame) anew += changed_at(frame) != before[static_cast<std::size_t>(frame - 1)];
    EXPECT_EQ(anew, 1);  // the one that shows it
}

TEST_F(Render, ResumeSweepsWhatKilledRunsLeft) {
    run("render moving.json -o f.#.png");
    const std::string killed = "cd " + (folder / "") + "; " + QX_COMMAND +
                               " render moving.json -q -o g.#.png & sleep 0.02; kill -9 $!; wait $! 2>/dev/null";
    put(".qx-not-ours", "stays");
    for (int i = 0; i < 20; ++i) static_cast<void>(std::system(killed.c_str()));
    run("render moving.json -o g.#.png --resume");
    expect_same("f", "g", "1234");
    for (const std::string& name : folder.names())
        EXPECT_TRUE(!name.starts_with(".qx-") || name == ".qx-not-ours") << name;
}

TEST_F(Render, ShardsMakeAllFramesOnce) {
    run("render moving.json -o whole.#.png");
    for (const char* shard : {"1/3", "2/3", "3/3"})
        run(std::string("render moving.json -o part.#.png --shard ") + shard);
    expect_same("whole", "part", "1234");
    run("render moving.json -o odd.#.png --shard 2/4");
    EXPECT_TRUE(std::filesystem::exists(folder / "odd.2.png"));
    EXPECT_FALSE(std::filesystem::exists(folder / "odd.1.png"));
    const auto idle = qx("render moving.json -o idle.#.png --shard 5/9");  // more machines than frames
    EXPECT_EQ(idle.status, 0);
    EXPECT_EQ(idle.errors, "qx: note: --shard 5/9: has nothing to do, there are 4 frames\n");
    expect_faults(2, "render moving.json -o f.#.png --shard ", "",
                  {"3 => not a part I/N", "0/3 => --shard 0/3: 0: not a whole number from 1 to 3", "4/3 => from 1 to 3",
                   "a/3 => --shard a"});
}

TEST_F(Render, KeepGoingMakesWhatCanBeMade) {
    put("q.03.png", bytes("q.03.png").substr(0, 60));
    run("render moving.json -o g.#.png --frames 4");
    for (const char* threads : {"1", "7"}) {
        const auto outcome = qx(std::string("render moving.json -o f.#.png --keep-going -j ") + threads);
        EXPECT_EQ(outcome.status, 5);
        EXPECT_HOLDS(outcome.errors, "qx: q.03.png: damaged");
        EXPECT_HOLDS(outcome.errors, "qx: 1 of 4 frames failed: 3\n");
        EXPECT_FALSE(std::filesystem::exists(folder / "f.3.png"));
        EXPECT_EQ(bytes("f.4.png"), bytes("g.4.png"));
        std::filesystem::remove(folder / "f.4.png");
    }
    expect_fault("render moving.json -o f.mp4 --keep-going", 2, "--keep-going is for pictures");
}

TEST_F(Render, ProgressAndStatsAreTold) {
    const auto outcome = qx("render moving.json -o f.#.png --progress json --stats -j 2");
    std::istringstream lines(outcome.errors);
    std::string line;
    for (int done = 1; done <= 4; ++done) {
        ASSERT_TRUE(std::getline(lines, line));
        const auto told = nlohmann::json::parse(line);
        EXPECT_EQ(told["frame"], done);
        EXPECT_EQ(told["done"], done);
        EXPECT_EQ(told["of"], 4);
        EXPECT_EQ(told["state"], "made");
    }
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_TRUE(line.starts_with("qx: 4 frames in ")) << line;
    EXPECT_HOLDS(qx("render moving.json -o f.#.png --progress json --resume").errors, "\"there\"");
    expect_fault("render moving.json -o f.#.png --progress xml", 2, "--progress xml: not one of line, json, none");
}

/// A fifth of (0.8, 0, 0) over the matte comes back as that colour, at the depth of the file.
TEST_F(Render, MatteIsTakenOut) {
    write("m.png", 4, 4, [](int, int) { return argb(51, 204, 204, 0); });
    const auto real = [](int, int) { return QX_PixelFloat{0.2f, 0.8f, 0.8f, 0}; };
    write("m.exr", picture<QX_PixelFloat>(4, 4, true, real), 32);
    for (const auto& [file, depth, full, step] : {std::tuple{"m.png", "8", 255.0, 5.0}, {"m.exr", "32", 1.0, 1e-5}}) {
        put_quoted("matte.json", std::string("{'size': [4, 4], 'layers': [{'file': '") + file +
                                     "', 'mode': 'copy', 'matte': [0.8, 1, 0]}]}");
        run(std::string("render matte.json -q --frames 1 -o m.tif --depth ") + depth);
        const double expected[] = {0.2, 0.8, 0, 0};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(channels(read("m.tif"), 3, 3)[i], expected[i] * full, step) << file << " " << i;
        }
    }
}

TEST_F(Render, BackgroundsOfColourAndOfAnotherSize) {
    put_quoted("colour.json", "{'size': [5, 4], 'background': [1, 0.5, 0, 0.2], 'layers': []}");
    put_quoted("large.json", "{'size': [50, 20], 'background': 'a.png', 'layers': []}");
    run("render colour.json --frames 1 -o c.png");
    run("render large.json --frames 1 -o l.png");
    EXPECT_EQ(channels(read("c.png"), 4, 3), (List{51, 255, 128, 0}));
    EXPECT_EQ(channels(read("l.png"), 39, 19), (List{255, 95, 133, 0}));
    EXPECT_EQ(channels(read("l.png"), 40, 19), (List{0, 0, 0, 0}));
}

TEST_F(Render, FaultsGiveOneLineAStatusAndNoFile) {
    put_quoted("bad.json", "{'size': [8, 8], 'layers': [{'file': 'a.png', 'mod': 2}]}");
    put_quoted("odd.json", "{'size': [9, 8], 'layers': [], 'frames': [1, 2]}");
    put_quoted("endless.json", "{'size': [8, 8], 'layers': []}");
    expect_faults(1, "render ", "",
                  {"no.json -o x.#.png => no.json: No such file", "a.png -o x.#.png => a.png: parse error at line 1",
                   "bad.json -o x.#.png => bad.json: /layers/0/mod is an unknown key; the nearest is mode",
                   "moving.json -o no/x.#.png => its folder is missing", "moving.json -o no/x.mp4 => no/x.mp4: ",
                   "moving.json -o x.#.png --frames 4-5 => /layers/0/file q.05.png: no such file, frame 5 needs it",
                   "odd.json -o x.mp4 => x.mp4: frames of 9 x 8: yuv420p needs even sides"});
    expect_faults(2, "render ", "",
                  {"moving.json => --output", "endless.json -o x.#.png => --frames A-B is needed",
                   "moving.json -o x.png => more than one frame", "moving.json -o x.#.gif => none of png",
                   "moving.json -o ../$(basename $PWD)/q.%02d.png --frames 3-4 => q.03.png: is a picture of the scene",
                   "moving.json -o x.#.png --memory 2X => --memory 2X: not a size",
                   "moving.json -o x.#.png --compression 10 => --compression 10",
                   "moving.json -o x.#.tif --compression 1 => --compression 1: not one of none, lzw",
                   "moving.json -o x.#.png --half => --half is for OpenEXR",
                   "moving.json -o x.mp4 --resume => --resume is for pictures",
                   "moving.json -o x.#.png --frame 1 => --frame; the nearest is --frames"});
}

TEST_F(Render, CheckTellsEveryFault) {
    const auto fine = qx("render moving.json --check");
    EXPECT_EQ(fine.status, 0);
    EXPECT_EQ(fine.output + fine.errors, "moving.json: fine, 4 frames\n");
    EXPECT_EQ(qx("render moving.json --check --frames 2").output, "moving.json: fine, 1 frame\n");
    put_quoted("bad.json", R"({'size': [8, 0], 'depth': 9, 'frames': [1, 2], 'layers': [
        {'file': 'a.png', 'mod': 2}, {'file': 'a.png'}, {'layers': [{'file': 'no.png'}, {'solid': [2, 0, 0]}]}]})");
    const auto bad = qx("render bad.json --check");
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.output, "");
    const std::string in = "qx: bad.json: /";
    EXPECT_EQ(bad.errors, in + "size/1 is not a whole number from 1 to 30000\n" +  //
                              in + "depth is none of 8, 16, 32\n" +                //
                              in + "layers/0/mod is an unknown key; the nearest is mode\n" + in +
                              "layers/2/layers/0/file no.png: no such file\n" + in +
                              "layers/2/layers/1/solid/0 is not a number from 0 to 1\n");
    put("q.02.png", "no picture");
    const auto files = qx("render moving.json --check --frames 1-6");
    EXPECT_EQ(files.status, 1);
    EXPECT_HOLDS(files.errors, "qx: moving.json: /layers/0/file q.02.png: ");
    EXPECT_HOLDS(files.errors, "qx: moving.json: /layers/0/file q.05.png: no such file, frame 5 needs it\n");
    EXPECT_HOLDS(files.errors, "qx: moving.json: /layers/0/file q.06.png: no such file, frame 6 needs it\n");
    EXPECT_EQ(std::count(files.errors.begin(), files.errors.end(), '\n'), 3);
}

/// The signal comes while a movie is open, then while the second picture is made: of those the first is there.
TEST_F(RenderDeathTest, InterruptLeavesWholeFramesOnly) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child works in this folder, not in one of its own
    put_quoted("still.json", "{'frames': [1, 3], 'background': 'a.png', 'layers': [{'file': 'b.png'}]}");
    const std::string scene = folder / "still.json";
    const auto before = folder.names().size();
    for (const auto& [out, sign, left] : {std::tuple{"i.mp4", "still.json", 0u}, {"i.#.png", "i.1.png", 1u}}) {
        EXPECT_EXIT(run_interrupted({SIGINT}, folder / sign, {"render", scene, "-o", folder / out}),
                    testing::ExitedWithCode(130), "^qx: interrupted\n$");
        EXPECT_EQ(folder.names().size(), before + left);
    }
    EXPECT_NO_THROW(read("i.1.png"));
}

TEST_F(Render, TheExampleRunsWhereItLies) {
    run("render examples/moving-layer/scene.json --frames 1-18x17 -o " + (folder / "f.#.png"), "cd '" QX_SOURCES "';");
    const auto evening = qx::pictures::read_picture(QX_SOURCES "/examples/moving-layer/evening.png");
    EXPECT_TRUE(same_pixels(read("f.1.png"), evening)) << "no layer is in sight yet";
    EXPECT_FALSE(same_pixels(read("f.18.png"), evening));
}

TEST(RenderProgress, TellsSpeedAndTimeLeft) {
    EXPECT_EQ(qx::tool::speed_words(12, 100, 24), "0.50 frames/s, 2:56 left");
    EXPECT_EQ(qx::tool::speed_words(50, 65, 2), "25 frames/s, 0:01 left");
    EXPECT_EQ(qx::tool::speed_words(100, 100, 30), "3.33 frames/s, 0:00 left");
}

}  // namespace
