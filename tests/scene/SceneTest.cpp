// SPDX-License-Identifier: Apache-2.0
// Scene files, keyframes, matrices, and the numbers of frames.
#include "scene/Scene.h"

#include <gtest/gtest.h>

#include <cmath>

#include "scene/Faults.h"
#include "scene/Words.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::scene;
using qx::test::Folder;

TEST(Frames, RangesAndWhatIsNone) {
    const struct {
        const char* text;
        int first, last, step, count;
    } cases[] = {{"7", 7, 7, 1, 1}, {"1-10", 1, 10, 1, 10}, {"1001-1100x2", 1001, 1100, 2, 50}, {"0-9x4", 0, 9, 4, 3}};
    for (const auto& c : cases) {
        const FrameRange range = frame_range(c.text);
        EXPECT_EQ(range.first, c.first) << c.text;
        EXPECT_EQ(range.last, c.last) << c.text;
        EXPECT_EQ(range.count(), c.count) << c.text;
        EXPECT_EQ(range.frame(range.count() - 1), c.first + (c.count - 1) * c.step) << c.text;
        EXPECT_LE(range.frame(range.count() - 1), c.last) << c.text;
    }
    for (const char* text : {"", "a", "1-", "-3", "5-1", "1-9x0", "1-9x", "1x2", "1-99999999999", "1 - 2"}) {
        EXPECT_THROW(frame_range(text), BadText) << text;
    }
}

TEST(Frames, NamesWithAPlaceForTheNumber) {
    const struct {
        const char *pattern, *name;
    } cases[] = {{"a.####.png", "a.0042.png"}, {"#.exr", "42.exr"},      {"%04d.tif", "0042.tif"},
                 {"x_%d.png", "x_42.png"},     {"d.#/e.##", "d.#/e.42"}, {"plain.png", "plain.png"}};
    for (const auto& c : cases) EXPECT_EQ(FramePattern(c.pattern).name(42), c.name);
    EXPECT_EQ(FramePattern("a.##.png").name(12345), "a.12345.png");
    EXPECT_FALSE(FramePattern("d.#/plain").has_place());
    EXPECT_THROW(FramePattern("a.##.%d.png"), BadText);
}

TEST(Keyframes, LinearAndSmoothBetweenKeysAndStillOutside) {
    const Track<2> track({{10, {0, 100}, Between::linear}, {20, {40, -100}, Between::smooth}, {24, {8, 0}, {}}});
    for (double frame = 0; frame < 30; frame += 0.37) {
        double expected = frame < 10 ? 0 : 8;
        if (frame >= 10 && frame < 20) expected = 4 * (frame - 10);
        const double u = (frame - 20) / 4;
        if (u >= 0 && u < 1) expected = 40 - 32 * (3 * std::pow(u, 2) - 2 * std::pow(u, 3));
        EXPECT_NEAR(track.at(frame)[0], expected, 1e-12) << frame;
    }
    EXPECT_EQ(track.at(20), (Track<2>::Value{40, -100}));
    EXPECT_EQ(track.at(1e9), (Track<2>::Value{8, 0}));
}

M_FloatPoint mapped(const M_Matrix3& matrix, double x, double y) {
    M_FloatPoint point{x, y};
    M_TransformFloatPoints(matrix, &point, 1);
    return point;
}

/// In complex numbers a clockwise turn, with y downwards, is a product with e to the i phi.
TEST(Placing, AnchorLandsOnTranslateAndTheRestTurnsClockwiseAboutIt) {
    for (const double degrees : {0.0, 30.0, 90.0, -90.0, 200.0, 359.0, 725.0}) {
        const Placing p{{100, -50}, {2, 0.5}, degrees, {8, 3}};
        const double phi = degrees * std::acos(-1.0) / 180;
        for (const auto& [x, y] : {std::pair{8.0, 3.0}, {9.0, 3.0}, {8.0, 4.0}, {-20.0, 77.0}}) {
            const double u = (x - 8) * 2, v = (y - 3) * 0.5;
            const M_FloatPoint point = mapped(matrix_of(p), x, y);
            EXPECT_NEAR(point.x, 100 + u * std::cos(phi) - v * std::sin(phi), 1e-9) << degrees;
            EXPECT_NEAR(point.y, -50 + u * std::sin(phi) + v * std::cos(phi), 1e-9) << degrees;
        }
    }
    const M_Matrix3 quarter = matrix_of(Placing{{0, 0}, {1, 1}, 450, {0, 0}});
    EXPECT_EQ(quarter.m[0][0], 0);
    EXPECT_EQ(quarter.m[0][1], 1);
}

