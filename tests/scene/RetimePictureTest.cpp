// SPDX-License-Identifier: Apache-2.0
// Pictures between two painted ones: rims, alpha, copies, levels; and what qualities mean.
#include <cmath>

#include "QX/indep/QX_Area.h"
#include "opticalflow/src/QX_AdvancedFrameBlending.h"
#include "scene/retime/Between.h"
#include "scene/retime/Field.h"
#include "scene/retime/FrameId.h"
#include "tests/pictures/Support.h"
#include "tests/scene/Painted.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::Picture;
using qx::pictures::unwatched;

class RetimePictures : public testing::Test {
    Born born_{4};
};

SharedPicture shared(Picture picture) { return std::make_shared<const Picture>(std::move(picture)); }
SharedPicture ground(int seed, double x, int width = 192, int height = 108) {
    return shared(picture<QX_Pixel8>(width, height, false, [&](int px, int py) {
        const int v = static_cast<int>(80 + 140 * painted(seed, px + x, py));
        return argb(255, v, v - 20, v / 2 + 40);
    }));
}

BetweenOptions with(BetweenMethod method, FlowQuality quality = FlowQuality::draft, int depth = 0) {
    FlowChoices choices;
    choices.quality = quality;
    return {method, flow_params(choices), depth};
}
SharedPicture between(const SharedPicture& a, const SharedPicture& b, const BetweenOptions& options, double position) {
    return FramePair("pair", a, b, options).at(position, unwatched());
}

TEST_F(RetimePictures, AFastPanHasNoDarkRim) {
    const auto first = ground(1, 0), second = ground(1, 60);
    for (const auto quality : {FlowQuality::draft, FlowQuality::good, FlowQuality::best}) {
        for (const double position : {0.25, 0.5, 0.9}) {
            for (const int depth : {0, 8, 16, 32}) {
                if (depth != 0 && quality != FlowQuality::draft) continue;
                const auto made = between(first, second, with(BetweenMethod::flow, quality, depth), position);
                const double full = made->world->Depth() == 8 ? 255 : made->world->Depth() == 16 ? 32768 : 1;
                double least = 1;
                for (int y = 0; y < 108; ++y) {
                    for (int x = 0; x < 192; ++x) {
                        const List pixel = channels(*made, x, y);
                        ASSERT_EQ(pixel[0], full);
                        least = std::min(least, pixel[1] / full);
                    }
                }
                EXPECT_GE(least, 78 / 255.0) << static_cast<int>(quality) << " at " << position << ", depth " << depth;
            }
        }
    }
}

TEST_F(RetimePictures, FollowsAPan) {
    const auto first = ground(2, 0), second = ground(2, 6), truth = ground(2, 3);
    const auto flow = between(first, second, with(BetweenMethod::flow), 0.5);
    const auto mix = between(first, second, with(BetweenMethod::blend), 0.5);
    EXPECT_EQ(flow->world->Depth(), 8);
    EXPECT_GT(inner_psnr(*flow->world, *truth->world, 16), inner_psnr(*mix->world, *truth->world, 16) + 10);
    const FlowFields fields = flow_fields("pair", *first, *second, flow_params({}), unwatched());
    for (int y = 30; y < 78; y += 6) {
        for (int x = 30; x < 162; x += 6) {  // the ground moves to the left
            EXPECT_NEAR(fields.forward.at(x, y).u, -6, 0.5);
            EXPECT_NEAR(fields.forward.at(x, y).v, 0, 0.5);
            EXPECT_NEAR(fields.backward.at(x, y).u, 6, 0.5);
        }
    }
}

TEST_F(RetimePictures, FollowsDownwardMotion) {
    const auto moved = [](int dy) {
        return shared(picture<QX_Pixel8>(96, 96, false, [&](int x, int y) {
            const int v = static_cast<int>(40 + 180 * painted(3, x, y - dy));
            return argb(255, v, v, v);
        }));
    };
    const FlowFields fields = flow_fields("pair", *moved(0), *moved(4), flow_params({}), unwatched());
    for (int i = 24; i < 72; i += 6) {
        EXPECT_NEAR(fields.forward.at(i, i).v, 4, 0.5);
        EXPECT_NEAR(fields.forward.at(i, i).u, 0, 0.5);
    }
}

