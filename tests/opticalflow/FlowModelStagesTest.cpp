// SPDX-License-Identifier: Apache-2.0
/// The stages of the model against formulas of their own.
#include "tests/opticalflow/FlowModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "tests/opticalflow/Scenes.h"

namespace flow_model {
namespace {

TEST(FlowModelStages, RandomSequence) {
    Random random;
    for (const int number : {220, 613, 21791, 22173, 11738, 29228}) EXPECT_EQ(random.next(), number);
}

TEST(FlowModelStages, AddressesBeyondTheEdge) {
    for (int i = -12; i < 15; ++i) {
        EXPECT_EQ(address(i, 4, Edge::background), i >= 0 && i < 4 ? i : -1);
        EXPECT_EQ(address(i, 4, Edge::clamp), std::max(0, std::min(3, i)));
        EXPECT_EQ(address(i, 4, Edge::mirror), "001233210012332100123321001233210"[i + 17] - '0') << i;
        EXPECT_EQ(address(i, 4, Edge::wrap), (i + 12) % 4);
    }
    const float nan = std::nanf(""), huge = 1e30F;
    EXPECT_EQ(whole(nan).index, -1000000000);
    EXPECT_EQ(whole(-huge).index, -1000000000);
    EXPECT_EQ(whole(huge).index, 1000000000);
    EXPECT_EQ(whole(-0.25F).index, -1);
    EXPECT_EQ(whole(-0.25F).fraction, 0.75F);
}

TEST(FlowModelStages, PartsShareTheRows) {
    for (const int count : {1, 2, 7, 32}) {
        for (int rows = 0; rows < 70; ++rows) {
            int at = 0;
            each_part(count, rows, [&](Rows part) {
                EXPECT_EQ(part.begin, at);
                EXPECT_LE(part.end - part.begin, (rows + count - 1) / count);
                at = part.end;
            });
            EXPECT_EQ(at, rows);
        }
    }
}

/// A box of this radius, three times over itself, from -reach on.
std::vector<double> three_boxes(double radius) {
    const int r = static_cast<int>(std::floor(radius));
    const double f = radius - r, norm = 1 / (2 * r + 1 + 2 * f);
    std::vector<double> box(static_cast<std::size_t>(2 * r + 3), norm), out{1};
    box.front() = box.back() = f * norm;
    for (int pass = 0; pass < 3; ++pass) {
        std::vector<double> next(out.size() + box.size() - 1);
        for (std::size_t i = 0; i < out.size(); ++i) {
            for (std::size_t k = 0; k < box.size(); ++k) next[i + k] += out[i] * box[k];
        }
        out = next;
    }
    return out;
}

TEST(FlowModelStages, BlurIsASumOfWeights) {
    scenes::Dice dice(1);
    for (const float radius : {1.0F / 3, 0.75F, 1.0F, 5.0F / 3, 2.5F, 7.0F}) {
        Image image(23, 17);
        for (float& value : image.px) value = static_cast<float>(dice.unit());
        const Image blurred = box_blur(image, radius, radius, 3);
        const auto weights = three_boxes(static_cast<double>(radius));
        const int reach = static_cast<int>(weights.size() / 2);
        for (int y = 0; y < image.h; ++y) {
            for (int x = 0; x < image.w; ++x) {
                double sum = 0;
                for (int j = -reach; j <= reach; ++j) {
                    for (int i = -reach; i <= reach; ++i) {
                        sum += static_cast<double>(image.read(x + i, y + j)) *
                               weights[static_cast<std::size_t>(i + reach)] *
                               weights[static_cast<std::size_t>(j + reach)];
                    }
                }
                ASSERT_NEAR(blurred.read(x, y), sum, 1e-5) << radius << " at " << x << ", " << y;
            }
        }
    }
}

TEST(FlowModelStages, LevelsAndGrids) {
    const std::vector<std::tuple<int, int, int>> sizes = {{16, 16, 2}, {15, 16, 1}, {16, 15, 1}, {100, 10, 1},
                                                          {8, 8, 1},   {32, 16, 2}, {64, 64, 4}, {256, 144, 5}};
    for (const auto& [w, h, levels] : sizes) EXPECT_EQ(level_count(w, h), levels) << w << " by " << h;
    for (int size = 4; size <= 40; ++size) {
        for (int pixels = 1; pixels < 200; ++pixels) {
            const Image image(pixels, pixels);
            int covered = 0;
            for (int g = 0; g < grid_size(pixels, size); ++g) {
                const Block block = block_of(image, g, g, size);
                EXPECT_LE(block.left, covered);
                EXPECT_EQ(block.right - block.left, std::min(size, pixels));
                covered = block.right;
            }
            EXPECT_EQ(covered, pixels) << "blocks of " << size;
        }
    }
}

TEST(FlowModelStages, QuantisedToTheNearestStep) {
    scenes::Dice dice(2);
    for (int i = 0; i < 200000; ++i) {
        const int level = dice.below(8);
        const float value = static_cast<float>(dice.between(-40, 40));
        const double step = static_cast<double>(0.1F) / (1 << level);
        const double q = static_cast<double>(quantised(value, level)), round_off = std::fabs(q) * 0x1p-22;
        ASSERT_NEAR(q, std::round(q / step) * step, round_off) << value << " at " << level;
        ASSERT_LE(std::fabs(q - static_cast<double>(value)), step / 2 + round_off) << value << " at " << level;
    }
    EXPECT_EQ(quantised(kInvalid, 0), kInvalid);
    EXPECT_EQ(quantised(0, 3), 0);
    EXPECT_NEAR(quantised(-0.16F, 0), -0.2, 1e-6);
}

/// One block that slopes, and where it leads: stripes tell of their own direction alone, and level ones of none, as the
/// rule for Sxy = 0 takes the other axis for them.
TEST(FlowModelStages, SolvesSlopes) {
    const auto painted = [](double ax, double ay, double bend, double dx, double dy) {
        Image image(24, 24);
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 24; ++x) {
                const double u = x - dx, v = y - dy;
                image.at(x, y) = static_cast<float>(ax * std::sin(u / 5) + ay * std::sin(v / 5) + bend * u * v / 200);
            }
        }
        return image;
    };
    struct Slope {
        double ax, ay, bend, dx, dy;
        Vec found;
    };
    for (const auto& [ax, ay, bend, dx, dy, found] : std::vector<Slope>{{0.5, 0.5, 0.1, 0.75, -0.5, {0.75F, 0.5F}},
                                                                        {0.5, 0.5, 0.1, -1.5, 1.25, {-1.5F, -1.25F}},
                                                                        {0.5, 0, 0, 0.75, 0, {0.75F, 0}},
                                                                        {0.5, 0, 0, 0.75, 3, {0.75F, 0}},
                                                                        {0, 0.5, 0, 0, 0.75, {0, 0}},
                                                                        {0, 0, 0, 0, 0, {0, 0}}}) {
        const Image still = painted(ax, ay, bend, 0, 0), moved = painted(ax, ay, bend, dx, dy);
        const Vec v = solve(still, moved, {4, 4, 20, 20}, {}, 1e-5F);
        EXPECT_NEAR(v.x, found.x, 0.02) << ax << ", " << ay << " by " << dx << ", " << dy;
        EXPECT_NEAR(v.y, found.y, 0.02) << ax << ", " << ay << " by " << dx << ", " << dy;
    }
    const Image flat(24, 24, 0.5F), other(24, 24, 0.7F);
    EXPECT_TRUE(solve_step(flat, other, {4, 4, 20, 20}, {}, 0.01F).refused);
    EXPECT_TRUE(solve_step(flat, flat, {4, 4, 20, 20}, {100, 0}, 0.01F).refused);
    EXPECT_EQ(solve(flat, other, {4, 4, 20, 20}, {3, 4}, 0.01F), (Vec{3, 4}));
    EXPECT_NEAR(block_error(flat, other, {4, 4, 20, 20}, {1, 2}), 0.2, 1e-6);
    EXPECT_EQ(block_error(flat, other, {0, 0, 4, 4}, {3, 0}), kInvalid);  // four of sixteen are too few
    EXPECT_NE(block_error(flat, other, {0, 0, 4, 4}, {2, 0}), kInvalid);
}

