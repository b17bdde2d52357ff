// SPDX-License-Identifier: Apache-2.0
// Masks that move, layers as mattes of others, and parents.
#include "scene/Faults.h"
#include "tests/scene/SceneFolder.h"

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

class Links : public SceneFolder {
protected:
    Links() {
        paint("a.png", 3);
        paint("b.png", 8);
        paint("m.png", 5);
    }
};

TEST_F(Links, AMasksPlaceMovesByWholePixels) {
    const Scene scene = scene_of(
        "{'file': 'a.png'}, {'file': 'b.png', 'mode': 'screen', 'mask': {'file': 'm.png', "
        "'kind': 'luma', 'at': {'keys': [{'frame': 0, 'value': [-3, 2]}, {'frame': 10, "
        "'value': [7, 12]}]}}}");
    for (const int i : {9, 0, 4}) {
        const std::string at = std::to_string(i - 3) + ", " + std::to_string(i + 2);
        EXPECT_TRUE(same_pixels(frame(scene, i), shown("{'file': 'a.png'}, {'file': 'b.png', 'mode': 'screen', 'mask': "
                                                       "{'file': 'm.png', 'kind': 'luma', 'at': [" +
                                                       at + "]}}")))
            << i;
    }
}

/// A mask that is placed is what the frame would show of it.
TEST_F(Links, AMasksTransformPlacesIt) {
    const std::string placed = "'transform': {'anchor': [20, 15], 'translate': [18.5, 14], 'scale': 0.6, 'rotate': 25}";
    write("placed.png", shown("{'file': 'm.png', " + placed + "}"));
    for (const std::string kind : {"alpha", "inverse", "luma", "inverse-luma"}) {
        const std::string layer = "{'file': 'a.png'}, {'file': 'b.png', 'mask': {'kind': '" + kind + "', 'file': ";
        const Picture found = shown(layer + "'m.png', " + placed + "}}");
        EXPECT_TRUE(same_pixels(found, shown(layer + "'placed.png'}}"))) << kind;
        EXPECT_FALSE(same_pixels(found, shown(layer + "'m.png'}}"))) << kind;
    }
}

TEST_F(Links, AMatteLayerIsTheMaskThatTheFrameShows) {
    const std::string other =
        "'file': 'm.png', 'opacity': 0.8, 'mask': 'b.png', 'effects': [{'effect': 'blur', 'radius': 2, 'grow': true}], "
        "'transform': {'rotate': 20, 'translate': [9, 1]}";
    write("other.png", shown("{" + other + "}"));
    for (const std::string kind : {"alpha", "inverse", "luma", "inverse-luma"}) {
        const std::string matte = "'mode': 'hard-light', 'matte-layer': {'layer': 'm', 'kind': '" + kind + "'}";
        const Picture found =
            shown("{'file': 'a.png'}, {'file': 'b.png', " + matte +
                  "}, {'name': 'm', 'visible': false, 'mode': 'multiply', 'rgb-only': true, " + other + "}");
        const Picture masked = shown(
            "{'file': 'a.png'}, {'file': 'b.png', 'mode': 'hard-light', 'mask': {'file': "
            "'other.png', 'kind': '" +
            kind + "'}}");
        EXPECT_TRUE(same_pixels(found, masked)) << kind;
    }
}

/// Half covered by each is a quarter by both; and a matte may have a matte.
TEST_F(Links, MaskAndMattesAllCount) {
    const auto half = [](int, int) { return argb(128, 255, 255, 255); };
    write("half.png", kWidth, kHeight, half);
    const std::string white = "'solid': [1, 1, 1]", hidden = ", 'visible': false, 'solid': [1, 1, 1]";
    const double by_both = channels(shown("{" + white +
                                          ", 'mask': 'half.png', 'matte-layer': {'layer': 'm'}}, "
                                          "{'name': 'm', 'opacity': 0.5" +
                                          hidden + "}"),
                                    5, 5)[0];
    EXPECT_NEAR(by_both, 64, 1);
    const double by_two = channels(shown("{" + white +
                                         ", 'matte-layer': {'layer': 'm'}}, {'name': 'm', 'opacity': 0.5, "
                                         "'matte-layer': {'layer': 'n'}" +
                                         hidden + "}, {'name': 'n', 'opacity': 0.25" + hidden + "}"),
                                   5, 5)[0];
    EXPECT_NEAR(by_two, 32, 1);
}

TEST_F(Links, AMatteCoversNothingWhereItDoesNotShow) {
    const std::string matte = "'file': 'a.png', 'matte-layer': {'layer': 'm', 'kind': ";
    const std::string other = "{'name': 'm', 'visible': false, 'solid': [1, 1, 1], 'in': 5}";
    const Picture all = shown("{'file': 'a.png'}"), none = shown("");
    for (const int i : {4, 5}) {
        EXPECT_TRUE(same_pixels(shown("{" + matte + "'alpha'}}, " + other, i), i < 5 ? none : all)) << i;
        EXPECT_TRUE(same_pixels(shown("{" + matte + "'inverse'}}, " + other, i), i < 5 ? all : none)) << i;
    }
}

