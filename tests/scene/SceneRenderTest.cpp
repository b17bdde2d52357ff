// SPDX-License-Identifier: Apache-2.0
// Frames of a scene without the command: what a watch is asked and told, who gets the notes, and several at once.
#include "scene/SceneRender.h"

#include "platform/standalone/Host.h"
#include "scene/Faults.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

class SceneFrames : public InFolder {
protected:
    const Born library{32};
    Scene scene;

    SceneFrames() {
        for (const char* name : {"a.png", "b.png"}) {
            write(name, 60, 50, [&](int x, int y) { return argb(x + y + name[0], 4 * x, 5 * y, 77); });
        }
        put("s.json", R"({"size": [70, 60], "background": "a.png", "layers": [
            {"file": "b.png", "opacity": {"keys": [{"frame": 0, "value": 0.1}, {"frame": 9, "value": 1}]}},
            {"file": "b.png", "transform": {"rotate": {"keys": [{"frame": 0, "value": 5}, {"frame": 9, "value": 99}]}},
             "shutter": {"angle": 180}}]})");
        scene = read_scene(folder / "s.json");
    }
    Picture frame(int number, Watch& watch = unwatched()) { return SceneRender(scene, nullptr).frame(number, watch); }
};

TEST_F(SceneFrames, AWatchHearsOfEveryStepAndStopsAnyOfThem) {
    standalone::SetPoolLimit(1);  // the host's callbacks run on one thread: how often differs with the order of several
    CountingWatch all;
    const auto whole = frame(3, all);
    EXPECT_FALSE(all.wrong);
    EXPECT_EQ(all.finished, 2) << "once for each layer; files tell the rows before the one at hand";
    for (int most = 0; most <= all.told; most += 7) {
        CountingWatch watch(most);
        EXPECT_THROW(frame(3, watch), Stopped) << most;
    }
    CountingWatch other(all.told + 1);
    EXPECT_TRUE(same_pixels(frame(3, other), whole));
    standalone::SetPoolLimit(0);
}

TEST_F(SceneFrames, SeveralThreadsMakeTheFramesOfOne) {
    Picture expected[8], found[8];
    SceneRender one(scene, nullptr);
    for (int i = 0; i < 8; ++i) expected[i] = one.frame(i, unwatched());
    in_threads(8, [&](int i) { found[i] = frame(i); });
    for (int i = 0; i < 8; ++i) {
        EXPECT_TRUE(same_pixels(found[i], expected[i])) << i;
        EXPECT_TRUE(i == 0 || !same_pixels(found[i], found[i - 1])) << i;
    }
}

/// What effects make of a layer is made once and shared, or anew for each frame where it moves.
TEST_F(SceneFrames, FramesAtOnceShareWhatEffectsMake) {
    put("e.json", R"({"background": "a.png", "layers": [
        {"file": "b.png", "effects": [{"effect": "blur", "radius": 4, "grow": true},
            {"effect": "matte", "masks": [{"file": "a.png", "feather": 5}, {"file": "b.png", "op": "subtract"}]}]},
        {"file": "b.png", "effects": [{"effect": "adjust", "hue": {"keys": [{"frame": 0, "value": 0},
            {"frame": 9, "value": 200}]}}, {"effect": "blend", "with": "a.png", "ratio": 0.3}]}]})");
    scene = read_scene(folder / "e.json");
    SceneRender shared(scene, nullptr);
    Picture found[8];
    in_threads(8, [&](int i) { found[i] = shared.frame(i, unwatched()); });
    for (int i = 0; i < 8; ++i) EXPECT_TRUE(same_pixels(found[i], frame(i))) << i;
    EXPECT_FALSE(same_pixels(found[0], found[7]));
}

TEST_F(SceneFrames, NotesGoToTheirSinkOnce) {
    scene.depth = 32;
    scene.layers[0].mode = xfer_dissolve;
    Names notes;
    SceneRender render(scene, [&](const std::string& note) { notes.push_back(note); });
    render.frame(1, unwatched());
    render.frame(2, unwatched());
    EXPECT_EQ(notes, Names{scene.file + ": mode dissolve changes nothing at depth 32"});
}

TEST_F(SceneFrames, AFaultOfTheWorkNamesTheLayer) {
    const Reports reports;
    scene.layers[1].mode = 99;
    EXPECT_EQ(fault_of<WorkFault>([&] { frame(1); }),
              scene.file + ": /layers/1 (code " + std::to_string(kQX_UnimplementedMode) + ")");
}

}  // namespace