TEST(FlowModelStages, PositionsInSteps) {
    for (int i = 0; i <= 200; ++i) {
        const float t = rounded_position(i == 200 ? 0.9999 : i * 0.005);
        EXPECT_NEAR(t, i * 0.005, 1e-6);
        EXPECT_EQ(t == 0 || t == 1, i == 0 || i == 200);
    }
    EXPECT_EQ(rounded_position(1), 0);
    EXPECT_EQ(rounded_position(0.5023), rounded_position(0.5));
}

TEST(FlowModelStages, FractionsOfAPixelAreRead) {
    const auto wave = [](double x, double y) {
        return 0.5 + 0.2 * std::sin(x * 0.7) + 0.2 * std::cos(y * 0.6 + x * 0.2);
    };
    const Frame waves = scenes::painted(
        [&](double x, double y) {
            return scenes::Rgb{wave(x, y), x / 64, y / 64};
        },
        64, 64, 32);
    scenes::Dice dice(4);
    for (int i = 0; i < 2000; ++i) {
        const float x = static_cast<float>(dice.between(16, 48)), y = static_cast<float>(dice.between(16, 48));
        const Colour sinc = windowed_sinc(waves, x, y), straight = bilinear(waves, x, y);
        EXPECT_NEAR(sinc[1], wave(static_cast<double>(x), static_cast<double>(y)), 0.01);
        EXPECT_NEAR(sinc[0], 1, 1e-5);
        EXPECT_NEAR(straight[2], x / 64, 1e-6);
        EXPECT_NEAR(straight[3], y / 64, 1e-6);
    }
    EXPECT_EQ(windowed_sinc(waves, 20.5F, 30.495F), waves.read(20, 30));
    EXPECT_EQ(windowed_sinc(waves, 20.505F, 30.495F), waves.read(20, 30));
}

