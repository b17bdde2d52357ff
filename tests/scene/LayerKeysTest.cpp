// SPDX-License-Identifier: Apache-2.0
// When layers show, and what becomes of pictures that are not there.
#include "scene/Faults.h"
#include "tests/scene/SceneFolder.h"

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

class LayerKeys : public SceneFolder {
protected:
    LayerKeys() {
        paint("a.png", 3);
        paint("b.png", 8);
        for (const int i : {2, 3, 6}) paint("q." + std::to_string(i) + ".png", 20 * i);
    }
};

TEST_F(LayerKeys, InOutAndVisibleTellWhenALayerShows) {
    const Scene with = scene_of("{'file': 'a.png'}, {'file': 'b.png', 'in': 3, 'out': 5, 'mode': 'screen'}");
    const Scene without = scene_of("{'file': 'a.png'}, {'file': 'b.png', 'mode': 'screen', 'visible': false}");
    const Scene alone = scene_of("{'file': 'a.png'}");
    const Scene both = scene_of("{'file': 'a.png'}, {'file': 'b.png', 'mode': 'screen'}");
    ASSERT_FALSE(same_pixels(frame(both, 1), frame(alone, 1)));
    for (const int i : {-7, 2, 3, 4, 5, 6}) {
        EXPECT_TRUE(same_pixels(frame(with, i), frame(i >= 3 && i <= 5 ? both : alone, i))) << i;
        EXPECT_TRUE(same_pixels(frame(without, i), frame(alone, i))) << i;
    }
}

/// With a transform it is a move before that.
TEST_F(LayerKeys, APlaceIsAMoveOfWholePixels) {
    for (const std::string more :
         {"'mask': 'b.png'", "'mode': 'multiply', 'effects': [{'effect': 'blur', 'grow': true}]"}) {
        EXPECT_TRUE(same_pixels(shown("{'file': 'a.png', 'at': [-5, 7], " + more + "}"),
                                shown("{'file': 'a.png', 'transform': {'translate': [-5, 7]}, " + more + "}")));
    }
    EXPECT_TRUE(same_pixels(shown("{'file': 'a.png', 'at': [-4, 6], 'transform': {'scale': 0.5, 'rotate': 90}}"),
                            shown("{'file': 'a.png', 'transform': {'matrix': [0, 0.5, 0, -0.5, 0, 0, -3, -2, 1]}}")));
}

TEST_F(LayerKeys, PicturesAreNeededOnlyWhereTheirLayerShows) {
    const Scene part = scene_of("{'file': 'q.#.png', 'in': 2, 'out': 3}");
    EXPECT_NO_THROW(check_files(part, FrameRange{1, 9, 1}));
    EXPECT_THROW(check_files(scene_of("{'file': 'q.#.png', 'in': 2, 'out': 4}"), FrameRange{1, 9, 1}), SceneFault);
    EXPECT_THROW(check_files(scene_of("{'file': 'q.#.png', 'visible': false}"), FrameRange{1, 9, 1}), SceneFault)
        << "what does not show is checked";
}

TEST_F(LayerKeys, MissingPicturesAreHeldBlackOrLeftOut) {
    const Scene held = scene_of("{'file': 'a.png'}, {'file': 'q.#.png', 'missing': 'hold'}");
    for (const auto& [number, shown] : {std::pair{1, 2}, {2, 2}, {3, 3}, {4, 3}, {5, 3}, {6, 6}, {9, 6}}) {
        const Scene still = scene_of("{'file': 'a.png'}, {'file': 'q." + std::to_string(shown) + ".png'}");
        EXPECT_TRUE(same_pixels(frame(held, number), frame(still, 1))) << number;
    }
    const Scene black = scene_of("{'file': 'a.png'}, {'file': 'q.#.png', 'missing': 'black'}");
    EXPECT_TRUE(same_pixels(frame(black, 6), frame(held, 6)));
    EXPECT_EQ(channels(frame(black, 4), 1, 1), (List{255, 0, 0, 0}));
    const Scene left_out = scene_of("{'file': 'a.png'}, {'file': 'q.#.png', 'missing': 'skip'}");
    EXPECT_TRUE(same_pixels(frame(left_out, 4), frame(scene_of("{'file': 'a.png'}"), 4)));
    EXPECT_TRUE(same_pixels(frame(left_out, 3), frame(held, 3)));
}

/// A mask and a still picture are missed as well; black has the frame's size where nothing tells one.
TEST_F(LayerKeys, MissingMasksAndStillPictures) {
    const Scene masked = scene_of("{'file': 'a.png', 'mask': 'q.#.png', 'missing': 'skip'}");
    EXPECT_EQ(channels(frame(masked, 5), 4, 4), (List{0, 0, 0, 0}));
    const Scene black = scene_of("{'file': 'none.png', 'missing': 'black'}");
    EXPECT_EQ(channels(frame(black, 5), kWidth - 1, kHeight - 1), (List{255, 0, 0, 0}));
    EXPECT_NO_THROW(scene_of("{'file': 'none.png', 'missing': 'skip'}"));
    for (const char* layer : {"{'file': 'none.png', 'missing': 'hold'}", "{'file': 'n.#.png', 'missing': 'hold'}",
                              "{'file': 'none.png', 'missing': 'error'}"}) {
        EXPECT_THROW(scene_of(layer), SceneFault) << layer;
    }
}

TEST_F(LayerKeys, EachUseOfAMissingPictureIsANoteOnce) {
    const Scene scene = scene_of("{'file': 'q.#.png', 'missing': 'hold'}, {'file': 'q.#.png', 'missing': 'skip'}");
    Names notes;
    SceneRender render(scene, [&](const std::string& note) { notes.push_back(note); });
    for (const int i : {3, 4, 4, 1}) render.frame(i, unwatched());
    const std::string four = folder / "q.4.png", one = folder / "q.1.png";
    EXPECT_EQ(notes, (Names{four + ": is missing, " + (folder / "q.3.png") + " is shown",
                            four + ": is missing, its layer is left out",
                            one + ": is missing, " + (folder / "q.2.png") + " is shown",
                            one + ": is missing, its layer is left out"}));
}

}  // namespace
