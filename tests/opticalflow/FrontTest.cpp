// SPDX-License-Identifier: Apache-2.0
// What holds of renders by nature, on any number of threads.
#include "opticalflow/src/QX_SolvanCache.h"
#include "tests/opticalflow/FrontSupport.h"

namespace qx::test {
namespace {

namespace of = solvan_of;

struct FlowFront : testing::Test {
    Born born{32};
    ~FlowFront() override { standalone::PurgeCacheMemory(); }
};

TEST_F(FlowFront, EqualFramesAreTheirOwnMiddle) {
    for (const int depth : kDepths) {
        for (const bool one_colour : {false, true}) {
            Shot shot(depth, 41, 29, 0, 0);
            if (one_colour) {
                shot.frames[0] = Frame(41, 29, depth, shot.frames[0].read(5, 5));
                shot.first = world_of(shot.frames[0]), shot.second = world_of(shot.frames[0]);
            }
            const Frame& own = shot.frames[0];
            const double most = depth == 32 ? 1e-6 : 1;
            for (int step = 0; step <= 200; ++step) {
                shot.other.position = step * 0.005;
                const Frame made = shot.rendered();
                if (step == 100) {
                    EXPECT_TRUE(same_bits(made, own)) << depth;
                }
                for (std::size_t i = 0; i < own.px.size(); ++i)
                    for (std::size_t c = 0; c < 4; ++c) ASSERT_NEAR(made.px[i][c], own.px[i][c], most) << step;
            }
            const auto cached = cached_vectors(shot.identity());
            ASSERT_TRUE(cached.has_value());
            EXPECT_TRUE(same_bits(cached->forward, flow_model::Field(20, 14)));
            EXPECT_TRUE(same_bits(cached->backward, flow_model::Field(20, 14)));
        }
    }
}

TEST_F(FlowFront, EndsAndModesAreAsStated) {
    const Cases<int, double, int> cases = {
        // mode, position, frame that is copied
        {2, 0.0, 0},     {2, 0.0024, 0}, {2, 0.9974, -1}, {2, 0.9976, 1}, {2, 0.9999, 1}, {2, 1.0, 0}, {2, 2.0, 0},
        {2, 0.0026, -1}, {0, 0.5, 0},    {0, 0.50001, 1}, {0, -3, 0},     {0, 7, 1},      {1, 0.0, 0}};
    for (const int depth : kDepths) {
        Shot shot(depth);
        for (const auto& [mode, position, frame] : cases) {
            shot.params.mode = mode;
            shot.other.position = position;
            const Frame made = shot.rendered();
            for (const int one : {0, 1})
                EXPECT_EQ(same_bits(made, shot.frames[one]), one == frame) << mode << " at " << position;
        }
        shot.params.mode = 1;
        for (const double position : {0.25, 0.5023, 1.0, 1.5, -0.5}) {
            shot.other.position = position;
            EXPECT_TRUE(same_bits(shot.rendered(), shot.expected(32))) << position;
        }
        shot.params.samples = 20, shot.params.shutter = 0;
        EXPECT_TRUE(same_bits(shot.rendered(), shot.expected(32)));
    }
}

/// FNV-1a of 64 bits of both fields and the picture.
std::uint64_t checksum(const flow_model::Field& forward, const flow_model::Field& backward, const Frame& picture) {
    std::uint64_t sum = 0xcbf29ce484222325;
    const auto add = [&sum](const auto& pixels) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(pixels.data());
        for (std::size_t i = 0; i < pixels.size() * sizeof pixels[0]; ++i) sum = (sum ^ bytes[i]) * 0x100000001b3;
    };
    add(forward.px), add(backward.px), add(picture.px);
    return sum;
}

/// Twelve scenes by their fields and pictures, of the library and of the model. One that changes is another engine's:
/// raise kEngineNumber, so that nobody finds old vectors, and write the new ones here.
TEST_F(FlowFront, ChecksumsAreThoseOfThisEngine) {
    static_assert(of::kEngineNumber == 1, "the checksums below are those of number 1");
    constexpr std::uint64_t kChecksums[] = {0x575a0f62f1ad6b93, 0x5ff796f09d148c82, 0x435a7769ec01bf9b,
                                            0x95b92f9020d8d84f, 0x11cfe664a9b93eb4, 0x4e50aade0c8c87f7,
                                            0xd1fdaf0e94f3491e, 0x5e47b84e4f6dbbeb, 0x4ba04b758491cafd,
                                            0xd9e9c9db07a98159, 0x98cb2b36c4e0fc73, 0xc47e29ea8041ab90};
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        scenes::Scene scene = scenes::drawn(seed);
        scene.params.sinc = false;
        Shot shot;
        shot.params = scene.params;
        shot.first = world_of(scene.first), shot.second = world_of(scene.second), shot.out = world_of(scene.first);
        shot.other.position = scene.position;
        const Frame made = shot.rendered();
        const auto cached = cached_vectors(shot.identity());
        ASSERT_TRUE(cached.has_value());
        take_fractions(QX_AdvancedFrameBlending(percentages_of(scene.params), {}, {}).algo(), scene.params);
        const auto pair = flow_model::vectors(scene.first, scene.second, scene.params, 32);
        const Frame model = flow_model::picture(scene.first, scene.second, pair, scene.position, scene.params, 32);
        EXPECT_EQ(checksum(cached->forward, cached->backward, made), kChecksums[seed - 1]) << scene.name;
        EXPECT_EQ(checksum(pair.forward, pair.backward, model), kChecksums[seed - 1]) << "model, " << scene.name;
    }
}

