// SPDX-License-Identifier: Apache-2.0
// Frames of a scene without the command: what a watch is asked and told, who gets the notes, and several at once.
#include "scene/SceneRender.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "scene/Faults.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using qx::pictures::Stopped;

/// Asks and rows are counted; the wish to stop comes after so many rows told.
class CountingWatch : public qx::pictures::Watch {
public:
    explicit CountingWatch(int most = 1 << 30) : most_(most) {}
    bool stops() const noexcept override { return told >= most_; }
    void rows(std::int64_t done, std::int64_t total) noexcept override {
        ++told;
        if (done < 0 || done > total) wrong = true;
        if (done == total) ++finished;
    }
    std::atomic<int> told{0}, finished{0};
    std::atomic<bool> wrong{false};

private:
    const int most_;
};

class SceneFrames : public testing::Test {
protected:
    const qx::test::Born library{32};
    const qx::test::Folder folder;
    Scene scene;

    SceneFrames() {
        for (const char* name : {"a.png", "b.png"}) {
            qx::test::write_bytes(folder / name, 60, 50,
                                  [&](int x, int y) { return qx::test::argb(x + y + name[0], 4 * x, 5 * y, 77); });
        }
        qx::test::put_contents(folder / "s.json", R"({"size": [70, 60], "background": "a.png", "layers": [
            {"file": "b.png", "opacity": {"keys": [{"frame": 0, "value": 0.1}, {"frame": 9, "value": 1}]}},
            {"file": "b.png", "transform": {"rotate": {"keys": [{"frame": 0, "value": 5}, {"frame": 9, "value": 99}]}},
             "shutter": {"angle": 180}}]})");
        scene = read_scene(folder / "s.json");
    }
};

TEST_F(SceneFrames, AWatchHearsOfEveryStepAndStopsAnyOfThem) {
    CountingWatch all;
    const auto frame = SceneRender(scene, all, nullptr).frame(3);
    EXPECT_FALSE(all.wrong);
    EXPECT_EQ(all.finished, 2) << "once for each layer; files tell the rows before the one at hand";
    for (int most = 0; most <= all.told; most += 7) {
        CountingWatch watch(most);
        EXPECT_THROW(SceneRender(scene, watch, nullptr).frame(3), Stopped) << most;
    }
    CountingWatch other(all.told + 1);
    EXPECT_TRUE(qx::test::same_pixels(*SceneRender(scene, other, nullptr).frame(3).world, *frame.world));
}

TEST_F(SceneFrames, SeveralThreadsMakeTheFramesOfOne) {
    std::vector<qx::pictures::Picture> expected(8), found(8);
    SceneRender one(scene, qx::pictures::unwatched(), nullptr);
    for (int i = 0; i < 8; ++i) expected[static_cast<std::size_t>(i)] = one.frame(i);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 8; ++i) {
        threads.emplace_back(
            [&, i] { found[i] = SceneRender(scene, qx::pictures::unwatched(), nullptr).frame(static_cast<int>(i)); });
    }
    for (auto& thread : threads) thread.join();
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_TRUE(qx::test::same_pixels(*found[i].world, *expected[i].world)) << i;
        EXPECT_TRUE(i == 0 || !qx::test::same_pixels(*found[i].world, *found[i - 1].world)) << i;
    }
}

TEST_F(SceneFrames, NotesGoToTheirSinkOnce) {
    scene.depth = 32;
    scene.layers[0].mode = xfer_dissolve;
    std::vector<std::string> notes;
    SceneRender render(scene, qx::pictures::unwatched(), [&](const std::string& note) { notes.push_back(note); });
    render.frame(1);
    render.frame(2);
    EXPECT_EQ(notes, std::vector<std::string>{scene.file + ": mode dissolve changes nothing at depth 32"});
}

TEST_F(SceneFrames, AFaultOfTheWorkNamesTheLayer) {
    const qx::test::Reports reports;
    scene.layers[1].mode = 99;
    try {
        SceneRender(scene, qx::pictures::unwatched(), nullptr).frame(1);
        FAIL();
    } catch (const WorkFault& fault) {
        EXPECT_EQ(fault.subject(), scene.file + ": /layers/1");
        EXPECT_EQ(fault.what(), fault.subject() + " (code " + std::to_string(fault.code()) + ")");
    }
}

}  // namespace
