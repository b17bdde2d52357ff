// SPDX-License-Identifier: Apache-2.0
// Textures, the walk of stages over them, and what stages leave out or tell besides.
#include "opticalflow/src/BlockLanes.h"
#include "opticalflow/src/BlockSmoother.h"
#include "opticalflow/src/BuildPicture.h"
#include "opticalflow/src/CopySampler.h"
#include "opticalflow/src/Refinement.h"
#include "opticalflow/src/Tweener.h"
#include "tests/opticalflow/InsideSupport.h"

namespace qx::test {
namespace {

TEST(FlowTextures, AddressesAreThoseOfTheRange) {
    of::TexAxis axis;
    axis.set_size(7);
    axis.set_range(5, 2);  // in any order
    EXPECT_EQ(axis.length, 4);
    const Cases<of::Addressing, std::vector<int>> cases = {
        // places 0 to 9
        {of::Addressing::background, {-1, -1, 2, 3, 4, 5, -1, -1, -1, -1}},
        {of::Addressing::clamp, {2, 2, 2, 3, 4, 5, 5, 5, 5, 5}},
        {of::Addressing::mirror, {3, 2, 2, 3, 4, 5, 5, 4, 3, 2}},
        {of::Addressing::wrap, {4, 5, 2, 3, 4, 5, 2, 3, 4, 5}}};
    for (const auto& [mode, wanted] : cases) {
        axis.mode = mode;
        for (int i = 0; i < 10; ++i) EXPECT_EQ(axis.index(i), wanted[static_cast<std::size_t>(i)]) << i;
        for (int from = -9; from < 12; ++from) {  // runs are what single places are
            for (int at = from; at < 12;) {
                const of::TexRun run = of::run_of(axis, at, 12);
                for (int k = 0; k < run.length; ++k, ++at) ASSERT_EQ(run.index + k * run.step, axis.index(at)) << at;
            }
        }
    }
    axis.set_range(-4, 99);
    EXPECT_EQ(axis.first, 0);
    EXPECT_EQ(axis.last, 6);
    of::FloatTexture texture;
    texture.setFloatOffset(-1.5f, 2.5f);
    EXPECT_EQ(texture.x.integer_offset, -1);
    EXPECT_EQ(texture.y.integer_offset, 3);
    texture.setIntegerOffset(2, -3);
    EXPECT_EQ(texture.x.offset, 2.0f);
    EXPECT_EQ(texture.y.offset, -3.0f);
}

TEST(FlowTextures, AreasAreSampledInTheirMiddle) {
    of::FloatTexture own, other;
    ASSERT_TRUE(own.allocate(2, 2));
    own.at(0, 0) = 1, own.at(1, 0) = 2, own.at(0, 1) = 3, own.at(1, 1) = 8;
    own.setBackground(-10);
    EXPECT_EQ(own.sampleArea(1, 1, 1, 1), 3.5f);
    EXPECT_EQ(own.sampleArea(0.5f, 0.5f, 1.5f, 1.5f), own.bilinear(1, 1));
    EXPECT_EQ(own.sampleAround(1, 1, 3, 5), 3.5f);
    EXPECT_EQ(own.bilinear(0.25f, 0.5f), -10 + (1.0f + 10) * 0.75f);
    EXPECT_EQ(own.bilinear(-1.5f, 0.5f), -10);
    other.assign(own);
    EXPECT_EQ(other.row(0), own.row(0));
    EXPECT_EQ(other.background, -10);
    own.setFloatOffset(0.5f, 0);
    EXPECT_EQ(own.bilinear(1.5f, 0.5f), 1.5f);
    EXPECT_FALSE(other.allocate(0, 3));
    EXPECT_TRUE(other.failed());
}

TEST(FlowStages, BadTargetsAreNamed) {
    of::InterruptState state;
    of::FloatTexture in, empty;
    ASSERT_TRUE(in.allocate(2, 2));
    const auto generate = [&](of::FloatTexture* to) { of::ColouredFrameGenerator<float>(state, 1).process(to); };
    const auto sample = [&](of::FloatTexture* to) { of::SimpleCopySampler<float>(state).process(in, to); };
    const auto combine = [&](of::FloatTexture* to) { of::FnMotionEstimateGradientTweener(state).process(in, in, to); };
    const Cases<std::function<void(of::FloatTexture*)>, Text, Text> cases = {
        {generate, "Map passed into Generator::process is NULL\n", "Map passed into Generator::process is bogus\n"},
        {sample, "Map passed into Generator::process is NULL\n", "Map passed into Sampler::process is bogus\n"},
        {combine, "Map passed into Combiner::process is NULL\n", "Map passed into Generator::process is bogus\n"}};
    for (const auto& [process, null, bogus] : cases) {
        testing::internal::CaptureStderr();
        process(nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), null);
        testing::internal::CaptureStderr();
        process(&empty);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), bogus);
    }
    EXPECT_EQ(state.current_code(), 0);
}

