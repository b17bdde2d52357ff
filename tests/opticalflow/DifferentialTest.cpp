// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "tests/opticalflow/FlowSupport.h"
#include "tests/support/TestLevels.h"

namespace qx::test {
namespace {

namespace scenes = flow_model::scenes;

/// Where two fields or frames differ first, in words.
template <class A> std::string first_difference(const A& a, const A& b) {
    for (std::size_t i = 0; i < a.px.size(); ++i)
        if (std::memcmp(&a.px[i], &b.px[i], sizeof a.px[i]) != 0)
            return ", at " + std::to_string(i % std::size_t(a.w)) + " " + std::to_string(i / std::size_t(a.w));
    return "";
}

/// The model takes the sinc's taps from a library's sine, so its pictures lie within one level of these.
void expect_near(const Frame& made, const Frame& expected, const std::string& name) {
    for (std::size_t i = 0; i < made.px.size(); ++i)
        for (std::size_t c = 0; c < 4; ++c)
            ASSERT_NEAR(made.px[i][c], expected.px[i][c], made.depth == 32 ? 1e-5 : 1.0) << name;
}

/// The library's render and the fields that it keeps are those of the model.
void compare(std::uint64_t seed, bool wild, int bands) {
    scenes::Scene scene = scenes::drawn(seed, wild);
    scene.params.mode = 2;
    const OwnedWorld first = world_of(scene.first), second = world_of(scene.second), out = world_of(scene.first);
    QX_Solvan_OtherParams other{};
    other.firstFrameId = id_of(static_cast<std::uint32_t>(2 * seed + 1));
    other.secondFrameId = id_of(static_cast<std::uint32_t>(2 * seed + 2));
    other.position = scene.position;
    QX_AdvancedFrameBlending blending(percentages_of(scene.params), other, {});
    if (blending.CheckParamRange() != 0) return;
    take_fractions(blending.algo(), scene.params);
    const flow_model::Parts parts(bands);
    const flow_model::Pair pair = flow_model::vectors(scene.first, scene.second, scene.params, parts);
    ASSERT_EQ(blending.Render(first.get(), second.get(), out.get()), pair.code) << scene.name;
    if (pair.code != 0) return;
    const auto cached = cached_vectors(identity_of(blending.algo(), other.firstFrameId, other.secondFrameId));
    ASSERT_TRUE(cached.has_value()) << scene.name;
    ASSERT_TRUE(same_bits(cached->backward, pair.backward))
        << scene.name << first_difference(cached->backward, pair.backward);
    ASSERT_TRUE(same_bits(cached->forward, pair.forward))
        << scene.name << first_difference(cached->forward, pair.forward);
    const Frame expected = flow_model::picture(scene.first, scene.second, pair, scene.position, scene.params, parts);
    const Frame made = frame_of(*out);
    if (scene.params.sinc) {
        if (!wild) expect_near(made, expected, scene.name);
    } else {
        ASSERT_TRUE(same_bits(made, expected)) << scene.name << first_difference(made, expected);
    }
}

class FlowDifferential : public AtLevel {};

/// More where somebody asks for them.
int seeds() {
    const char* const asked = std::getenv("QX_FLOW_SEEDS");
    return asked == nullptr ? 25 : std::atoi(asked);
}

TEST_P(FlowDifferential, RandomPairsAreTheModels) {
    for (const int bands : {1, 2, 7, 32}) {
        const Born born(bands, GetParam());
        for (int k = 0; k < seeds() && !HasFatalFailure(); ++k)
            compare(static_cast<std::uint64_t>(4 * k + bands % 4), k % 5 == 4, bands);
    }
}
QX_AT_LEVELS(FlowDifferential, standalone::ProcessorLevel::plain, standalone::ProcessorLevel::vector,
             standalone::ProcessorLevel::faster, standalone::ProcessorLevel::widest);

}  // namespace
}  // namespace qx::test
