// SPDX-License-Identifier: Apache-2.0
// qx retime: pictures between pictures, and what is refused.
#include <nlohmann/json.hpp>

#include "tests/scene/Painted.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;
using namespace std::string_literals;

class Retime : public QxTest {
protected:
    void SetUp() override {
        std::filesystem::create_directory(folder / "in");
        paint(1, 4);
    }
    /// A pan by four pixels a frame.
    void paint(int first, int last) const {
        for (int i = first; i <= last; ++i) {
            write("in/f." + std::to_string(i) + ".png", 64, 48, [=](int x, int y) {
                const int v = static_cast<int>(40 + 180 * painted(1, x + 4 * i, y));
                return argb(255, v, v / 2, 255 - v);
            });
        }
    }
    Outcome retime(const std::string& arguments) const {
        return qx("retime 'in/f.#.png' --in 1-4 --no-cache " + arguments);
    }
    nlohmann::json told(const std::string& arguments) const {
        const auto outcome = retime(arguments + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    }
    std::string source(int i) const { return "in/f." + std::to_string(i) + ".png"; }
};

TEST_F(Retime, SlowsDownAndCopiesTheFramesWhoseTimesAreMet) {
    const auto all = told("--speed 0.5 -o o.#.png");
    EXPECT_EQ(all["frames"], 8);
    EXPECT_EQ(all["copied"], 5);  // the last one is shown twice
    EXPECT_EQ(all["made"], 3);
    EXPECT_EQ(all["pairs"]["computed"], 3);
    EXPECT_EQ(all["pairs"]["found"], 0);
    EXPECT_EQ(all["cuts"], nlohmann::json::array());
    for (int i = 1; i <= 4; ++i) EXPECT_TRUE(same("o." + std::to_string(2 * i - 1) + ".png", source(i))) << i;
    EXPECT_TRUE(same("o.8.png", source(4)));
    EXPECT_FALSE(same("o.2.png", source(1)) || same("o.2.png", source(2)));
}

TEST_F(Retime, AFramesPictureDoesNotDependOnOthersThreadsOrTheCache) {
    told("--speed 0.3 -o o.##.png -j 1");
    told("--speed 0.3 -o p.##.png --frames 2-14x3 -j 4");
    told("--speed 0.3 -o q.##.png --pairs 3 --memory 1M -j 3");
    for (const int number : {2, 5, 8, 11, 14}) {
        const std::string name = (number < 10 ? ".0" : ".") + std::to_string(number) + ".png";
        EXPECT_EQ(contents(folder / ("o" + name)), contents(folder / ("p" + name))) << number;
        EXPECT_EQ(contents(folder / ("o" + name)), contents(folder / ("q" + name))) << number;
    }
    EXPECT_EQ(std::ranges::count_if(folder.names(), [](const auto& n) { return n.starts_with("p."); }), 5);
    const std::string cached = "retime 'in/f.#.png' --in 1-4 --speed 0.3 --cache-dir cache --json -o ";
    EXPECT_EQ(nlohmann::json::parse(qx(cached + "r.##.png").output)["pairs"]["computed"], 3);
    const auto again = nlohmann::json::parse(qx(cached + "s.##.png").output)["pairs"];
    EXPECT_EQ(again["computed"], 0);
    EXPECT_EQ(again["found"], 3);
    for (const std::string name : {"r.05.png", "s.05.png"})
        EXPECT_EQ(contents(folder / name), contents(folder / "o.05.png"));
}

TEST_F(Retime, KeysNameResults) {
    put_contents(folder / "map.json", R"({"keys": [{"frame": 10, "value": 4}, {"frame": 13, "value": 1}]})");
    const auto all = told("--map map.json -o o.#.png");
    EXPECT_EQ(all["copied"], 4);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(same("o." + std::to_string(10 + i) + ".png", source(4 - i)));
    EXPECT_FALSE(std::filesystem::exists(folder / "o.9.png") || std::filesystem::exists(folder / "o.14.png"));
}

TEST_F(Retime, ResumesAndNumbers) {
    told("--speed 0.5 --start 101 -o o.###.png");
    const std::string before = contents(folder / "o.102.png");
    std::filesystem::remove(folder / "o.104.png");
    put_contents(folder / "o.105.png", before.substr(0, before.size() / 2));
    const auto all = told("--speed 0.5 --start 101 -o o.###.png --resume");
    EXPECT_EQ(all["skipped"], 6);
    EXPECT_EQ(all["made"], 1);
    EXPECT_TRUE(same("o.105.png", source(3)));
    EXPECT_EQ(contents(folder / "o.102.png"), before);
    std::filesystem::last_write_time(folder / source(4), std::filesystem::file_time_type::clock::now());
    EXPECT_EQ(told("--speed 0.5 --start 101 -o o.###.png --resume")["skipped"], 5);            // three show it
    EXPECT_EQ(told("--speed 0.5 --start 101 -o o.###.png --resume --bands 3")["skipped"], 0);  // results depend on them
    EXPECT_EQ(told("--speed 0.5 --start 101 -o o.###.png --resume --method blend")["skipped"], 0);   // another job's
    EXPECT_EQ(told("--speed 0.25 --start 101 -o o.###.png --resume --method blend")["skipped"], 1);  // of one moment
}

TEST_F(Retime, SharesAreFramesInARowAndGiveWhatOneRunDoes) {
    told("--speed 0.3 -o o.##.png");
    const Names all = folder.names();
    int frames = 0;
    for (const char* part : {"1/3", "2/3", "3/3"}) {
        const auto share = told("--speed 0.3 -o p.##.png --shard " + std::string(part));
        EXPECT_LE(share["pairs"]["computed"], 2) << part;
        frames += share["frames"].get<int>();
    }
    EXPECT_EQ(frames, told("--speed 0.3 -o o.##.png --resume")["skipped"]);
    for (const std::string& name : all) {
        if (!name.starts_with("o.")) continue;
        EXPECT_EQ(contents(folder / name), contents(folder / ("p" + name.substr(1)))) << name;
    }
    const auto alone = told("--speed 0.3 -o q.##.png --frames 2-8x3 --shard 2/3");
    EXPECT_EQ(alone["frames"], 1);
    EXPECT_EQ(contents(folder / "q.05.png"), contents(folder / "o.05.png"));
}

TEST_F(Retime, GoesOnBehindAFrameThatFailsAndTellsWhichAndHowFar) {
    const std::string broken = contents(folder / source(3));
    put_contents(folder / source(3), broken.substr(0, broken.size() / 2));
    const auto outcome =
        retime("--speed 0.5 --method blend --cuts none -o o.#.png --keep-going --json --progress json --stats");
    EXPECT_EQ(outcome.status, 5);
    EXPECT_EQ(nlohmann::json::parse(outcome.output)["failed"], (std::vector<int>{4, 5, 6}));
    EXPECT_HOLDS(outcome.errors, "qx: 3 of 8 frames failed: 4,5,6");
    EXPECT_HOLDS(outcome.errors, R"({"frame":8,"state":"made","done":8,"of":8)");
    EXPECT_HOLDS(outcome.errors, "qx: 5 frames in ");
    EXPECT_EQ(folder.names(), (Names{"in", "o.1.png", "o.2.png", "o.3.png", "o.7.png", "o.8.png"}));
    put_contents(folder / source(3), broken);
    EXPECT_EQ(told("--speed 0.5 --method blend --cuts none -o o.#.png --resume")["skipped"], 5);
}

TEST_F(Retime, GoesOnWhereTheFirstFrameIsMissingOrDamaged) {
    for (const bool is_missing : {true, false}) {
        std::filesystem::remove(folder / source(1));
        if (!is_missing) put_contents(folder / source(1), "no picture");
        const auto outcome = retime("--speed 0.5 --method blend --cuts none -o o.#.png --keep-going");
        EXPECT_EQ(outcome.status, 5) << outcome.errors;
        EXPECT_HOLDS(outcome.errors, "qx: 2 of 8 frames failed: 1,2");
        EXPECT_FALSE(std::filesystem::exists(folder / "o.2.png"));
        EXPECT_TRUE(same("o.3.png", source(2)));
    }
    EXPECT_EQ(retime("--speed 0.5 -o p.#.png").status, 1);
}

TEST_F(Retime, HoldsOrMixesOnACut) {
    for (int i = 3; i <= 4; ++i) {
        write(source(i), 64, 48, [=](int x, int y) {
            const int v = static_cast<int>(30 + 200 * painted(9, x + 4 * i, y));
            return argb(255, 255 - v, v, v);
        });
    }
    auto outcome = retime("--speed 0.25 -o o.##.png --json");
    EXPECT_EQ(nlohmann::json::parse(outcome.output)["cuts"], nlohmann::json::array({3}));
    EXPECT_HOLDS(outcome.errors, "shots begin at 3");
    EXPECT_TRUE(same("o.06.png", source(2)));
    EXPECT_TRUE(same("o.07.png", source(2)));
    EXPECT_TRUE(same("o.08.png", source(3)));
    EXPECT_FALSE(same("o.02.png", source(1)));
    told("--speed 0.25 --method blend --cuts none -o b.##.png");
    told("--speed 0.25 --cuts 3 --on-cut blend -o c.##.png");
    EXPECT_TRUE(same("c.07.png", "b.07.png"));
    EXPECT_FALSE(same("c.03.png", "b.03.png"));
    EXPECT_EQ(retime("--speed 0.25 --cuts 3 -o c.##.png").errors, "");  // what was asked for is no news
    told("--speed 0.25 --cuts 2,3,4 -o d.##.png");
    for (const int i : {2, 6, 10})
        EXPECT_TRUE(same("d." + std::string(i < 10 ? "0" : "") + std::to_string(i) + ".png", source(i / 4 + 1)));
}

TEST_F(Retime, TakesGapsAsLongerIntervals) {
    std::filesystem::remove(folder / "in/f.2.png");
    EXPECT_HOLDS(retime("--speed 1 -o o.#.png").errors, "frame 2 is missing");
    const auto all = told("--speed 1 --gaps --method blend -o o.#.png");
    EXPECT_EQ(all["frames"], 4);
    EXPECT_EQ(all["made"], 1);
    const List a = channels(read(source(1)), 9, 9), b = channels(read(source(3)), 9, 9);
    EXPECT_NEAR(channels(read("o.2.png"), 9, 9)[1], (a[1] + b[1]) / 2, 1);
}

TEST_F(Retime, WhatIsWholeStaysAndWhatCanBeKnownIsRefusedBefore) {
    const std::string broken = contents(folder / source(3));
    put_contents(folder / source(3), broken.substr(0, broken.size() / 2));
    for (const char* pairs : {"1", "3"}) {
        const auto outcome = retime("--speed 0.25 --cuts none -o o.##.png -j 3 --pairs " + std::string(pairs));
        EXPECT_EQ(outcome.status, 1);
        EXPECT_HOLDS(outcome.errors, source(3));
        Names expected{"in"};  // the last one is the copy of frame 2
        for (const char* name : {"o.01.png", "o.02.png", "o.03.png", "o.04.png", "o.05.png"}) expected.push_back(name);
        EXPECT_EQ(folder.names(), expected);
    }
    EXPECT_EQ(told("--speed 0.25 --cuts none --frames 1-5 -o o.##.png --resume")["skipped"], 5);
    for (const std::string ending : {"png", "jpg", "tif", "exr"}) {
        for (int i = 1; i <= 4; ++i) write("in/g." + std::to_string(i) + "." + ending, noise(i < 4 ? 64 : 60, 48));
        const std::string clip = "retime 'in/g.#." + ending + "' --in 1-4 --speed 0.5 --method nearest --no-cache ";
        const std::string words = "in/g.4." + ending + ": 60 x 48 pixels, the clip's first frame has 64 x 48";
        expect_fault(clip + "-o p.#.png", 1, words);
        expect_fault(clip + "-o p.#.png --frames 5-6", 1, words);
        EXPECT_EQ(qx(clip + "-o p.#.png --frames 1-5").status, 0);  // which the last one is no part of
        for (int i = 1; i <= 5; ++i) std::filesystem::remove(folder / ("p." + std::to_string(i) + ".png"));
    }
}

TEST_F(Retime, OneFrameIsShownThroughout) {
    const auto outcome = qx("retime 'in/f.#.png' --in 2-2 --speed 0.5 -o o.#.png");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_HOLDS(outcome.errors, "has one frame");
    EXPECT_TRUE(same("o.1.png", source(2)) && same("o.2.png", source(2)));
}

TEST_F(Retime, ScenesWithClipsHaveTheOptionsOfTheCache) {
    put_contents(folder / "s.json", R"({"size": [64, 48], "frames": [0, 6], "layers": [
        {"file": {"clip": "in/f.#.png", "speed": 0.5}}]})");
    const auto entries = [&](const std::string& cache) {
        return nlohmann::json::parse(qx("cache --json --cache-dir " + cache).output)["entries"].get<int>();
    };
    run("render s.json -o a.#.png --cache-dir cache");
    EXPECT_EQ(entries("cache"), 3);
    run("render s.json -o b.#.png", "QX_CACHE_DIR=other");
    EXPECT_EQ(entries("other"), 3);
    run("render s.json -o c.#.png --no-cache", "QX_CACHE_DIR=none");
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));
    run("render s.json -o d.#.png --cache-dir small --cache-limit 1K");
    EXPECT_LT(entries("small"), 3);
    EXPECT_TRUE(same("a.3.png", "b.3.png") && same("a.3.png", "c.3.png") && same("a.3.png", "d.3.png"));
    put("file", "no folder");
    const auto outcome = qx("render s.json -o e.#.png --cache-dir file");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_HOLDS(outcome.errors, "qx: note: the cache in file cannot be");
    EXPECT_TRUE(same("a.3.png", "e.3.png"));
}

