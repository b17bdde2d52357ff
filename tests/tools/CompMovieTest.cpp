// SPDX-License-Identifier: Apache-2.0
// qx comp of movies: each frame as a picture of its own, and what the result has of its background.
#include "pictures/Movie.h"
#include "tests/tools/RunQx.h"

namespace {

using namespace qx::test;
namespace pictures = qx::pictures;

class CompMovies : public QxTest {
protected:
    /// Three frames whose left top quarter is white, in a file that says more of itself.
    void write_movie(const std::string& name, const pictures::MovieSettings& settings) const {
        pictures::MovieFile movie(folder / name, 64, 32, settings);
        const auto frame = picture<QX_Pixel8>(64, 32, false, [](int x, int y) {
            const std::uint8_t v = x < 32 && y < 16 ? 255 : 0;
            return QX_Pixel8{255, v, v, v};
        });
        for (int i = 0; i < 3; ++i) movie.add(frame);
        movie.commit();
    }
    bool is_light(const std::string& name, int x, int y) const {
        return pictures::row_of<QX_Pixel8>(*read(name).world, y)[x].green > 128;
    }
};

/// Each frame as if its picture had been composited; the layer's frames by time.
TEST_F(CompMovies, AreComposited) {
    gradient("b.png", 20, 16, 128);
    for (int i = 1; i <= 4; ++i) {
        write("a." + std::to_string(i) + ".png", 40, 32, [=](int x, int y) { return argb(255, 6 * x, 60 * i, 7 * y); });
    }
    run("retime 'a.#.png' --in 1-4 --speed 1 --lossless --no-cache -q -o a.mkv");
    const std::string how = " b.png --gravity south-east --at 10%,1 --opacity 0.6 --mode screen -q ";
    run("comp a.mkv" + how + "--emit-scene s.json -o o.#.png");
    run("render s.json -q -o r.#.png");
    for (int i = 0; i < 4; ++i) {
        const std::string frame = std::to_string(i) + ".png";
        run("comp a." + std::to_string(i + 1) + ".png" + how + "-o one.png");
        EXPECT_TRUE(same("o." + frame, "one.png")) << i;
        EXPECT_TRUE(same("r." + frame, "one.png")) << i;
    }
    run("comp b.png a.mkv --fit cover --mask a.mkv -q --crf 1 -o l.mp4");
    const pictures::MovieReader made(folder / "l.mp4");
    EXPECT_EQ(made.facts().width, 20);
    EXPECT_EQ(made.facts().rate.number, 25 * made.facts().rate.per);
    EXPECT_EQ(made.frames(), 4);
    const std::string before = contents(folder / "a.mkv");
    expect_faults(
        2, "comp ", "",
        {"a.mkv b.png -o o.png => -o o.png: more than one frame needs a place for its number",
         "a.mkv b.png -o a.mkv => -o a.mkv: is the BACKGROUND, which is read while the result is written",
         "b.png a.mkv -o ./a.mkv => -o ./a.mkv: is a LAYER",
         "b.png a.mkv -o o.mp4 --codec foo => o.mp4: codec foo: FFmpeg has no such encoder",
         "b.png a.mkv -o o.mp4 --codec prores_ks => codec prores_ks: is none that mp4 holds",
         "b.png a.mkv -o o.mp4 --pixel-format foo => pixel-format foo: FFmpeg knows no such",
         "b.png a.mkv -o o.mp4 --pixel-format pal8 => pixel-format pal8: libx264 takes yuv420p",
         "b.png a.mkv -o o.mp4 --crf 52 => crf 52: libx264 takes 0 to 51",
         "b.png a.mkv -o o.mkv --codec ffv1 --crf 5 => crf 5: ffv1 has no such scale, but a bitrate",
         "b.png a.mkv -o o.mp4 --bitrate 9999M => --bitrate 9999M: not a number of bits a second",
         "a.#.png b.png -o o.png => a.#.png: numbered pictures are for scenes",
         "b.png b.png -o o.mp4 => -o o.mp4: no movie is composited; qx render makes movies of scenes",
         "a.mkv b.png -o o.mp4 --effect " QX_TEST_EFFECTS "/Faulty.so => -o o.mp4: a scene names no effect by its file",
         "a.mkv b.png -o o.ts => -o o.ts: its ending is none of png",
         "a.mkv b.png -o o.mp4 --jpeg-quality 80 => --jpeg-quality is for JPEG",
         "a.mkv b.png -o o.png --crf 20 => --crf is for movies"});
    expect_fault("comp none.mp4 b.png -o o.mp4", 1, "none.mp4: No such file");
    expect_fault("comp a.mkv b.png -o no/o.mp4", 1, "no/o.mp4: its folder is missing");
    EXPECT_EQ(contents(folder / "a.mkv"), before);
}

/// By the EXIF standard the first row of orientation 6 is seen at the right side, its first column at the top.
TEST_F(CompMovies, AreTurnedAsTheyAreToBeSeen) {
    write_movie("m.mov", {.orientation = 6});
    write("dot.png", 4, 4, [](int, int) { return QX_Pixel8{255, 255, 255, 255}; });
    run("comp m.mov dot.png --at 0,60 -q -o c.#.png");
    run("retime m.mov --speed 1 -q --no-cache -o t.#.png");
    for (const std::string name : {"c.0.png", "t.1.png"}) {
        SCOPED_TRACE(name);
        ASSERT_EQ(read(name).world->width, 32);
        EXPECT_TRUE(is_light(name, 28, 5));
        EXPECT_FALSE(is_light(name, 4, 5));
        EXPECT_FALSE(is_light(name, 28, 40));
    }
    EXPECT_TRUE(is_light("c.0.png", 1, 62));
    run("comp m.mov dot.png --no-orient -q -o s.#.png");
    EXPECT_EQ(read("s.0.png").world->width, 64);
    run("retime m.mov --speed 1 -q --no-cache -o t.mov");
    EXPECT_EQ(pictures::MovieReader(folder / "t.mov").facts().showing.orientation, 6);
}

TEST_F(CompMovies, KeepWhatTheirBackgroundSays) {
    write_movie("m.mov", {.rate = {30000, 1001}, .aspect = {4, 3}, .time_code = "01:00:00;02"});
    write("dot.png", 4, 4, [](int, int) { return QX_Pixel8{255, 255, 255, 255}; });
    const auto told = [&](const std::string& name) {
        const pictures::MovieReader movie(folder / name);
        const auto& facts = movie.facts();
        return std::tuple(facts.showing.aspect.number, facts.showing.aspect.per,
                          std::string(facts.time_code == nullptr ? "" : facts.time_code));
    };
    for (const std::string name : {"c.mov", "c.mp4", "c.mkv"}) {
        run("comp m.mov dot.png -q -o " + name);
        EXPECT_EQ(told(name), std::tuple(4, 3, std::string("01:00:00;02"))) << name;
    }
    const auto outcome = qx("comp m.mov dot.png --at 99,0 -o c.avi");
    for (const char* note : {"c.avi: avi keeps no time code", "dot.png: lies outside of the picture",
                             "dot.png: its pixels have another shape than those of the result"}) {
        EXPECT_NE(outcome.errors.find(note), std::string::npos) << outcome.errors;
    }
    write_movie("bad.mkv", {.time_code = "01:00:00;02"});  // drops frames, which 25 a second never do
    EXPECT_EQ(std::get<2>(told("bad.mkv")), "");
}

/// A movie is one by its head too, whatever its name.
TEST_F(CompMovies, HaveAnyName) {
    write_movie("m.mp4", {});
    std::filesystem::rename(folder / "m.mp4", folder / "m.bin");
    write("dot.png", 4, 4, [](int, int) { return QX_Pixel8{255, 255, 255, 255}; });
    run("comp m.bin dot.png -q -o c.#.png");
    EXPECT_TRUE(is_light("c.2.png", 20, 10));
    for (const std::string line : {"hash m.bin", "convert m.bin -o o.png", "matte m.bin -o o.png"})
        expect_fault(line, 1, "m.bin: is a movie, where a picture is wanted");
}

}  // namespace