/// A layer that moves by 360 pixels a frame tells its times in degrees.
TEST(Shutter, MatricesStandAtTheTimesOfPhaseAndAngle) {
    SceneLayer layer;
    EXPECT_TRUE(layer.matrices(5).empty());
    layer.transform.emplace();
    EXPECT_EQ(layer.matrices(5).size(), 1u);
    layer.transform->translate = Track<2>({{0, {0, 0}, {}}, {100, {36000, 0}, {}}});
    layer.shutter.phase = -90;
    ASSERT_EQ(layer.matrices(5).size(), 1u);
    EXPECT_NEAR(layer.matrices(5)[0].m[2][0], 5 * 360 - 90, 1e-9);
    layer.shutter.angle = 180;
    layer.shutter.matrices = 5;
    const auto matrices = layer.matrices(5);
    ASSERT_EQ(matrices.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(matrices[static_cast<std::size_t>(i)].m[2][0], 5 * 360 - 90 + 45 * i, 1e-9);
    }
}

/// Scenes are written here with ' for ".
std::string put_scene(const Folder& folder, std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    qx::test::put_contents(folder / "s.json", text);
    return folder / "s.json";
}

TEST(SceneFile, FaultsNameTheKeyAndItsPlace) {
    const Folder folder;
    qx::test::put_contents(folder / "a.png", "not looked at");
    const auto layer = [](const std::string& more) {
        return "{'size': [8, 8], 'layers': [{'file': 'a.png'}, {'file': 'a.png', " + more + "}]}";
    };
    const struct {
        std::string text;
        const char* words;
    } cases[] = {
        {"{'size': [8, 8],\n 'layers': [}", "line 2, column 13"},
        {"{'size': [8, 8], 'size': [8, 8], 'layers': []}", "key size stands twice"},
        {"{'size': [8, 1e999], 'layers': []}", "1e999"},
        {"[]", "/ is not an object"},
        {"{'layers': []}", "/size is missing"},
        {"{'size': [8, 8]}", "/layers is missing"},
        {"{'size': [8], 'layers': []}", "/size does not have 2 items"},
        {"{'size': [8, 30001], 'layers': []}", "/size/1 is not a whole number from 1 to 30000"},
        {"{'size': [8, 8.5], 'layers': []}", "/size/1 is not a whole number"},
        {"{'size': [8, 8], 'depth': 12, 'layers': []}", "/depth is none of 8, 16, 32"},
        {"{'size': [8, 8], 'rate': 0, 'layers': []}", "/rate is not a number"},
        {"{'size': [8, 8], 'rate': [24, 0], 'layers': []}", "/rate/1 is not a whole number"},
        {"{'size': [8, 8], 'frames': [3, 2], 'layers': []}", "/frames ends before it begins"},
        {"{'size': [8, 8], 'background': [0, 2, 0], 'layers': []}", "/background/1 is not a number from 0 to 1"},
        {"{'size': [8, 8], 'background': 'b.png', 'layers': []}", "b.png: no such file"},
        {"{'size': [8, 8], 'layer': []}", "/layer is an unknown key; the nearest is layers"},
        {"{'size': [8, 8], 'layers': [{'mode': 2}]}", "/layers/0/file is missing"},
        {"{'size': [8, 8], 'layers': [{'file': 7}]}", "/layers/0/file is not a text"},
        {layer("'opacty': 1"), "/layers/1/opacty is an unknown key; the nearest is opacity"},
        {layer("'opacity': 1.5"), "/layers/1/opacity is not a number from 0 to 1"},
        {layer("'opacity': {'keys': []}"), "/layers/1/opacity/keys does not have 1 to"},
        {layer("'opacity': {'keys': [{'frame': 1, 'value': 'x'}]}"), "/layers/1/opacity/keys/0/value is not a list"},
        {layer("'opacity': {'keys': [{'frame': 2, 'value': 1}, {'frame': 2, 'value': 0}]}"),
         "/layers/1/opacity/keys/1/frame does not come after"},
        {layer("'opacity': {'keys': [{'frame': 2, 'value': 1}], 'interpolation': 'cubic'}"),
         "/layers/1/opacity/interpolation cubic: not one of linear, smooth"},
        {layer("'mode': 'scren'"), "/layers/1/mode scren: no such mode; the nearest is screen"},
        {layer("'mode': -1"), "/layers/1/mode -1: mode numbers"},
        {layer("'mode': 'mask-crossfade'"), "/layers/1/mask is missing"},
        {layer("'mask': {'file': 'a.png', 'kind': 'red'}"), "/layers/1/mask/kind red: not one of"},
        {layer("'mask': 'm.png'"), "m.png: no such file"},
        {layer("'matte': [0, 0]"), "/layers/1/matte does not have 3 items"},
        {layer("'field': 'both'"), "/layers/1/field both: not one of all, even, odd"},
        {layer("'quality': 3"), "/layers/1/quality is not a text"},
        {layer("'rgb-only': 1"), "/layers/1/rgb-only is neither true nor false"},
        {layer("'linear': 0"), "/layers/1/linear is not a number"},
        {layer("'seed': 0.5"), "/layers/1/seed is not a whole number"},
        {layer("'name': 7"), "/layers/1/name is not a text"},
        {layer("'comment': ['a']"), "/layers/1/comment is not a text"},
        {layer("'name': 'sky', 'seed': 0.5"), "/layers/1/seed (sky) is not a whole number"},
        {layer("'name': 'sky', 'mode': 'scren'"), "/layers/1/mode (sky) scren: no such mode"},
        {layer("'name': 'sky', 'opacity': {'keys': [{'frame': 'x'}]}"), "/layers/1/opacity/keys/0/frame (sky) is not"},
        {layer("'transform': {'rotate': [1, 2]}"), "/layers/1/transform/rotate does not have 1 items"},
        {layer("'transform': {'scale': 'big'}"), "/layers/1/transform/scale is not a list of 1 to 2 numbers"},
        {layer("'transform': {'matrix': [1, 0, 0], 'scale': 2}"), "/layers/1/transform/matrix excludes scale"},
        {layer("'transform': {'matrix': [1, 0, 0]}"), "/layers/1/transform/matrix does not have 9 items"},
        {layer("'shutter': {'angle': -1}"), "/layers/1/shutter/angle is not a number from 0 to 3600"},
        {layer("'shutter': {'matrices': 258}"), "/layers/1/shutter/matrices is not a whole number from 2 to 257"},
    };
    for (const auto& c : cases) {
        const std::string path = put_scene(folder, c.text);
        try {
            read_scene(path);
            ADD_FAILURE() << c.text;
        } catch (const SceneFault& fault) {
            const std::string words = fault.what();
            EXPECT_EQ(words.rfind(path + ": ", 0), 0u) << words;
            EXPECT_NE(words.find(c.words), std::string::npos) << c.text << "\n" << words;
        }
    }
}