/// Adds 1 to the rows of its rectangle in each pass, and notes its slots.
struct Rows : of::FnImgProc1<float> {
    using FnImgProc1::FnImgProc1;
    void initialise() override { slots += 'i'; }
    void prePass() override { slots += '('; }
    void postPass() override { slots += ')'; }
    void finish() override { slots += 'f'; }
    void processPart(int part) override {
        for_rows(part, [&](int y) {
            for (int x = rectangle_.left; x < rectangle_.right; ++x) first_->at(x, y) += 1;
        });
    }
    std::string slots;
};

TEST(FlowStages, RectanglesAreKeptAndStacked) {
    of::InterruptState state;
    of::FloatTexture texture;
    ASSERT_TRUE(texture.allocate_clear(9, 8));
    Rows rows(state);
    rows.process(nullptr);
    EXPECT_EQ(rows.slots, "");
    rows.keep_rectangle({2, 1, 6, 7});
    rows.set_pass_count(2);
    rows.process(&texture);
    EXPECT_EQ(rows.slots, "i()()f");
    for (const auto& [x, y] : places(9, 8))
        EXPECT_EQ(texture.at(x, y), x >= 2 && x < 6 && y >= 1 && y < 7 ? 2.0f : 0.0f) << x << " " << y;
    for (int k = 0; k < 10; ++k) {
        EXPECT_TRUE(rows.push_rectangle());
        rows.grow_rectangle(k % 2);
    }
    EXPECT_FALSE(rows.push_rectangle());
    EXPECT_EQ(rows.rectangle().left, -3);
    rows.grow_rectangle(-5);
    for (int k = 9; k >= 0; --k) {
        EXPECT_TRUE(rows.pop_rectangle());
        EXPECT_EQ(rows.rectangle().left, 2 - k / 2);
        EXPECT_EQ(rows.rectangle().bottom, 7 + k / 2);
    }
    EXPECT_FALSE(rows.pop_rectangle());
    state.stop(12);  // all passes are walked through, without work
    rows.slots.clear();
    rows.process(&texture);
    EXPECT_EQ(rows.slots, "if");
}

/// A patch of noise that moves by whole pixels in one half of the frames.
struct Halves {
    flow_model::Image first{40, 24}, second{40, 24}, hidden{40, 24};
    of::FloatTexture textures[3];
    of::ImagePair images{&textures[0], &textures[1], &textures[2]};

    Halves() {
        scenes::Dice dice(9);
        const auto wave = [](double x, double y) { return 0.5 + 0.3 * std::sin(x * 0.6) * std::cos(y * 0.5); };
        for (const auto& [x, y] : places(40, 24)) {
            first.at(x, y) = static_cast<float>(wave(x, y));
            second.at(x, y) = x < 20 ? static_cast<float>(wave(x - 1, y)) : static_cast<float>(dice.unit());
            hidden.at(x, y) = x < 20 ? 0.5f : 0.6f;  // above 0.5 a pixel does not count
        }
        read_texture(first, textures[0]), read_texture(second, textures[1]), read_texture(hidden, textures[2]);
    }
    of::ImagePair unmasked() const { return {images.first, images.second, nullptr}; }
};

TEST(FlowStages, HiddenBlocksTellNothing) {
    const Halves halves;
    of::FnMotionEstimateGradientBlockParameters blocks;
    blocks.overlap = 2;
    of::FieldTexture grids[2];
    for (const bool masked : {false, true}) {
        of::FieldTexture& grid = grids[masked];
        ASSERT_TRUE(grid.allocate_clear(10, 6));
        of::InterruptState state;
        of::FnMotionEstimateGradient estimator(state, masked ? halves.images : halves.unmasked());
        static_cast<of::FnMotionEstimateGradientBlockParameters&>(estimator) = blocks;
        of::FieldTexture centres;
        of::FloatTexture errors, motion;
        ASSERT_TRUE(centres.allocate(10, 6) && errors.allocate(10, 6) && motion.allocate(10, 6));
        estimator.centres = &centres, estimator.errors = &errors, estimator.motion = &motion;
        estimator.process(&grid);
        for (const auto& [x, y] : places(10, 6)) {
            const HvVec2 v = grid.at(x, y);
            const int left = std::min(4 * x, 34), top = std::min(4 * y, 18);
            EXPECT_EQ(centres.at(x, y).x, static_cast<float>(left) + 3);
            EXPECT_EQ(centres.at(x, y).y, static_cast<float>(top) + 3);
            EXPECT_FLOAT_EQ(motion.at(x, y), std::hypot(v.x, v.y));
            const flow_model::Block block{left, top, left + 6, top + 6};
            if (!masked || left + 6 <= 20) {
                EXPECT_EQ(errors.at(x, y), flow_model::block_error(halves.first, halves.second, block, {v.x, v.y}));
            } else if (left >= 20) {
                EXPECT_EQ(errors.at(x, y), INVALID_VECTOR);
                EXPECT_TRUE(v.x == 0 && v.y == 0) << "refused, so that it stays";
            }
        }
    }
    for (const auto& [x, y] : places(3, 6)) EXPECT_EQ(grids[0].at(x, y).x, grids[1].at(x, y).x);
    EXPECT_NE(grids[0].at(8, 3).x, 0);
}

