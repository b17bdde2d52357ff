// SPDX-License-Identifier: Apache-2.0
/// What holds of the model by nature, so that it may judge the engine.
#include "tests/opticalflow/FlowModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "tests/opticalflow/Scenes.h"

namespace flow_model {
namespace {

bool same_bits(const Field& a, const Field& b) {
    if (a.w != b.w || a.h != b.h) return false;
    for (std::size_t i = 0; i < a.px.size(); ++i) {
        if (std::bit_cast<std::uint64_t>(a.px[i]) != std::bit_cast<std::uint64_t>(b.px[i])) return false;
    }
    return true;
}
bool same_bits(const Frame& a, const Frame& b) {
    if (a.w != b.w || a.h != b.h) return false;
    for (std::size_t i = 0; i < a.px.size(); ++i) {
        for (std::size_t k = 0; k < 4; ++k) {
            if (std::bit_cast<std::uint32_t>(a.px[i][k]) != std::bit_cast<std::uint32_t>(b.px[i][k])) return false;
        }
    }
    return true;
}

TEST(FlowModel, EqualFramesStay) {
    for (const int depth : {8, 16, 32}) {
        const Frame frame = scenes::painted(scenes::cloth(5, 20), 61, 43, depth);
        const Pair pair = vectors(frame, frame, {}, 7);
        EXPECT_TRUE(same_bits(pair.forward, Field(12, 8)));
        EXPECT_TRUE(same_bits(pair.backward, Field(12, 8)));
        EXPECT_TRUE(same_bits(picture(frame, frame, pair, 0.5, {}, 7), frame));
        const float most = depth == 32 ? 1e-6F : 1;
        for (int step = 0; step <= 200; ++step) {
            const Frame made = picture(frame, frame, pair, step * 0.005, {}, 7);
            for (std::size_t i = 0; i < made.px.size(); ++i) {
                for (std::size_t k = 0; k < 4; ++k) ASSERT_NEAR(made.px[i][k], frame.px[i][k], most) << step;
            }
        }
    }
}

/// The mean distance of the vectors from `truth` at least `border` away from the edge.
double mean_error(const Field& field, Vec truth, int border) {
    double sum = 0;
    int n = 0;
    for (int y = border; y < field.h - border; ++y) {
        for (int x = border; x < field.w - border; ++x, ++n) {
            sum += std::hypot(field.at(x, y).x - truth.x, field.at(x, y).y - truth.y);
        }
    }
    EXPECT_GT(n, 100);
    return sum / n;
}

TEST(FlowModel, PaintedMotionsAreFound) {
    const scenes::Texture cloth = scenes::cloth(3, 30);
    for (const auto& [dx, dy] : {std::pair{3.0, -2.0}, {2.5, 1.25}, {14.0, -6.0}}) {
        for (const float detail : {0.2F, 0.5F, 1.0F}) {
            const int w = detail == 1 ? 160 : 320, h = detail == 1 ? 120 : 240;
            Params params;
            params.detail = detail;
            const Frame first = scenes::painted(cloth, w, h, 16);
            const Frame second = scenes::painted(scenes::moved(cloth, dx, dy), w, h, 16);
            const Pair pair = vectors(first, second, params, 32);
            const Vec truth{static_cast<float>(-dx) * detail, static_cast<float>(dy) * detail};
            const int border = static_cast<int>(std::ceil(detail * 14)) + 2 * params.block;
            const double forward = mean_error(pair.forward, truth, border);
            const double backward = mean_error(pair.backward, {-truth.x, -truth.y}, border);
            EXPECT_LE(forward, 0.2) << dx << ", " << dy << " at " << detail;
            EXPECT_LE(backward, 0.2) << dx << ", " << dy << " at " << detail;
        }
    }
}

double decibels(const Frame& a, const Frame& b, int border) {
    double sum = 0;
    int n = 0;
    for (int y = border; y < a.h - border; ++y) {
        for (int x = border; x < a.w - border; ++x) {
            for (std::size_t k = 1; k < 4; ++k, ++n) {
                const double d = static_cast<double>(a.read(x, y)[k] - b.read(x, y)[k]);
                sum += d * d;
            }
        }
    }
    return 10 * std::log10(n * static_cast<double>(a.range()) * static_cast<double>(a.range()) / sum);
}

TEST(FlowModel, PicturesBetweenAreThoseOfTheMotion) {
    const scenes::Texture cloth = scenes::cloth(3, 30);
    const Frame first = scenes::painted(cloth, 320, 240, 16);
    const Frame second = scenes::painted(scenes::moved(cloth, 14, -6), 320, 240, 16);
    for (const double t : {0.25, 0.5, 0.75}) {
        const Frame truth = scenes::painted(scenes::moved(cloth, 14 * t, -6 * t), 320, 240, 16);
        Params params;
        params.detail = 0.2F;
        const Rendered made = render(first, second, 320, 240, t, params, 32);
        ASSERT_EQ(made.code, 0);
        params.mode = 1;
        const Rendered mixed = render(first, second, 320, 240, t, params, 1);
        const double flow = decibels(made.frame, truth, 74), mix = decibels(mixed.frame, truth, 74);
        EXPECT_GE(flow, 45) << t;
        EXPECT_LE(mix, 40) << t;
    }
    const Frame there = render(first, second, 320, 240, 0.5, {}, 32).frame;
    const Frame back = render(second, first, 320, 240, 0.5, {}, 32).frame;
    std::size_t equal = 0;
    for (std::size_t i = 0; i < there.px.size(); ++i) {
        for (std::size_t k = 0; k < 4; ++k) equal += there.px[i][k] == back.px[i][k];
    }
    EXPECT_GE(static_cast<double>(equal), 0.99 * 4 * static_cast<double>(there.px.size()));
}

TEST(FlowModel, ExchangedFramesExchangeTheFields) {
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        const scenes::Scene scene = scenes::drawn(seed);
        SCOPED_TRACE(scene.name);
        const Pair there = vectors(scene.first, scene.second, scene.params, 7);
        const Pair back = vectors(scene.second, scene.first, scene.params, 7);
        EXPECT_TRUE(same_bits(there.forward, back.backward));
        EXPECT_TRUE(same_bits(there.backward, back.forward));
    }
}

TEST(FlowModel, OrderOfPartsDoesNotShow) {
    for (std::uint64_t seed = 1; seed <= 24; ++seed) {
        const scenes::Scene scene = scenes::drawn(seed, seed % 8 == 0);
        SCOPED_TRACE(scene.name);
        for (const int bands : {2, 7, 32}) {
            const Pair up = vectors(scene.first, scene.second, scene.params, {bands, false});
            const Pair down = vectors(scene.first, scene.second, scene.params, {bands, true});
            ASSERT_EQ(up.code, 0);
            EXPECT_TRUE(same_bits(up.forward, down.forward) && same_bits(up.backward, down.backward)) << bands;
            const Frame from_top = picture(scene.first, scene.second, up, scene.position, scene.params, {bands, false});
            const Frame from_end = picture(scene.first, scene.second, up, scene.position, scene.params, {bands, true});
            EXPECT_TRUE(same_bits(from_top, from_end)) << bands;
        }
    }
}

TEST(FlowModel, GuessedOcclusionsFillHoles) {
    const scenes::Texture ground = scenes::cloth(8), patch = scenes::cloth(9, 30);
    Params params;
    params.detail = 0.5F;
    const Frame first = scenes::painted(scenes::over(patch, ground, 40, 30, 60, 50), 160, 120, 8);
    const Frame second =
        scenes::painted(scenes::over(scenes::moved(patch, 16, 8), ground, 56, 38, 60, 50), 160, 120, 8);
    const Pair pair = vectors(first, second, params, 4);
    Tween tween = tweened(pair, 0.5F, params, 4);
    EXPECT_EQ(std::count(tween.map.px.begin(), tween.map.px.end(), 0), 80 * 60);
    tween.flags = 0x438;
    tween.word = 2;
    tween.pass = 0;
    tween.occlusion_rounds = 2;
    run_tween(tween, 4);
    const auto counted = [&](int state) { return std::count(tween.map.px.begin(), tween.map.px.end(), state); };
    EXPECT_EQ(counted(0) + counted(1) + counted(2) + counted(3), 80 * 60);
    EXPECT_GT(counted(1), 0);
    EXPECT_GT(counted(2), 0);
    EXPECT_GT(counted(0), 80 * 60 / 2);
    int holes = 0;
    for (int y = 20; y < 40; ++y) {
        for (int x = 20; x < 60; ++x) holes += !tween.to1.at(x, y).valid() && !tween.to0.at(x, y).valid();
    }
    EXPECT_EQ(holes, 0);
}

}  // namespace
}  // namespace flow_model