TEST(FlowModelStages, VectorsAreProjectedToTheirTime) {
    Tween tween;
    tween.w = 20, tween.h = 10, tween.t = 0.25F;
    tween.forward = tween.backward = Field(20, 10, {kInvalid, 0});
    tween.forward.at(10, 4) = tween.forward.at(11, 4) = {8, 4};  // they end at (8.5, 5.5) and (9.5, 5.5)
    tween.backward.at(10, 4) = {8, 4};                           // (4.5, 7.5)
    tween.backward.at(2, 2) = {8, 0};                            // outside
    temporal_candidates(tween);
    const auto counted = [](const std::vector<List>& lists) {
        std::size_t n = 0;
        for (const List& list : lists) n += list.size();
        return n;
    };
    EXPECT_EQ(counted(tween.lists1), 2U);
    EXPECT_EQ(counted(tween.lists0), 1U);
    EXPECT_EQ(tween.list1(8, 5), List({{8, 4}}));
    EXPECT_EQ(tween.list1(9, 5), List({{8, 4}}));
    EXPECT_EQ(tween.list0(4, 7), List({{8, 4}}));
}

/// Between the centres of a texture whose outermost pixels go on for ever.
double value_at(const Image& image, double x, double y) {
    const double u = x - 0.5, v = y - 0.5;
    double sum = 0;
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 2; ++i) {
            const double px = std::floor(u) + i, py = std::floor(v) + j;
            const double weight = (1 - std::fabs(u - px)) * (1 - std::fabs(v - py));
            sum += weight * static_cast<double>(image.read(static_cast<int>(px), static_cast<int>(py)));
        }
    }
    return sum;
}

