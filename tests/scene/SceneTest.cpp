// SPDX-License-Identifier: Apache-2.0
// Scene files, keyframes, matrices, and the numbers of frames.
#include "scene/Scene.h"

#include "scene/Faults.h"
#include "scene/Words.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using SceneFile = InFolder;

TEST(Frames, RangesAndWhatIsNone) {
    const std::pair<const char*, std::vector<int>> cases[] = {
        {"7", {7}}, {"9-11", {9, 10, 11}}, {"1001-1007x3", {1001, 1004, 1007}}, {"0-9x4", {0, 4, 8}}};
    for (const auto& [text, frames] : cases) {
        const FrameRange range = frame_range(text);
        std::vector<int> found;
        for (int i = 0; i < range.count(); ++i) found.push_back(range.frame(i));
        EXPECT_EQ(found, frames) << text;
    }
    for (const char* text : {"", "a", "1-", "-3", "5-1", "1-9x0", "1-9x", "1x2", "1-99999999999", "1 - 2"}) {
        EXPECT_THROW(frame_range(text), BadText) << text;
    }
}

TEST(Frames, ListsRiseFallAndGoBelowZero) {
    const std::pair<const char*, std::vector<int>> cases[] = {
        {"1,3,5-9x2", {1, 3, 5, 7, 9}}, {"-5", {-5}},         {"-5--1", {-5, -4, -3, -2, -1}},
        {"-2-1", {-2, -1, 0, 1}},       {"9-1x3", {9, 6, 3}}, {"-1--3", {-1, -2, -3}},
        {"2-0,1,2", {2, 1, 0, 1, 2}},   {"4-4", {4}},         {"7-1x100", {7}}};
    for (const auto& [text, frames] : cases) {
        const FrameList list = frame_list(text);
        std::vector<int> found;
        for (int i = 0; i < list.count(); ++i) found.push_back(list.frame(i));
        EXPECT_EQ(found, frames) << text;
    }
    const FrameList once = frame_list("2-0,1,2,3").once();
    std::vector<int> found;
    for (int i = 0; i < once.count(); ++i) found.push_back(once.frame(i));
    EXPECT_EQ(found, (std::vector<int>{2, 1, 0, 3}));
    for (const char* text : {"", ",", "1,", ",1", "1,,2", "a", "1-", "--1", "1---2", "1-9x0", "1-9x-2", "1-9x", "1x2",
                             "1-2-3", "1-99999999", "1 - 2", "1-9x2x2"}) {
        EXPECT_THROW(frame_list(text), BadText) << text;
    }
    std::string many = "0-9999999";
    for (int i = 0; i < 4; ++i) many += "," + many;
    EXPECT_THROW(frame_list(many), BadText);
}

TEST(Frames, NumbersBelowZeroInNames) {
    for (const auto& [pattern, name] : {std::pair{"a.####.png", "a.-0005.png"},
                                        {"a.#.png", "a.-5.png"},
                                        {"a.%05d.png", "a.-0005.png"},
                                        {"a.%04d.png", "a.-005.png"},
                                        {"a.%d.png", "a.-5.png"}}) {
        EXPECT_EQ(FramePattern(pattern).name(-5), name);
        EXPECT_EQ(FramePattern(pattern).number_in(name), -5);
    }
    char by_printf[32];
    for (const int number : {-1234567, -10, -1, 0, 7}) {
        std::snprintf(by_printf, sizeof by_printf, "%04d", number);
        EXPECT_EQ(FramePattern("%04d").name(number), by_printf);
    }
    for (const char* name : {"a.-.png", "a.--005.png", "a.-05.png", "a.-0000.png"}) {
        EXPECT_FALSE(FramePattern("a.####.png").number_in(name)) << name;
    }
}