TEST_F(Retime, WrongUseIsOneLine) {
    const std::string form = ": not a number from 0.001 to 1000, such as ";
    for (const std::string& speed : {"0"s, "-1"s, "nan"s, "inf"s, "1e9"s, "2000"s, "x"s}) {
        const std::string input = "retime 'in/f.#.png' --in 1-4 -o o.#.png ";
        expect_fault(input + "--speed=" + speed, 2, "--speed " + speed + form + "0.25 or 1/3");
        expect_fault(input + "--fps=" + speed, 2, "--fps " + speed + form + "60 or 24000/1001");
    }
    put_contents(folder / "falls.json", R"({"keys": [{"frame": 2, "value": 1}, {"frame": 1, "value": 1}]})");
    put_contents(folder / "none.json", R"({"keys": []})");
    put_contents(folder / "odd.json", R"({"keys": [{"frame": 2, "value": 1}], "speed": 1})");
    put_contents(folder / "good.json", R"({"keys": [{"frame": 2, "value": 1}]})");
    write("in/g.1.png", 64, 48, [](int, int) { return argb(255, 1, 2, 3); });
    write("in/g.2.png", 60, 48, [](int, int) { return argb(255, 1, 2, 3); });
    expect_faults(
        2, "retime 'in/f.#.png' ", "",
        {"--in 1-4 -o o.#.png => one of --speed, --fps and --map is needed",
         "--speed 1 -o o.#.png => --in A-B is needed",
         "--in 1-4x2 --speed 1 -o o.#.png => there is no step",
         "--in 1-4 --map good.json --speed 1 -o o.#.png => --map tells the speed",
         "--in 1-4 --map good.json --start 7 -o o.#.png => --map numbers the results",
         "--in 1-4 --speed 0.5 -o o.png => more than one frame needs a place",
         "--in 1-4 --speed 0.5 -o o.xyz => its ending is none of png, jpg, tif, exr, raw, nor of movies: mp4, "
         "mov, mkv, webm, avi, nut",
         "--in 1-4 --speed 0.5 -o 'in/f.#.png' => is the input",
         "--in 1-4 --speed 1 --frames 4-9 -o o.#.png => the results are 1 to 4",
         "--in 1-4 --speed 1 --cuts 7 -o o.#.png => --cuts 7: no such frame, the clip has 4 from 1 to 4",
         "--in 1-4 --speed 1 --frames 1-5x0 -o o.#.png => --frames 1-5x0: 0 is not from 1 to 9999999",
         "--in 1-4 --speed 1 --quality fine -o o.#.png => --quality fine",
         "--in 1-4 --speed 1 --detail 0.01 -o o.#.png => --detail 0.01",
         "--in 1-4 --speed 1 --block 3 -o o.#.png => --block 3",
         "--in 1-4 --speed 1 --lossless -o o.#.png => --lossless is for movies",
         "--in 1-4 --speed 1 --start 9999999 -o o.#.png => more than numbers have room for",
         "--in 1-4 --speed 1 --resume -o o.mp4 => --resume is for pictures",
         "--in 1-4 --speed 1 --lossless --crf 4 -o o.mkv => --crf does not go with --lossless",
         "--in 1-4 --speed 1 --shard 1/2 -o o.mp4 => --shard is for pictures",
         "--in 1-4 --speed 1 --raw 3x3:rgb24 -o o.#.png => --raw is for a picture on standard input"});
    expect_faults(1, "retime ", " -o o.#.png",
                  {"'in/f.#.png' --in 1-4 --map falls.json => does not come after the key before",
                   "'in/f.#.png' --in 1-4 --map none.json => /keys", "'in/f.#.png' --in 1-4 --map odd.json => speed",
                   "'in/f.#.png' --in 1-9 --speed 1 => is missing",
                   "'in/g.#.png' --in 1-2 --speed 0.5 => 60 x 48 pixels, the clip's first frame has 64 x 48",
                   "none.mp4 --speed 0.5 => none.mp4"});
    expect_fault("retime in/f.1.png --speed 0.5 -o o.#.png", 2, "is one picture");
    expect_fault("retime in/f.1.png --speed 0.5 --gaps -o o.#.png", 2, "--gaps");
}

}  // namespace