/// Powers of two and quarter turns, so that a matrix can be told in few digits.
TEST_F(Links, AParentsTransformFollowsTheLayersOwn) {
    const std::string up =
        "{'name': 'top', 'visible': false, 'solid': [0, 0, 0], 'opacity': 0, 'transform': "
        "{'translate': [30, 0], 'rotate': 90}}, {'name': 'mid', 'parent': 'top', 'file': 'm.png', "
        "'visible': false, 'transform': {'scale': [0.5, 2], 'anchor': [4, 2]}}, ";
    // (x, y) to (x / 4, y / 4), to ((x / 4 - 4) / 2, (y / 4 - 2) * 2), and that, (u, v), to (30 - v, u).
    const Picture by_parents = shown(up + "{'file': 'a.png', 'parent': 'mid', 'transform': {'scale': 0.25}}");
    const Picture by_matrix = shown("{'file': 'a.png', 'transform': {'matrix': [0, 0.125, 0, -0.5, 0, 0, 34, -2, 1]}}");
    EXPECT_TRUE(same_pixels(by_parents, by_matrix));
    const Picture without_own = shown(up + "{'file': 'a.png', 'parent': 'mid'}");
    EXPECT_TRUE(same_pixels(without_own,
                            shown("{'file': 'a.png', 'transform': {'matrix': [0, 0.5, 0, -2, 0, 0, 34, -2, 1]}}")));
    EXPECT_TRUE(same_pixels(shown("{'file': 'a.png', 'parent': 'p'}, {'name': 'p', 'visible': false, 'file': 'b.png'}"),
                            shown("{'file': 'a.png'}")));
}

TEST_F(Links, AParentMovesWhileTheShutterIsOpen) {
    const std::string moves =
        "'transform': {'translate': {'keys': [{'frame': 0, 'value': [0, 0]}, {'frame': 8, 'value': "
        "[64, 32]}]}}";
    const std::string shutter = ", 'shutter': {'angle': 180, 'phase': -90, 'matrices': 5}";
    const Picture found = shown("{'file': 'a.png', 'parent': 'p'" + shutter +
                                    "}, {'name': 'p', 'visible': false, 'file': 'b.png', " + moves + "}",
                                2);
    EXPECT_TRUE(same_pixels(found, shown("{'file': 'a.png', " + moves + shutter + "}", 2)));
    EXPECT_FALSE(same_pixels(found, shown("{'file': 'a.png', " + moves + "}", 2)));
}

TEST_F(Links, WrongUses) {
    std::string row;
    for (int i = 0; i < 34; ++i) {
        row += (i == 0 ? "{'solid': [0, 0, 0], 'name': 'n" : ", {'solid': [0, 0, 0], 'name': 'n") + std::to_string(i) +
               (i == 33 ? "'}" : "', 'matte-layer': {'layer': 'n" + std::to_string(i + 1) + "'}}");
    }
    const std::string solid = "'solid': [0, 0, 0]";
    expect_faults(
        {"{" + solid + ", 'parent': 'x'} => /layers/0/parent x: no such layer in its list; none has a name",
         "{" + solid + ", 'parent': 'skye'}, {" + solid +
             ", 'name': 'sky'} => skye: no such layer in its list; the "
             "nearest is sky",
         "{" + solid + ", 'parent': 'a'}, {" + solid + ", 'name': 'a'}, {" + solid +
             ", 'name': 'a'} => /layers/0/parent "
             "a: several layers",
         "{" + solid + ", 'parent': 'a', 'name': 'a'} => /layers/0/parent (a) leads back to the layer itself",
         "{" + solid + ", 'parent': 'a'}, {" + solid + ", 'name': 'a', 'parent': 'b'}, {" + solid +
             ", 'name': 'b', 'parent': 'a'} => /layers/1/parent (a) leads back",
         "{" + solid + ", 'matte-layer': {'layer': 'b'}, 'name': 'a'}, {" + solid +
             ", 'name': 'b', 'matte-layer': {'layer': 'a'}} => /layers/0/matte-layer (a) leads back",
         "{" + solid + ", 'matte-layer': 'a'} => /layers/0/matte-layer is not an object",
         "{" + solid + ", 'matte-layer': {'kind': 'luma'}} => /layers/0/matte-layer/layer is missing",
         "{" + solid + ", 'matte-layer': {'layer': 'a', 'kind': 'red'}, 'name': 'a'} => kind (a) red: not one of alpha",
         "{" + solid + ", 'parent': 'a'}, {'layers': [{" + solid + ", 'name': 'a'}]} => a: no such layer in its list",
         row + " => /layers/0/matte-layer (n0) leads on to more than 32 layers",
         "{'file': 'a.png', 'mask': {'file': 'm.png', 'at': [0, 0], 'transform': {}}} => mask/transform excludes at",
         "{'file': 'a.png', 'mask': {'file': 'm.png', 'at': [0.5, 0]}} => mask/at/0 is not a whole number"});
}

}  // namespace
