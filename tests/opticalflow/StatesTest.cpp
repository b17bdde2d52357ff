// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BuildPicture.h"
#include "opticalflow/src/Tweener.h"
#include "tests/opticalflow/InsideSupport.h"

namespace qx::test {
namespace {

/// Some vectors are none; wild ones are no numbers, or too large ones.
flow_model::Field random_field(scenes::Dice& dice, int w, int h, bool wild = false) {
    flow_model::Field field(w, h);
    for (auto& v : field.px) {
        const auto component = [&] { return static_cast<float>(std::round(dice.between(-6, 6) * 10) / 10); };
        v = dice.once_in(9) ? flow_model::Vec{flow_model::kInvalid, 0} : flow_model::Vec{component(), component()};
        constexpr float kWild[] = {NAN, HUGE_VALF, -HUGE_VALF, 1e38f, -1e38f, flow_model::kInvalid, -0.0f, 1e-40f};
        if (wild && dice.once_in(6)) (dice.once_in(2) ? v.x : v.y) = kWild[dice.below(8)];
    }
    return field;
}

/// Pictures with what no render has: states in the map, painted or followed, and the nearer frame alone.
TEST(FlowStates, PicturesByStates) {
    for (std::uint64_t seed = 1; seed <= 24; ++seed) {
        scenes::Dice dice(seed);
        const int w = 12 + dice.below(40), h = 9 + dice.below(30), small_w = 2 + w / 4, small_h = 2 + h / 4;
        const Frame first = scenes::noise(dice, w, h, 8), second = scenes::noise(dice, w, h, 8);
        const auto to_second = random_field(dice, small_w, small_h), to_first = random_field(dice, small_w, small_h);
        flow_model::States map(small_w, small_h);
        for (int& s : map.px) s = dice.below(4);
        const flow_model::PictureFlags flags{.paint_states = dice.once_in(2), .nearer_alone = dice.once_in(3)};
        const auto t = static_cast<float>(dice.unit()), scale = flow_model::real(w) / flow_model::real(small_w);
        const Frame expected = flow_model::build_picture(
            first, second, flow_model::enlarged(to_second, w, h, 1.0f / scale),
            flow_model::enlarged(to_first, w, h, 1.0f / scale), flow_model::enlarged(map, w, h), scale, t, flags);

        of::FnTexture<of::Argb<std::uint8_t>> frames[2], out;
        read_frame(first, frames[0]), read_frame(second, frames[1]);
        ASSERT_TRUE(out.allocate(w, h));
        of::FieldTexture fields[2];
        of::IntTexture states;
        read_texture(to_second, fields[0]), read_texture(to_first, fields[1]), read_texture(map, states);
        of::FnMotionEstimateGradientTweeningParameters p;
        p.to_second = &fields[0], p.to_first = &fields[1], p.occlusion_map = &states;
        p.position = t;
        if (flags.paint_states) p.flags |= of::kPaintsStates;
        of::InterruptState state;
        of::FnMotionEstimateGradientTweenerBuildPicture<of::Argb<std::uint8_t>> build(state, frames[0], frames[1], p);
        build.takes_nearer_frame = flags.nearer_alone;
        build.process(&out);
        for (const auto& [x, y] : places(w, h)) {
            const auto& p8 = out.at(x, y);
            const flow_model::Colour made{float(p8.alpha), float(p8.red), float(p8.green), float(p8.blue)};
            ASSERT_EQ(made, expected.read(x, y)) << "seed " << seed << ", at " << x << " " << y;
        }
    }
}

flow_model::Image random_image(scenes::Dice& dice, int w, int h) {
    flow_model::Image image(w, h);
    for (float& v : image.px) v = static_cast<float>(dice.below(5)) / 5;  // few values, so that costs are equal
    return image;
}

/// Guessed occlusions and borrowed candidates, which no render asks for, at any number of parts.
TEST(FlowStates, TweensAreTheModels) {
    int guessed = 0;
    for (const int bands : {1, 3}) {
        const Born born(bands);
        of::forgetProcessorCount();
        for (std::uint64_t seed = 1; seed <= 60; ++seed) {
            scenes::Dice dice(seed);
            flow_model::Tween tween;
            const int w = tween.w = 3 + dice.below(20), h = tween.h = 3 + dice.below(14);
            tween.t = static_cast<float>(dice.unit());
            tween.iterations = 1 + dice.below(3);
            tween.occlusion_rounds = 1 + dice.below(3);
            tween.weights = {static_cast<float>(dice.unit()), static_cast<float>(dice.between(0, 50))};
            tween.flags = (dice.once_in(4) ? 0u : 0x10u) | (dice.once_in(2) ? 0x800u : 0u);
            tween.frame0 = random_image(dice, w, h), tween.frame1 = random_image(dice, w, h);
            tween.forward = random_field(dice, w, h, seed % 4 == 0);
            tween.backward = random_field(dice, w, h, seed % 4 == 0);

            of::FloatTexture frames[2];
            of::FieldTexture fields[2];
            read_texture(tween.frame0, frames[0]), read_texture(tween.frame1, frames[1]);
            read_texture(tween.forward, fields[0]), read_texture(tween.backward, fields[1]);
            of::InterruptState state;
            of::FnMotionEstimateGradientTweener engine(state);
            of::FnMotionEstimateGradientTweeningParameters& p = engine;
            p.position = tween.t;
            p.iterations = tween.iterations;
            p.occlusion_smoothing_rounds = tween.occlusion_rounds;
            p.data_weight = tween.weights.data, p.smoothness_weight = tween.weights.smoothness;
            p.flags = tween.flags;
            p.forward = &fields[0], p.backward = &fields[1];
            engine.process(frames[0], frames[1], &frames[0]);

            flow_model::run_tween(tween, bands);
            ASSERT_EQ(state.current_code(), 0);
            ASSERT_EQ(model_of<flow_model::States>(*p.occlusion_map).px, tween.map.px) << "seed " << seed;
            ASSERT_TRUE(same_bits(model_of<flow_model::Field>(*p.to_second), tween.to1)) << "seed " << seed;
            ASSERT_TRUE(same_bits(model_of<flow_model::Field>(*p.to_first), tween.to0)) << "seed " << seed;
            for (const int s : tween.map.px) guessed += s != 0;
        }
    }
    EXPECT_GT(guessed, 1000);
    of::forgetProcessorCount();
}

}  // namespace
}  // namespace qx::test