/// An order of the parts behind the first, which stays on the caller's thread.
standalone::Executor in_order_of(unsigned seed) {
    return [seed](const boost::function<void(int)>& task, int count) {
        std::vector<int> order;
        for (int i = 1; i < count; ++i) order.push_back(i);
        std::shuffle(order.begin(), order.end(), std::mt19937(seed));
        const auto half = static_cast<std::ptrdiff_t>(order.size() / 2);
        std::for_each(order.begin(), order.begin() + half, task);
        task(0);
        std::for_each(order.begin() + half, order.end(), task);
    };
}

TEST_F(FlowFront, ThreadsDontShow) {
    for (const bool sinc : {false, true}) {
        Shot shot(16, 90, 70, 6, 4);
        shot.params.sinc = sinc;
        standalone::SetPoolLimit(1);
        const Frame alone = shot.rendered();
        const auto anew = [&] {
            standalone::PurgeCacheMemory();
            return shot.rendered();
        };
        for (const int threads : {2, 16}) {
            standalone::SetPoolLimit(threads);
            EXPECT_TRUE(same_bits(anew(), alone)) << threads;
        }
        for (unsigned seed = 1; seed <= 5; ++seed) {
            standalone::SetExecutor(in_order_of(seed));
            EXPECT_TRUE(same_bits(anew(), alone)) << "order " << seed;
        }
        standalone::SetExecutor({});
        standalone::SetPoolLimit(0);
    }
}

/// Four pairs, and four renders of one.
TEST_F(FlowFront, ThreadsMayRenderAtOnce) {
    standalone::SetPoolLimit(16);
    for (const bool one_pair : {false, true}) {
        std::vector<Shot> shots;
        for (int i = 0; i < 4; ++i) {
            shots.emplace_back(8, 60, 44, 3 + i, -2);
            if (one_pair) shots.back().other = shots.front().other, shots.back().other.position = 0.2 + 0.1 * i;
            if (one_pair && i > 0) {
                shots.back().frames[1] = shots.front().frames[1];
                shots.back().second = world_of(shots.back().frames[1]);
            }
        }
        for (int round = 0; round < 3; ++round) {
            standalone::PurgeCacheMemory();
            in_threads(4, [&](int i) { EXPECT_EQ(shots[static_cast<std::size_t>(i)].render(), 0); });
            for (const Shot& shot : shots) EXPECT_TRUE(same_bits(shot.result(), shot.expected(32)));
        }
    }
    standalone::SetPoolLimit(0);
}

}  // namespace
}  // namespace qx::test
