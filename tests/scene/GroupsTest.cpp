// SPDX-License-Identifier: Apache-2.0
// Groups: layers that are composited first.
#include "scene/Faults.h"
#include "tests/scene/SceneFolder.h"

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

class Groups : public SceneFolder {
protected:
    const std::string inner_ =
        "{'file': 'a.png', 'opacity': 0.7}, {'file': 'b.png', 'mode': 'screen', 'transform': {'rotate': 9}}";
    Groups() {
        paint("a.png", 3);
        paint("b.png", 8);
        paint("c.png", 5);
    }
    void write_frame(const std::string& name, const std::string& layers, int number = 1) const {
        write(name, shown(layers, number));
    }
};

/// What a group shows is what its layers make of clear ground, as a picture of its own.
TEST_F(Groups, AreTheSameAsTwoScenes) {
    write_frame("inner.png", inner_);
    for (const std::string look :
         {"", ", 'mode': 'multiply', 'opacity': 0.4", ", 'mask': {'file': 'c.png', 'kind': 'luma', 'at': [3, 4]}",
          ", 'effects': [{'effect': 'blur', 'radius': 3, 'grow': true}]",
          ", 'transform': {'scale': 0.7, 'rotate': 30, 'translate': [9, 4]}, 'quality': 'bicubic'"}) {
        const Picture grouped = shown("{'file': 'c.png'}, {'layers': [" + inner_ + "]" + look + "}");
        const Picture apart = shown("{'file': 'c.png'}, {'file': 'inner.png'" + look + "}");
        EXPECT_TRUE(same_pixels(grouped, apart)) << look;
    }
}

TEST_F(Groups, HaveASizeOfTheirOwn) {
    const Picture small = shown("{'layers': [{'solid': [1, 0, 0]}], 'size': [6, 5]}");
    EXPECT_EQ(channels(small, 5, 4), (List{255, 255, 0, 0}));
    EXPECT_EQ(channels(small, 6, 4), (List{0, 0, 0, 0}));
    EXPECT_EQ(channels(small, 5, 5), (List{0, 0, 0, 0}));
}

TEST_F(Groups, NestedAreTheSameAsPlain) {
    std::string nested = inner_;
    for (int i = 0; i < 32; ++i) nested = "{'layers': [" + nested + "]}";
    EXPECT_TRUE(same_pixels(shown(nested), shown("{'layers': [" + inner_ + "]}")));
    expect_faults({"{'layers': [" + nested + "]} => /layers lies in more than 32 groups"});
}

/// A group that stays is made once; one in which anything moves is made for each frame.
TEST_F(Groups, AnyOrderOfFramesGivesTheSame) {
    const std::string keys = "{'keys': [{'frame': 0, 'value': 0}, {'frame': 9, 'value': 1}]}";
    const std::string moving[] = {
        "{'file': 'a.png', 'opacity': " + keys + "}",
        "{'file': 'a.png', 'in': 3, 'out': 4}",
        "{'file': 'a.png', 'transform': {'scale': " + keys + "}}",
        "{'file': 'a.png', 'effects': [{'effect': 'blend', 'with': 'b.png', 'ratio': " + keys + "}]}",
        "{'file': 'a.png', 'mask': {'file': 'b.png', 'transform': {'scale': " + keys + "}}}",
        "{'solid': {'keys': [{'frame': 0, 'value': [0, 0, 0]}, {'frame': 9, 'value': [1, 1, 1]}]}}",
        "{'file': 'a.png', 'parent': 'p'}, {'name': 'p', 'visible': false, 'solid': [0, 0, 0], 'transform': "
        "{'scale': " +
            keys + "}}",
        "{'file': 'a.png', 'matte-layer': {'layer': 'm'}}, {'name': 'm', 'visible': false, 'solid': [0, 0, 0], "
        "'opacity': " +
            keys + "}"};
    for (const std::string& layer : moving) {
        const Scene scene =
            scene_of("{'file': 'c.png'}, {'mode': 'screen', 'layers': [{'layers': [" + inner_ + ", " + layer + "]}]}");
        SceneRender shared(scene, nullptr);
        Picture found[8];
        for (const int i : {7, 2, 3, 0, 5, 1, 6, 4}) found[i] = shared.frame(i, unwatched());
        for (int i = 0; i < 8; ++i) EXPECT_TRUE(same_pixels(found[i], frame(scene, i))) << layer << i;
        EXPECT_FALSE(same_pixels(found[3], found[7])) << layer;
    }
}

TEST_F(Groups, FramesAtOnceShareWhatStays) {
    const Scene scene = scene_of("{'layers': [" + inner_ + "], 'effects': [{'effect': 'blur', 'radius': 4}], " +
                                 "'opacity': {'keys': [{'frame': 0, 'value': 0.1}, {'frame': 9, 'value': 1}]}}");
    SceneRender shared(scene, nullptr);
    Picture found[8];
    in_threads(8, [&](int i) { found[i] = shared.frame(i, unwatched()); });
    for (int i = 0; i < 8; ++i) EXPECT_TRUE(same_pixels(found[i], frame(scene, i))) << i;
}

TEST_F(Groups, FilesAndColoursInThemAreChecked) {
    const Scene scene = scene_of("{'layers': [{'file': 'q.#.png'}], 'in': 3}");
    EXPECT_NO_THROW(check_files(scene, FrameRange{1, 2, 1}));
    EXPECT_THROW(check_files(scene, FrameRange{1, 3, 1}), SceneFault);
    EXPECT_THROW(check_colours(scene_of("{'layers': [{'file': 'a.png', 'linear': 'profile'}]}")), SceneFault);
    const auto clash = overwritten(scene_of("{'layers': [{'file': 'a.png'}]}"), FrameRange{1, 1, 1},
                                   FramePattern::plain(folder / "a.png"));
    ASSERT_TRUE(clash);
    EXPECT_EQ(clash->place, "/layers/0/layers/0/file");
}

TEST_F(Groups, TakeMemory) {
    const auto within = [&](const std::string& layers) {
        const Scene scene = scene_of(layers);
        return SceneRender(scene, nullptr).frames_within(1 << 20, 40, 30);
    };
    const std::string moving =
        "{'file': 'a.png', 'opacity': {'keys': [{'frame': 0, 'value': 0}, {'frame': 1, 'value': 1}]}}";
    EXPECT_LT(within("{'layers': [" + moving + "]}"), within(moving));
    EXPECT_LT(within("{'layers': [{'layers': [" + moving + "]}]}"), within("{'layers': [" + moving + "]}"));
}

}  // namespace