TEST_F(RetimePictures, CopiesAreTheVeryFrames) {
    const auto first = ground(4, 0), second = ground(4, 3), equal = ground(4, 0);
    const auto flow = with(BetweenMethod::flow), nearest = with(BetweenMethod::nearest);
    for (const double position : {0.0, 0.001, 0.0024}) EXPECT_EQ(between(first, second, flow, position), first);
    for (const double position : {0.9976, 1.0}) EXPECT_EQ(between(first, second, flow, position), second);
    EXPECT_NE(between(first, second, with(BetweenMethod::blend), 0.001), first);
    for (const double position : {0.1, 0.5, 0.9}) EXPECT_EQ(between(first, equal, flow, position), first);
    EXPECT_EQ(between(first, second, nearest, 0.5), first);
    EXPECT_EQ(between(first, second, nearest, 0.51), second);
    EXPECT_EQ(between(first, second, with(BetweenMethod::flow, FlowQuality::draft, 16), 0)->world->Depth(), 16);
}

/// A disc that moves over nothing; under an alpha of 0 lies green.
SharedPicture disc(double at) {
    return shared(picture<QX_Pixel8>(96, 64, true, [&](int x, int y) {
        const double inside = std::clamp(20.5 - std::hypot(x - at, y - 32), 0.0, 1.0);
        const int v = static_cast<int>(100 + 100 * painted(5, x - at, y));
        return inside > 0 ? argb(static_cast<int>(inside * 255), 250, v, 30) : argb(0, 0, 255, 0);
    }));
}

TEST_F(RetimePictures, ColourUnderAnAlphaOfZeroIsNoPartOfThePicture) {
    const auto first = disc(40), second = disc(46);
    for (const auto method : {BetweenMethod::blend, BetweenMethod::flow}) {
        const auto made = between(first, second, with(method), 0.5);
        EXPECT_TRUE(made->has_alpha);
        EXPECT_EQ(channels(*made, 2, 2)[0], 0);
        EXPECT_GE(channels(*made, 43, 32)[0], 254);
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 96; ++x) {
                const List p = channels(*made, x, y);
                if (p[0] >= 32) {
                    ASSERT_GE(p[1], 240) << x << "," << y;
                }
            }
        }
    }
    const List edge = channels(*between(first, second, with(BetweenMethod::blend), 0.5), 21, 32);
    EXPECT_NEAR(edge[0], 127.5, 1);  // covered in the first alone
}

TEST_F(RetimePictures, AMixIsTheMeanAndOpaque) {
    const auto first = ground(6, 0, 40, 30), second = ground(7, 0, 40, 30);
    for (const double t : {0.005, 0.3, 0.5, 0.77}) {
        const auto made = between(first, second, with(BetweenMethod::blend), t);
        for (int i = 0; i < 30; ++i) {
            const List a = channels(*first, i, i), b = channels(*second, i, i), m = channels(*made, i, i);
            EXPECT_EQ(m[0], 255);
            for (std::size_t c = 1; c < 4; ++c) EXPECT_NEAR(m[c], a[c] + (b[c] - a[c]) * t, 0.51);
        }
    }
}

TEST_F(RetimePictures, StillPixelsKeepTheirLevelAtEveryPosition) {
    const auto frame = [](int x0) {
        return shared(picture<QX_Pixel8>(64, 48, false, [&](int x, int y) {
            const bool patch = x >= x0 && x < x0 + 10 && y >= 4 && y < 14;
            return patch ? argb(255, 200, 90, 10) : argb(255, 101, 33, 254);
        }));
    };
    FramePair pair("pair", frame(6), frame(9), with(BetweenMethod::flow));
    for (int step = 1; step < 200; ++step) {
        const auto made = pair.at(step * 0.005, unwatched());
        for (const int x : {40, 50, 60}) ASSERT_EQ(channels(*made, x, 40), (List{255, 101, 33, 254})) << step;
    }
}

