// SPDX-License-Identifier: Apache-2.0
// The effects of examples/ on canvases: tint against a formula, both at every processor level, on bands and threads.
#include <cmath>
#include <nlohmann/json.hpp>

#include "QX/suites/QX_Suites.h"
#include "host/EffectFolders.h"
#include "platform/standalone/Host.h"
#include "scene/EffectRead.h"
#include "tests/pictures/Support.h"
#include "tests/support/Test.h"
#include "tests/support/TestHost.h"
#include "tests/support/Worlds.h"

namespace {

using namespace qx::test;
using namespace qx::scene;
using qx::scene::Canvas;  // not that of the drawing tests

/// A scene's effect from a sample, told with ' for ".
std::shared_ptr<const Effect> sample(std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    qx::host::EffectFolders folders({QX_SAMPLE_EFFECTS});
    const auto json = parse_json("{" + text + "}", "s.json");
    const std::string file = "s.json";
    return read_effect(SceneNode(json, file), "", &folders).effect;
}

template <class Pixel> std::unique_ptr<QX_World> random_world(int width, int height, unsigned seed) {
    std::vector<Pixel> pixels(static_cast<std::size_t>(width * height));
    fill_pixels<Pixel>(pixels, FillKind::random, seed);
    return std::move(picture<Pixel>(width, height, true, [&](int x, int y) {
                         return pixels[static_cast<std::size_t>(y * width + x)];
                     }).world);
}

Canvas applied(const Effect& effect, const QX_World& world, double frame = 0) {
    Canvas canvas{qx::pictures::at_depth("layer", world, world.Depth())};
    effect.apply(canvas,
                 {.frame = frame, .subject = "layer", .picture = {}, .note = {}, .watch = qx::pictures::unwatched()});
    return canvas;
}

/// The library with its suites.
struct WithSuites {
    Born born;
    explicit WithSuites(int bands, standalone::ProcessorLevel level = standalone::ProcessorLevel::widest)
        : born(bands, level) {
        EXPECT_EQ(QX_InstallSuites(), 0);
    }
};

/// A channel on its way, in exact numbers; of floats in steps that are rounded once each.
template <class Channel> Channel tinted(Channel from, double target, double amount) {
    if constexpr (std::is_floating_point_v<Channel>) {
        const auto step = static_cast<float>(static_cast<double>(static_cast<float>(target)) - from);
        const auto part = static_cast<float>(static_cast<double>(step) * static_cast<float>(amount));
        return static_cast<float>(static_cast<double>(from) + part);
    } else {
        const double full = sizeof(Channel) == 1 ? 255 : 32768;
        const double share = std::round(amount * 65536) / 65536;
        return static_cast<Channel>(std::floor(from + (std::round(target * full) - from) * share + 0.5));
    }
}

constexpr double kColour[] = {0.9, 0.25, 0.501};
const std::string kTint = "'plugin': 'tint', 'parameters': {'colour': [0.9, 0.25, 0.501], 'amount': ";
const std::string kShadow =
    "'plugin': 'shadow', 'parameters': {'offset': {'keys': [{'frame': 0, 'value': [-7, 4]}, "
    "{'frame': 40, 'value': [13, -9]}]}, 'opacity': 0.7, 'colour': [0.2, 0.1, 0.6]}";

template <class Pixel> class SampleEffects : public testing::Test {};
TYPED_TEST_SUITE(SampleEffects, AllDepths);

TYPED_TEST(SampleEffects, TintGoesByItsFormula) {
    for (const auto level : kLevels) {
        if (level > standalone::DetectedProcessorLevel()) continue;
        const WithSuites library(32, level);
        const auto world = random_world<TypeParam>(97, 61, 5);
        for (const double amount : {0.0, 0.3, 0.77777, 1.0}) {
            const auto effect = sample(kTint + std::to_string(amount) + "}");
            const Canvas canvas = applied(*effect, *world);
            effect->rest();
            qx::pictures::each_pixel<TypeParam>(*canvas.world, [&](const TypeParam& p, int x, int y) {
                TypeParam expected = qx::row_of<TypeParam>(*world, y)[x];
                expected.red = tinted(expected.red, kColour[0], amount);
                expected.green = tinted(expected.green, kColour[1], amount);
                expected.blue = tinted(expected.blue, kColour[2], amount);
                ASSERT_EQ(p, expected) << x << ", " << y;
            });
        }
    }
}

TYPED_TEST(SampleEffects, LevelsBandsAndThreadsDoNotShow) {
    for (const std::string& text : {kTint + "0.4}", kShadow}) {
        std::vector<Canvas> plain;
        for (const auto level : kLevels) {
            if (level > standalone::DetectedProcessorLevel()) continue;
            for (const int bands : {1, 3, 32}) {
                const WithSuites library(bands, level);
                const auto world = random_world<TypeParam>(150, 70, 6);
                const auto effect = sample(text);
                const int frames = 5;
                std::vector<Canvas> made(frames);
                standalone::SetPoolLimit(bands == 1 ? 1 : 4);
                in_threads(bands == 1 ? 1 : frames, [&](int i) {  // each frame on a thread, or one by one from the last
                    for (int frame = bands == 1 ? frames - 1 : i; frame >= (bands == 1 ? 0 : i); --frame) {
                        made[static_cast<std::size_t>(frame)] = applied(*effect, *world, 9 * frame);
                    }
                });
                standalone::SetPoolLimit(0);
                effect->rest();
                if (plain.empty()) {
                    for (const Canvas& canvas : made) {
                        plain.push_back(
                            {qx::pictures::at_depth("", *canvas.world, canvas.world->Depth()), canvas.x, canvas.y});
                    }
                }
                for (std::size_t i = 0; i < made.size(); ++i) {
                    EXPECT_TRUE(same_pixels(*made[i].world, *plain[i].world)) << text << bands << " bands, frame " << i;
                    EXPECT_TRUE(made[i].x == plain[i].x && made[i].y == plain[i].y) << text;
                }
            }
        }
    }
}

TEST(SampleEffects, GrowToTheSidesWhereTheShadowGoes) {
    const WithSuites library(1);
    const auto world = random_world<QX_Pixel8>(20, 10, 7);
    const auto effect = sample(kShadow);
    for (const auto& [frame, x, y, width, height] :
         Cases<double, int, int, int, int>{{0, -7, 0, 27, 14}, {14, 0, -1, 20, 11}, {40, 0, -9, 33, 19}}) {
        const Canvas canvas = applied(*effect, *world, frame);
        EXPECT_TRUE(canvas.x == x && canvas.y == y) << frame;
        EXPECT_TRUE(canvas.world->width == width && canvas.world->height == height) << frame;
    }
    effect->rest();
}

}  // namespace
