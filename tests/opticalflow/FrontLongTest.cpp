// SPDX-License-Identifier: Apache-2.0
// Many small pairs, for the sanitizers: QX_SEEDS=1-100000 is the long run.
#include "tests/opticalflow/FrontSupport.h"

namespace qx::test {
namespace {

/// Sides of 1 and up, all parameters, floats that are no numbers: what a pair gives does not depend on the level, or
/// on whether its vectors were there.
void render_small_pair(std::uint64_t seed) {
    scenes::Dice dice(seed);
    const int w = 1 + dice.below(24), h = 1 + dice.below(24), depth = kDepths[dice.below(3)];
    Shot shot(depth, w, h, dice.between(-5, 5), dice.between(-5, 5));
    if (dice.once_in(3)) shot.frames[1] = scenes::noise(dice, w, h, depth);
    if (depth == 32 && dice.once_in(2)) scenes::spoil(shot.frames[dice.below(2)], dice);
    shot.first = world_of(shot.frames[0]), shot.second = world_of(shot.frames[1]);
    shot.params = scenes::drawn_params(dice, std::max(w, 2), std::max(h, 2));
    shot.params.samples = 1 + dice.below(2);
    shot.other.position = dice.once_in(8) ? dice.between(-3, 3) : dice.unit();
    const auto pictures = [&](standalone::ProcessorLevel level) {
        const Born born(1 + dice.below(9), level);
        const Reports reports;
        std::vector<Frame> made;
        for (int round = 0; round < 2; ++round) {
            shot.copy_frame(Frame(w, h, depth));
            const int code = shot.render();
            EXPECT_TRUE(code == 0 || code == 4) << code << " of seed " << seed;
            made.push_back(shot.result());
        }
        EXPECT_TRUE(same_bits(made[0], made[1])) << "seed " << seed;
        standalone::PurgeCacheMemory();
        return made[0];
    };
    const scenes::Dice before = dice;
    const Frame plain = pictures(standalone::ProcessorLevel::plain);
    dice = before;
    const Frame level = pictures(kLevels[1 + seed % 3]);
    EXPECT_TRUE(same_bits(plain, level)) << "seed " << seed;
}

TEST(FlowLong, SmallPairsAreRendered) {
    for (const std::uint64_t seed : seeds(2000)) {
        render_small_pair(seed);
        if (HasFailure()) break;
    }
}

}  // namespace
}  // namespace qx::test