TEST(Frames, NamesWithAPlaceForTheNumber) {
    const std::pair<const char*, const char*> cases[] = {{"a.####.png", "a.0042.png"}, {"#.exr", "42.exr"},
                                                         {"%04d.tif", "0042.tif"},     {"x_%d.png", "x_42.png"},
                                                         {"d.#/e.##", "d.#/e.42"},     {"plain.png", "plain.png"}};
    for (const auto& [pattern, name] : cases) EXPECT_EQ(FramePattern(pattern).name(42), name);
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

/// The curve of two control points by its definition, as sums of Bernstein's polynomials, at fine parts of it.
TEST(Keyframes, BezierGoesAlongTheCurveOfItsPoints) {
    const double points[][4] = {{0.25, 0.1, 0.25, 1},  {0.42, 0, 0.58, 1}, {0, 0, 1, 1},
                                {0.3, -0.8, 0.6, 1.9}, {1, 0, 0, 1},       {0, 1, 1, 0}};
    for (const auto& p : points) {
        const Ease ease(p[0], p[1], p[2], p[3]);
        EXPECT_EQ(ease.share(0), 0);
        for (int i = 1; i < 1000; ++i) {
            const double s = i / 1000.0, r = 1 - s;
            const double x = 3 * r * r * s * p[0] + 3 * r * s * s * p[2] + s * s * s;
            const double y = 3 * r * r * s * p[1] + 3 * r * s * s * p[3] + s * s * s;
            const bool is_steep = p[0] == 1 && std::abs(s - 0.5) < 0.1;  // x stands still there, which y does not
            EXPECT_NEAR(ease.share(x), y, is_steep ? 1e-4 : 1e-9) << p[0] << " at " << s;
        }
    }
}

TEST(Keyframes, HoldStaysAndWhatShootsOverIsCut) {
    const Track<1> held({{0, {3}, Between::hold}, {4, {7}, {}}});
    for (const double frame : {0.0, 1.0, 3.999}) EXPECT_EQ(held.at(frame)[0], 3) << frame;
    EXPECT_EQ(held.at(4)[0], 7);
    const std::vector<Track<1>::Key> keys{{0, {0.1}, {0.3, -3, 0.7, 4}}, {10, {0.9}, {}}};
    const Track<1> free(keys), cut(keys, 0, 1);
    EXPECT_LT(free.at(1.5)[0], 0);
    EXPECT_GT(free.at(8.5)[0], 1);
    for (double frame = 0; frame < 10; frame += 0.25) {
        EXPECT_EQ(cut.at(frame)[0], std::clamp(free.at(frame)[0], 0.0, 1.0)) << frame;
    }
}

/// In complex numbers a clockwise turn, with y downwards, is a product with e to the i phi.
TEST(Placing, AnchorLandsOnTranslateAndTheRestTurnsClockwiseAboutIt) {
    for (const double degrees : {0.0, 30.0, 90.0, -90.0, 200.0, 359.0, 725.0}) {
        const M_Matrix3 matrix = matrix_of(Placing{{100, -50}, {2, 0.5}, degrees, {8, 3}});
        const double phi = degrees * std::acos(-1.0) / 180;
        for (const auto& [x, y] : {std::pair{8.0, 3.0}, {9.0, 3.0}, {8.0, 4.0}, {-20.0, 77.0}}) {
            const double u = (x - 8) * 2, v = (y - 3) * 0.5;
            M_FloatPoint point{x, y};
            M_TransformFloatPoints(matrix, &point, 1);
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
    for (const std::size_t count : {1, 5}) {
        if (count > 1) layer.shutter.angle = 180, layer.shutter.matrices = 5;
        const auto matrices = layer.matrices(5);
        ASSERT_EQ(matrices.size(), count);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_NEAR(matrices[i].m[2][0], 5 * 360 - 90 + 45 * static_cast<double>(i), 1e-9) << count;
        }
    }
}

class SceneFaults : public InFolder {
protected:
    /// Scenes with ' for ": `before`, the text of a row and `after`; each has a fault with `place` and the row's words.
    void expect(const std::string& before, const std::string& after, const std::string& place, const Names& rows) {
        put("a.png", "not looked at");
        for (const std::string& row : rows) {
            const auto [text, words] = halves(row);
            put_quoted("s.json", before + text + after);
            const auto fault = fault_of<SceneFault>([&] { read_scene(folder / "s.json"); });
            EXPECT_TRUE(fault.starts_with(folder / "s.json: ")) << row << fault;
            EXPECT_HOLDS(fault, place + words) << row;
        }
    }
};

TEST_F(SceneFaults, NameTheKeyAndItsPlace) {
    expect("", "", "",
           {"{'size': [8, 8],\n 'layers': [} => line 2, column 13",
            "{'size': [8, 8], 'size': [8, 8], 'layers': []} => key size stands twice",
            "{'size': [8, 1e999], 'layers': []} => 1e999", "[] => / is not an object",
            "{'layers': []} => /size is missing", "{'size': [8, 8]} => /layers is missing",
            "{'size': [8], 'layers': []} => /size does not have 2 items",
            "{'size': [8, 30001], 'layers': []} => /size/1 is not a whole number from 1 to 30000",
            "{'size': [8, 8.5], 'layers': []} => /size/1 is not a whole number",
            "{'size': [8, 8], 'layer': []} => /layer is an unknown key; the nearest is layers"});
    expect("{'size': [8, 8], ", ", 'layers': []}", "/",
           {"'depth': 12 => depth is none of 8, 16, 32", "'rate': 0 => rate is not a number",
            "'rate': [24, 0] => rate/1 is not a whole number", "'frames': [3, 2] => frames ends before it begins",
            "'frames': '3-' => frames 3-: not frames A, A-B", "'frames': [1, 2, 3] => frames does not have 2 items",
            "'background': [0, 2, 0] => background/1 is not a number from 0 to 1"});
    expect("{'size': [8, 8], ", ", 'layers': []}", "/b.png: ", {"'background': 'b.png' => no such file"});
    expect("{'size': [8, 8], 'layers': [", "]}", "/layers/0/file ",
           {"{'mode': 2} => is missing", "{'file': 7} => is not a text"});
    const std::string layers = "{'size': [8, 8], 'layers': [{'file': 'a.png'}, {'file': 'a.png', ", end = "}]}";
    expect(layers, end, "/m.png: ", {"'mask': 'm.png' => no such file"});
    expect(layers, end, "/layers/1/",
           {"'opacity': 1.5 => opacity is not a number from 0 to 1",
            "'opacity': {'keys': []} => opacity/keys does not have 1 to",
            "'mode': 'mask-crossfade' => mask is missing",
            "'mode': -1 => mode -1: mode numbers",
            "'matte': [0, 0] => matte does not have 3 items",
            "'quality': 3 => quality is not a text",
            "'rgb-only': 1 => rgb-only is neither true nor false",
            "'linear': 0 => linear is not a number",
            "'seed': 0.5 => seed is not a whole number",
            "'name': 7 => name is not a text",
            "'field': 'both' => field both: not one of all, even, odd",
            "'comment': ['a'] => comment is not a text",
            "'opacty': 1 => opacty is an unknown key; the nearest is opacity",
            "'opacity': {'keys': [{'frame': 1, 'value': 'x'}]} => opacity/keys/0/value is not a number",
            "'opacity': {'keys': [{'frame': 2, 'value': 1}, {'frame': 2, 'value': 0}]} => opacity/keys/1/frame does "
            "not come after",
            "'in': 2, 'out': 1 => out comes before in",
            "'at': [0.5, 1] => at/0 is not a whole number",
            "'in': 0.5 => in is not a whole number",
            "'visible': 'no' => visible is neither true nor false",
            "'missing': 'blak' => missing blak: not one of error, hold, black, skip; the nearest is black",
            "'opacity': {'keys': [{'frame': 2, 'value': 1}], 'interpolation': {'bezier': [0, 1, 2]}} => "
            "opacity/interpolation/bezier does not have 4 items",
            "'opacity': {'keys': [{'frame': 2, 'value': 1}], 'interpolation': {'bezier': [0, 1, 1.1, 1]}} => "
            "opacity/interpolation/bezier/2 is not a number from 0 to 1",
            "'opacity': {'keys': [{'frame': 2, 'value': 1}], 'interpolation': {'curve': 1}} => "
            "opacity/interpolation/curve is an unknown key; known are bezier",
            "'opacity': {'keys': [{'frame': 2, 'value': 1}], 'interpolation': 'cubic'} => opacity/interpolation cubic: "
            "not one of linear, smooth",
            "'mode': 'scren' => mode scren: no such mode; the nearest is screen",
            "'mask': {'file': 'a.png', 'kind': 'red'} => mask/kind red: not one of",
            "'name': 'sky', 'seed': 0.5 => seed (sky) is not a whole number",
            "'name': 'sky', 'mode': 'scren' => mode (sky) scren: no such mode",
            "'name': 'sky', 'opacity': {'keys': [{'frame': 'x'}]} => opacity/keys/0/frame (sky) is not",
            "'transform': {'rotate': [1, 2]} => transform/rotate does not have 1 items",
            "'transform': {'scale': 'big'} => transform/scale is not a list of 1 to 2 numbers",
            "'transform': {'matrix': [1, 0, 0], 'scale': 2} => transform/matrix excludes scale",
            "'transform': {'matrix': [1, 0, 0]} => transform/matrix does not have 9 items",
            "'shutter': {'angle': -1} => shutter/angle is not a number from 0 to 3600",
            "'shutter': {'matrices': 258} => shutter/matrices is not a whole number from 2 to 257"});
}

TEST_F(SceneFile, WhatItSaysArrives) {
    put("a#1.png", "a file, not a sequence");
    put_quoted("s.json", R"({'size': [64, 48], 'depth': 16, 'rate': [30000, 1001],
        'frames': [3, 9], 'background': [0.25, 0.5, 1], 'comment': 'not looked at', 'layers': [
        {'file': 'a#1.png', 'mode': 'soft-light', 'matte': [0, 0.5, 1], 'field': 'odd', 'quality': 'draft',
         'rgb-only': true, 'linear': 1.8, 'seed': -7, 'mask': {'file': 'a#1.png', 'kind': 'luma', 'at': [-3, 4]},
         'opacity': {'keys': [{'frame': 0, 'value': 0, 'interpolation': 'smooth'}, {'frame': 4, 'value': 1}]},
         'transform': {'scale': [2, 3]}, 'shutter': {'angle': 90, 'phase': -45, 'matrices': 3}},
        {'file': {'name': 'pic.%03d.png', 'offset': -2}, 'name': 'clip', 'comment': 'neither'}]})");
    const Scene scene = read_scene(folder / "s.json");
    EXPECT_EQ(std::tuple(scene.width, scene.height, scene.rate.number, scene.rate.per, scene.frames->frame(0),
                         scene.frames->count(), scene.colour.alpha, scene.colour.red),
              std::tuple(64, 48, 30000, 1001, 3, 7, 1, 0.25f));
    const SceneLayer& layer = scene.layers.at(0);
    EXPECT_EQ(layer.source->file()->at(5), folder / "a#1.png");
    EXPECT_EQ(std::tuple(layer.mode, layer.field, layer.quality, layer.rgb_only, layer.seed, layer.source->matte()->red,
                         layer.source->matte()->green, layer.source->matte()->blue),
              std::tuple(8, 2, 0, true, -7, 0.0f, 0.5f, 1.0f));
    EXPECT_EQ(std::tuple(layer.mask->kind, layer.mask->at.at(0)[0], layer.mask->at.at(0)[1], layer.shutter.angle,
                         layer.shutter.phase, layer.shutter.matrices),
              std::tuple(2, -3, 4, 90, -45, 3));
    EXPECT_EQ(layer.opacity.at(1)[0], 0.0625 * 3 - 2 * 0.015625);
    EXPECT_EQ(layer.transform->scale.at(0), (Track<2>::Value{2, 3}));
    EXPECT_EQ(scene.layers.at(1).place, "/layers/1 (clip)");
    EXPECT_EQ(scene.layers.at(1).source->file()->at(9), folder / "pic.007.png");
    EXPECT_THROW(check_files(scene, *scene.frames), SceneFault);
}

}  // namespace