/// Where all is hidden it does not matter what the frames show.
TEST(FlowStages, HiddenPixelsAreRefinedWithoutLuminance) {
    const Halves halves;
    of::FloatTexture all;
    ASSERT_TRUE(all.allocate(40, 24));
    of::FnMotionEstimateGradientBlockParameters blocks;
    blocks.overlap = 2;
    scenes::Dice dice(4);
    of::FieldTexture in;
    ASSERT_TRUE(in.allocate(40, 24));
    for (const auto& [x, y] : places(40, 24))
        in.at(x, y) = {static_cast<float>(dice.below(5) - 2), static_cast<float>(dice.below(3) - 1)};
    for (const float hides : {0.5f, 0.6f}) {
        all.fill(hides);
        flow_model::Field fields[2];
        for (const bool exchanged : {false, true}) {
            of::ImagePair images{halves.images.first, halves.images.second, &all};
            if (exchanged) std::swap(images.first, images.second);
            of::InterruptState state;
            of::FieldTexture out;
            ASSERT_TRUE(out.allocate_clear(40, 24));
            of::refine(state, {}, blocks, images, in, out);
            fields[exchanged] = model_of<flow_model::Field>(out);
        }
        EXPECT_EQ(same_bits(fields[0], fields[1]), hides > 0.5f);
    }
}

/// Luminance then counts nothing: the shortest vectors are taken, which are nearest to no neighbours at all.
TEST(FlowStages, HiddenPixelsTweenWithoutLuminance) {
    of::FloatTexture first, second, mask;
    for (of::FloatTexture* texture : {&first, &second, &mask}) ASSERT_TRUE(texture->allocate_clear(9, 9));
    first.at(2, 4) = second.at(6, 4) = 1;  // moved by (4, 0): vectors (-4, 0) and (4, 0)
    second.at(4, 4) = 1;
    mask.fill(0.6f);
    of::FieldTexture forward, backward;
    ASSERT_TRUE(forward.allocate(9, 9) && backward.allocate(9, 9));
    forward.fill({INVALID_VECTOR, 0}), backward.fill({INVALID_VECTOR, 0});
    forward.at(2, 4) = {-4, 0}, forward.at(4, 4) = {0.5f, 0};
    backward.at(6, 4) = {4, 0}, backward.at(4, 4) = {-0.5f, 0};
    for (const bool masked : {false, true}) {
        of::InterruptState state;
        of::FnMotionEstimateGradientTweener tweener(state);
        of::FnMotionEstimateGradientTweeningParameters& p = tweener;
        p.forward = &forward, p.backward = &backward, p.flags = 0;
        p.mask = masked ? &mask : nullptr;
        p.symmetry_weight = 0;
        p.smoothness_weight = 1e-3f;
        tweener.process(first, second, &first);
        EXPECT_EQ(p.to_second->at(4, 4).x, masked ? 0.5f : -4.0f);
        EXPECT_EQ(p.to_first->at(4, 4).x, masked ? -0.5f : 4.0f);
    }
}

/// Which frame a pixel is of, by alpha textures of the frames.
TEST(FlowStages, AlphaTexturesTellTheFrame) {
    using Pixel = of::Argb<std::uint8_t>;
    of::FnTexture<Pixel> frames[2], out;
    of::FnTexture<std::uint8_t> alphas[2];
    for (const int k : {0, 1}) {
        ASSERT_TRUE(frames[k].allocate(4, 1) && alphas[k].allocate(4, 1));
        const auto grey = static_cast<std::uint8_t>(100 + 100 * k);
        frames[k].fill({{grey, grey, grey, grey}});
    }
    const std::uint8_t values[2][4] = {{0, 2, 0, 1}, {0, 0, 2, 2}};
    for (const int k : {0, 1}) std::copy_n(values[k], 4, alphas[k].row(0));
    ASSERT_TRUE(out.allocate(4, 1));
    of::FieldTexture field;
    ASSERT_TRUE(field.allocate_clear(4, 1));
    of::FnMotionEstimateGradientTweeningParameters p;
    p.to_second = p.to_first = &field;
    p.position = 0.25f;
    const Cases<bool, std::array<int, 4>> cases = {// low alpha is looked for; greys of the pixels
                                                   {false, {125, 200, 100, 125}},
                                                   {true, {125, 100, 200, 200}}};
    for (const auto& [low, greys] : cases) {
        of::InterruptState state;
        of::FnMotionEstimateGradientTweenerBuildPicture<Pixel> build(state, frames[0], frames[1], p);
        build.first_alpha = &alphas[0], build.second_alpha = &alphas[1];
        build.tests_for_low_alpha = low;
        build.process(&out);
        for (int x = 0; x < 4; ++x) EXPECT_EQ(out.at(x, 0).red, greys[static_cast<std::size_t>(x)]) << low << x;
    }
}

}  // namespace
}  // namespace qx::test
