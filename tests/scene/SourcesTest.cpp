// SPDX-License-Identifier: Apache-2.0
// Solids and gradients.
#include "scene/Faults.h"
#include "scene/sources/Gradient.h"
#include "tests/scene/SceneFolder.h"

namespace {

using namespace qx::scene;
using namespace qx::pictures;
using namespace qx::test;

using Sources = SceneFolder;

TEST_F(Sources, ASolidIsTheColourOfABackground) {
    for (const std::string depth : {"8", "16", "32"}) {
        const std::string at = ", 'depth': " + depth;
        put_quoted("ground.json", "{'size': [40, 30], 'background': [0.3, 0.55, 1, 0.7]" + at + ", 'layers': []}");
        const Picture ground = frame(read_scene(folder / "ground.json"));
        EXPECT_TRUE(same_pixels(shown("{'solid': [0.3, 0.55, 1, 0.7], 'mode': 'copy'}", 1, at), ground)) << depth;
        const Picture part = shown("{'solid': [0.3, 0.55, 1, 0.7], 'size': [7, 5], 'mode': 'copy'}", 1, at);
        EXPECT_EQ(channels(part, 6, 4), channels(ground, 6, 4)) << depth;
        EXPECT_EQ(channels(part, 7, 4), (List{0, 0, 0, 0})) << depth;
        EXPECT_EQ(channels(part, 6, 5), (List{0, 0, 0, 0})) << depth;
    }
}

TEST_F(Sources, ASolidsColourMoves) {
    const Scene scene =
        scene_of("{'solid': {'keys': [{'frame': 0, 'value': [1, 0, 0]}, {'frame': 10, 'value': [0, 1, 0.5, 0.2]}]}}");
    for (const int i : {7, 0, 3}) {
        const double u = i / 10.0;
        const double expected[] = {1 - 0.8 * u, 1 - u, u, 0.5 * u};
        const List found = channels(frame(scene, i), 9, 9);
        for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(found[k], 255 * expected[k], 1.01) << i << " " << k;
    }
}

/// What a point shows, in other words than those of the source: the stops on both sides are looked for from the end,
/// colours are mixed multiplied by their alphas and divided by the mix of these.
List model(const std::vector<std::pair<double, List>>& stops, double u) {
    std::size_t after = stops.size();
    while (after > 0 && stops[after - 1].first > u) --after;
    if (after == 0) return stops.front().second;
    if (after == stops.size()) return stops.back().second;
    const auto& [from, a] = stops[after - 1];
    const auto& [to, b] = stops[after];
    const double w = (u - from) / (to - from), alpha = (1 - w) * a[0] + w * b[0];
    List mixed{alpha};
    for (std::size_t k = 1; k < 4; ++k) {
        const double multiplied = (1 - w) * a[0] * a[k] + w * b[0] * b[k];
        mixed.push_back(alpha > 0 ? multiplied / alpha : (1 - w) * a[k] + w * b[k]);
    }
    return mixed;
}

TEST_F(Sources, GradientsAreTheirFormulaAtTheMiddlesOfPixels) {
    const std::vector<std::pair<double, List>> stops{
        {0.1, {1, 1, 0, 0.2}}, {0.4, {0, 0, 1, 0}}, {0.4, {0.5, 0, 0, 1}}, {0.9, {1, 0.25, 1, 0.75}}};
    const std::string told =
        "'from': [5, 8], 'to': [30, 20], 'stops': [{'at': 0.1, 'colour': [1, 0, 0.2]}, {'at': 0.4, 'colour': [0, 1, "
        "0, 0]}, {'at': 0.4, 'colour': [0, 0, 1, 0.5]}, {'at': 0.9, 'colour': [0.25, 1, 0.75]}]}, 'mode': 'copy'}";
    for (const auto& [depth, full] : {std::pair{"8", 255.0}, {"16", 32768.0}, {"32", 1.0}}) {
        for (const std::string kind : {"linear", "radial"}) {
            const Picture found =
                shown("{'gradient': {'kind': '" + kind + "', " + told, 1, std::string(", 'depth': ") + depth);
            double farthest = 0;
            for (int y = 0; y < kHeight; ++y) {
                for (int x = 0; x < kWidth; ++x) {
                    const double dx = x + 0.5 - 5, dy = y + 0.5 - 8;
                    const double along = (dx * 25 + dy * 12) / std::hypot(25, 12) / std::hypot(25, 12);
                    const double u = kind == "linear" ? along : std::hypot(dx, dy) / std::hypot(25, 12);
                    const List expected = model(stops, u), pixel = channels(found, x, y);
                    for (std::size_t k = 0; k < 4; ++k) {
                        farthest = std::max(farthest, std::abs(pixel[k] - full * expected[k]));
                    }
                }
            }
            EXPECT_LT(farthest, full == 1 ? 1e-6 : 0.5 + 1e-6) << depth << kind << ": one rounding is half a step";
        }
    }
}

TEST_F(Sources, GradientsMoveAndMayHaveOneStopOrNoLength) {
    const std::string to = "'to': [40, 0], 'stops': [{'at': 0, 'colour': [0, 0, 0]}, {'at': 1, 'colour': [1, 1, 1]}]}}";
    const Scene scene = scene_of(
        "{'gradient': {'from': {'keys': [{'frame': 0, 'value': [0, 0]}, {'frame': 4, 'value': [20, 0]}]}, " + to);
    for (const int i : {4, 0, 2}) {
        const Picture still = shown("{'gradient': {'from': [" + std::to_string(5 * i) + ", 0], " + to);
        EXPECT_TRUE(same_pixels(frame(scene, i), still)) << i;
    }
    EXPECT_FALSE(same_pixels(frame(scene, 0), frame(scene, 4)));
    const std::string point = "{'gradient': {'from': [3, 3], 'to': [3, 3], 'stops': [{'at': 0, 'colour': [1, 0, 0]}";
    EXPECT_EQ(channels(shown(point + "]}}"), 8, 8), (List{255, 255, 0, 0}));
    EXPECT_EQ(channels(shown(point + ", {'at': 0.5, 'colour': [0, 0, 1]}]}}"), 3, 3), (List{255, 0, 0, 255}));
}

TEST_F(Sources, WrongUses) {
    const std::string stop = "'stops': [{'at': 0, 'colour': [0, 0, 0]}]";
    expect_faults(
        {"{'solid': [1, 0]} => /layers/0/solid does not have 3 to 4 items",
         "{'solid': [1, 0, 2]} => /layers/0/solid/2 is not a number from 0 to 1",
         "{'solid': [1, 0, 0], 'file': 'a.png'} => /layers/0/solid excludes file",
         "{'solid': [1, 0, 0], 'matte': [0, 0, 0]} => /layers/0/matte is an unknown key",
         "{'solid': [1, 0, 0], 'size': [0, 4]} => /layers/0/size/0 is not a whole number from 1 to 30000",
         "{'solid': {'keys': [{'frame': 0, 'value': 1}]}} => /layers/0/solid/keys/0/value is not a list",
         "{'gradient': {'from': [0, 0], 'to': [1, 1]}} => /layers/0/gradient/stops is missing",
         "{'gradient': {'from': [0, 0], " + stop + "}} => /layers/0/gradient/to is missing",
         "{'gradient': {'from': [0, 0], 'to': [1, 1], 'stops': []}} => stops does not have 1 to",
         "{'gradient': {'kind': 'conic', 'from': [0, 0], 'to': [1, 1], " + stop +
             "}} => kind conic: not one of linear, radial",
         "{'gradient': {'from': [0, 0], 'to': [1, 1], 'stops': [{'at': 0.5, 'colour': [0, 0, 0]}, {'at': 0.4, "
         "'colour': [0, 0, 0]}]}} => stops/1/at comes before the stop before it",
         "{'gradient': {'from': [0, 0], 'to': [1, 1], 'stops': [{'at': 2, 'colour': [0, 0, 0]}]}} => "
         "stops/0/at is not a number from 0 to 1"});
}

}  // namespace