TEST(FlowModelStages, PairsOfVectorsAreTheCheapest) {
    scenes::Dice dice(6);
    for (int round = 0; round < 300; ++round) {
        Tween tween;
        const int w = tween.w = 12, h = tween.h = 9, x = dice.below(w), y = dice.below(h);
        tween.t = static_cast<float>(dice.between(0.1, 0.9));
        tween.weights = {static_cast<float>(dice.between(0.001, 0.01)), static_cast<float>(dice.unit())};
        tween.frame0 = tween.frame1 = Image(w, h);
        for (float& value : tween.frame0.px) value = static_cast<float>(dice.unit());
        for (float& value : tween.frame1.px) value = static_cast<float>(dice.unit());
        tween.map = States(w, h);
        tween.to1 = tween.to0 = Field(w, h, {kInvalid, kInvalid});
        tween.lists1.resize(area(w, h));
        tween.lists0.resize(area(w, h));
        for (List* list : {&tween.list1(x, y), &tween.list0(x, y)}) {
            for (int n = 2 + dice.below(5); n > 0; --n) {
                list->push_back({static_cast<float>(dice.between(-4, 4)), static_cast<float>(dice.between(-4, 4))});
            }
        }
        const double t = static_cast<double>(tween.t);
        const auto end = [&](const Image& image, Vec v, double k) {
            const double px = x + 0.5 - k * static_cast<double>(v.x), py = y + 0.5 + k * static_cast<double>(v.y);
            return px < 0 || px > w || py < 0 || py > h ? 16711425.0 : value_at(image, px, py);
        };
        const auto cost = [&](Vec a, Vec b) {  // no neighbour is there, so that both means are zero
            const double apart = std::fabs(end(tween.frame0, b, t) - end(tween.frame1, a, 1 - t));
            const double far = static_cast<double>(std::fabs(a.x) + std::fabs(a.y) + std::fabs(b.x) + std::fabs(b.y));
            return 10 * static_cast<double>(std::fabs(a.x + b.x) + std::fabs(a.y + b.y)) +
                   65535 * static_cast<double>(tween.weights.data) * apart +
                   8 * far * static_cast<double>(tween.weights.smoothness);
        };
        double least = 1e38;
        for (const Vec a : tween.list1(x, y)) {
            for (const Vec b : tween.list0(x, y)) least = std::min(least, cost(a, b));
        }
        tween_pass(tween, 3);
        const Vec a = tween.to1.at(x, y), b = tween.to0.at(x, y);
        ASSERT_TRUE(a.valid() && b.valid());
        ASSERT_LE(cost(a, b), least * 1.0001 + 0.001) << "round " << round;
        EXPECT_EQ(std::count_if(tween.to1.px.begin(), tween.to1.px.end(), [](Vec v) { return v.valid(); }), 1);
    }
}

TEST(FlowModelStages, MasksHideWhatTheyCover) {
    const scenes::Texture ground = scenes::cloth(11, 30);
    const Frame frame = scenes::painted(ground, 60, 40, 8);
    Params params;
    params.detail = 0.5F;
    const Image shown = masked_working_frame(frame, Image(60, 40, 255), params, 5);
    EXPECT_EQ(shown.px, working_frame(frame, params).px);
    Image half(60, 40, 255);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 30; ++x) half.at(x, y) = 0;
    }
    const Image hidden = masked_working_frame(frame, half, params, 5);
    double sum = 0;
    for (int y = 0; y < 20; ++y) {
        for (int x = 15; x < 30; ++x) sum += static_cast<double>(shown.read(x, y));
    }
    EXPECT_NEAR(hidden.read(3, 3), sum / (20 * 15), 1e-3);
    EXPECT_EQ(hidden.read(20, 7), shown.read(20, 7));
}

TEST(FlowModelStages, PassesMakeTheirMean) {
    const Frame frame = scenes::painted(scenes::cloth(12, 20), 30, 20, 16);
    for (int passes = 2; passes <= 20; ++passes) EXPECT_EQ(mean_of_equal_passes(frame, passes).px, frame.px);
}

}  // namespace
}  // namespace flow_model
