// SPDX-License-Identifier: Apache-2.0
// Clips in scenes: which picture each frame shows.
#include "scene/Faults.h"
#include "scene/SceneRender.h"
#include "tests/pictures/Support.h"
#include "tests/scene/Painted.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::unwatched;

class SceneClips : public InFolder {
protected:
    SceneClips() {
        for (int i = 5; i <= 8; ++i) write(name(i), painted_picture(i));
    }
    static std::string name(int i) { return "f." + std::to_string(i) + ".png"; }
    /// A pan by four pixels a frame.
    static qx::pictures::Picture painted_picture(int i) {
        return picture<QX_Pixel8>(64, 48, false, [=](int x, int y) {
            const int v = static_cast<int>(40 + 180 * painted(1, x + 4 * i, y));
            return argb(255, v, v / 2, 255 - v);
        });
    }
    /// A frame of a scene that shows one file.
    qx::pictures::Picture frame(const std::string& file, int number, const std::string& more = "") {
        put_contents(folder / "s.json",
                     R"({"size": [64, 48], "rate": 24, "layers": [{"file": )" + file + "}]" + more + "}");
        const Scene scene = read_scene(folder / "s.json");
        notes.clear();
        SceneRender render(scene, [&](const std::string& note) { notes += note + "\n"; });
        return render.frame(number, unwatched());
    }
    bool shows(const std::string& file, int number, int source) {
        return same_pixels(frame(file, number), painted_picture(source));
    }
    std::string notes;

private:
    Born born_{4};
};

TEST_F(SceneClips, FramesCountFromTheClipsFirstOne) {
    const std::string plain = R"({"clip": "f.#.png"})";
    for (int i = -1; i <= 5; ++i) EXPECT_TRUE(shows(plain, i, 5 + std::clamp(i, 0, 3))) << i;
    EXPECT_EQ(notes, "");
    EXPECT_TRUE(shows(R"({"clip": "f.#.png", "offset": -100})", 102, 7));
    EXPECT_TRUE(shows(R"({"clip": "f.#.png", "speed": 2})", 1, 7));
    EXPECT_TRUE(shows(R"({"clip": "f.#.png", "speed": "1/3"})", 6, 7));
    EXPECT_TRUE(shows(R"({"clip": "f.#.png", "rate": 12})", 4, 7));
    EXPECT_TRUE(shows(R"({"clip": "f.#.png", "rate": [48, 2], "speed": 0.5})", 4, 7));
    const std::string map =
        R"({"clip": "f.#.png", "map": {"keys": [{"frame": 0, "value": 8}, {"frame": 3, "value": 5}]}})";
    for (int i = 0; i <= 4; ++i) EXPECT_TRUE(shows(map, i, 8 - std::min(i, 3)));
}

TEST_F(SceneClips, PicturesBetweenFramesAreThoseOfTheRetimer) {
    const auto clip = open_pictures_clip({FramePattern(folder / "f.#.png"), {5, 8, 1}});
    FlowChoices draft;
    draft.quality = FlowQuality::draft;
    const auto of = [&](BetweenMethod method, int depth) {
        RetimeOptions options;
        options.between = {method, flow_params(draft), depth};
        return Retimer(*clip, options).at({1, 0.5}, unwatched()).picture;
    };
    const std::string slow = R"({"clip": "f.#.png", "speed": 0.5, "quality": "draft")";
    EXPECT_TRUE(same_pixels(frame(slow + "}", 3), *of(BetweenMethod::flow, 0)));
    EXPECT_TRUE(same_pixels(frame(slow + R"(, "method": "blend"})", 3), *of(BetweenMethod::blend, 0)));
    EXPECT_TRUE(same_pixels(frame(slow + "}", 3, R"(, "depth": 16)"), *of(BetweenMethod::flow, 16)));
    EXPECT_TRUE(same_pixels(frame(slow + R"(, "cuts": [7]})", 3), painted_picture(6)));
    EXPECT_FALSE(same_pixels(frame(slow + R"(, "cuts": [6]})", 3), painted_picture(6)));
}

TEST_F(SceneClips, WhatCannotBeIsTold) {
    const std::pair<const char*, const char*> rows[] = {
        {R"({"clip": "g.#.png"})", "/layers/0/file/clip"},
        {R"({"clip": "none.mp4"})", "no such file"},
        {R"({"clip": "f.#.png", "name": "f.5.png"})", "name"},
        {R"({"clip": "f.#.png", "speed": 0})", "/layers/0/file/speed"},
        {R"({"clip": "f.#.png", "speed": "fast"})", "/layers/0/file/speed"},
        {R"({"clip": "f.#.png", "speed": 1, "map": {"keys": [{"frame": 0, "value": 8}]}})", "excludes speed"},
        {R"({"clip": "f.#.png", "map": {"keys": []}})", "/layers/0/file/map/keys"},
        {R"({"clip": "f.#.png", "rate": [1]})", "/layers/0/file/rate"},
        {R"({"clip": "f.#.png", "method": "magic"})", "/layers/0/file/method"},
        {R"({"clip": "f.#.png", "quality": 7})", "/layers/0/file/quality"},
        {R"({"clip": "f.#.png", "cuts": "some"})", "/layers/0/file/cuts"},
        {R"({"clip": "f.#.png", "cuts": [6, 9]})",
         "s.json: /layers/0/file/cuts 9: no such frame, the clip has 4 from 5 to 8"},
        {R"({"clip": ""})", "/layers/0/file/clip is an empty text"},
    };
    for (const auto& [file, words] : rows) EXPECT_HOLDS(fault_of<SceneFault>([&] { frame(file, 0); }), words);
    std::filesystem::remove(folder / name(6));
    EXPECT_HOLDS(fault_of<qx::pictures::Failure>([&] { frame(R"({"clip": "f.#.png"})", 0); }), "frame 6 is missing");
}

TEST_F(SceneClips, ResultsAreNotWrittenOverTheClip) {
    put_contents(folder / "s.json", R"({"size": [64, 48], "layers": [{"file": {"clip": "f.#.png"}}]})");
    const Scene scene = read_scene(folder / "s.json");
    EXPECT_EQ(overwritten(scene, FrameRange{0, 5, 1}, FramePattern(folder / "f.#.png"))->path, folder / name(5));
    EXPECT_FALSE(overwritten(scene, FrameRange{0, 4, 1}, FramePattern(folder / "f.#.png")));
    EXPECT_NO_THROW(check_files(scene, FrameRange{0, 50, 1}));
}

TEST(FramePatterns, TellTheNumberInAName) {
    const FramePattern pattern("in/f.###.png");
    EXPECT_EQ(pattern.number_in("in/f.007.png"), 7);
    EXPECT_EQ(pattern.number_in("in/f.1234.png"), 1234);
    for (const char* name :
         {"in/f.7.png", "in/f.0007.png", "in/f.-07.png", "in/f.007.jpg", "f.007.png", "in/f..png", "in/f.png"})
        EXPECT_FALSE(pattern.number_in(name)) << name;
}

}  // namespace
