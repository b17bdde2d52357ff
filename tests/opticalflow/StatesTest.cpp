// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BuildPicture.h"
#include "opticalflow/src/Tweener.h"
#include "tests/opticalflow/InsideSupport.h"

namespace qx::test {
namespace {

flow_model::Field random_field(scenes::Dice& dice, int w, int h) {
    flow_model::Field field(w, h);
    for (auto& v : field.px) {
        const auto component = [&] { return static_cast<float>(std::round(dice.between(-6, 6) * 10) / 10); };
        v = dice.once_in(9) ? flow_model::Vec{flow_model::kInvalid, 0} : flow_model::Vec{component(), component()};
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

}  // namespace
}  // namespace qx::test