TEST_F(RetimePictures, TinyFramesAreMade) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {1, 9}, {3, 2}, {7, 5}}) {
        const auto frame = [&, w = width, h = height](int v) {
            return shared(picture<QX_Pixel8>(w, h, false, [&](int x, int) { return argb(255, v, v + x, v); }));
        };
        const auto made = between(frame(20), frame(90), with(BetweenMethod::flow), 0.5);
        EXPECT_EQ(made->world->width, width);
        EXPECT_EQ(channels(*made, 0, 0)[0], 255);
        EXPECT_NEAR(channels(*made, 0, 0)[1], 55, 36);
    }
}

TEST(FrameIds, TellPixelsSizesAndDepths) {
    const auto grey = [](int width, int height, int v) {
        return picture<QX_Pixel8>(width, height, false, [&](int x, int) { return argb(255, v, x, v); });
    };
    const Guid id = frame_id(*grey(6, 4, 5).world);
    EXPECT_EQ(frame_id(*grey(6, 4, 5).world), id);
    EXPECT_NE(frame_id(*grey(6, 4, 6).world), id);
    const auto flat = [](int width, int height) {
        return picture<QX_Pixel8>(width, height, false, [](int, int) { return argb(255, 1, 2, 3); });
    };
    EXPECT_NE(frame_id(*flat(6, 4).world), frame_id(*flat(4, 6).world));
    EXPECT_NE(frame_id(*qx::pictures::at_depth("", *flat(6, 4).world, 16)), frame_id(*flat(6, 4).world));
    // What lies behind the rows is no part of a frame.
    auto padded = flat(5, 4);
    ASSERT_GT(padded.world->rowbytes, 5 * 4);
    const Guid before = frame_id(*padded.world);
    std::memset(static_cast<char*>(padded.world->data) + 5 * 4, 9, 4);
    EXPECT_EQ(frame_id(*padded.world), before);
}

TEST(FlowQualities, PercentagesBecomeNoLessThanTheFractions) {
    for (int i = 0; i <= 1000; ++i) {
        QX_Solvan_AlgoParams params;
        params.vectorDetail = 0.05f + 0.95f * static_cast<float>(i) / 1000;
        params.convergenceError = 0.1f * static_cast<float>(i) / 1000;
        const QX_Solvan_AlgoParams percent = in_percent(params);
        const QX_AdvancedFrameBlending engine(percent, {}, {});
        ASSERT_EQ(engine.CheckParamRange(), 0) << i;
        ASSERT_GE(engine.algo().vectorDetail, std::min(params.vectorDetail, 1.0f));
        ASSERT_LE(engine.algo().vectorDetail, params.vectorDetail * 1.0000003f);
        QX_Solvan_AlgoParams less = percent;
        less.vectorDetail = std::nextafter(less.vectorDetail, 0.0f);
        ASSERT_LT(QX_AdvancedFrameBlending(less, {}, {}).algo().vectorDetail, params.vectorDetail) << i;
    }
    const auto side = [](int pixels, float detail) {
        QX_Solvan_AlgoParams params;
        params.vectorDetail = detail;
        const QX_AdvancedFrameBlending engine(in_percent(params), {}, {});
        return static_cast<int>(static_cast<float>(pixels) * engine.algo().vectorDetail);
    };
    EXPECT_EQ(side(1280, 0.2f), 256);
    EXPECT_EQ(side(720, 0.2f), 144);
    EXPECT_EQ(side(1280, 0.05f), 64);
    EXPECT_EQ(side(3840, 1), 3840);
}

TEST(FlowQualities, FieldsOfTinyFramesHavePixels) {
    for (int side = 1; side < 300; ++side) {
        for (const float detail : {0.05f, 0.2f, 0.25f, 0.5f}) {
            QX_Solvan_AlgoParams params;
            params.vectorDetail = detail;
            const float made = fitted(params, side, 1000).vectorDetail;
            ASSERT_GE(static_cast<int>(static_cast<float>(side) * made), 1) << side;
            ASSERT_LE(made, 1);
            if (static_cast<int>(static_cast<float>(side) * detail) >= 1) {
                ASSERT_EQ(made, detail);
            }
        }
    }
}

}  // namespace