TEST(SceneFile, WhatItSaysArrives) {
    const Folder folder;
    qx::test::put_contents(folder / "a#1.png", "a file, not a sequence");
    const Scene scene = read_scene(put_scene(folder, R"({'size': [64, 48], 'depth': 16, 'rate': [30000, 1001],
        'frames': [3, 9], 'background': [0.25, 0.5, 1], 'comment': 'not looked at', 'layers': [
        {'file': 'a#1.png', 'mode': 'soft-light', 'matte': [0, 0.5, 1], 'field': 'odd', 'quality': 'draft',
         'rgb-only': true, 'linear': 1.8, 'seed': -7, 'mask': {'file': 'a#1.png', 'kind': 'luma', 'at': [-3, 4]},
         'opacity': {'keys': [{'frame': 0, 'value': 0, 'interpolation': 'smooth'}, {'frame': 4, 'value': 1}]},
         'transform': {'scale': [2, 3]}, 'shutter': {'angle': 90, 'phase': -45, 'matrices': 3}},
        {'file': {'name': 'pic.%03d.png', 'offset': -2}, 'name': 'clip', 'comment': 'neither'}]})"));
    EXPECT_EQ(std::pair(scene.width, scene.height), std::pair(64, 48));
    EXPECT_EQ(std::pair(scene.rate.number, scene.rate.per), std::pair(30000, 1001));
    EXPECT_EQ(std::pair(scene.frames->first, scene.frames->last), std::pair(3, 9));
    EXPECT_EQ(scene.colour.alpha, 1);
    EXPECT_EQ(scene.colour.red, 0.25f);
    const SceneLayer& layer = scene.layers.at(0);
    EXPECT_EQ(layer.file.at(5), folder / "a#1.png");
    EXPECT_EQ(std::tuple(layer.mode, layer.field, layer.quality, layer.rgb_only, layer.seed),
              std::tuple(8, 2, 0, true, -7));
    EXPECT_EQ(std::tuple(layer.matte->red, layer.matte->green, layer.matte->blue), std::tuple(0.0f, 0.5f, 1.0f));
    EXPECT_EQ(std::tuple(layer.mask->kind, layer.mask->x, layer.mask->y), std::tuple(2, -3, 4));
    EXPECT_EQ(layer.opacity.at(1)[0], 0.0625 * 3 - 2 * 0.015625);
    EXPECT_EQ(layer.transform->scale.at(0), (Track<2>::Value{2, 3}));
    EXPECT_EQ(std::tuple(layer.shutter.angle, layer.shutter.phase, layer.shutter.matrices), std::tuple(90, -45, 3));
    EXPECT_EQ(scene.layers.at(1).place, "/layers/1 (clip)");
    EXPECT_EQ(scene.layers.at(1).file.at(9), folder / "pic.007.png");
    EXPECT_THROW(check_files(scene, *scene.frames), SceneFault);
}

}  // namespace
