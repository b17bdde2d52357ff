// SPDX-License-Identifier: Apache-2.0
// The forms of routines that have several, the table of slots, and refusals.
#include "tests/sampling/SampSupport.h"

namespace {

using namespace qx::test;
using standalone::ProcessorLevel;

/// Between pixels whose alphas agree the vector form mixes down, then across; elsewhere it is the plain one.
TEST(SamplerForms, UncheckedEightBits) {
    int different = 0;
    const std::array fills = {FillKind::opaque, FillKind::random, FillKind::layer, FillKind::clear};
    for (const auto& [fill, level] : each(fills, kLevels)) {
        Source<QX_Pixel8> picture(33, 9, fill, 5);
        const Born born(1, level);
        Numbers number(3);
        for (int n = 0; n < (fill == FillKind::opaque ? 1000000 : 100000); ++n) {
            const int x = number(0, 32 * 65536), y = number(0, 8 * 65536);
            QX_Pixel8 out, clipped;
            QX_SubpixelSampleNoClip_Straight(nullptr, x, y, &picture.params, &out);
            QX_SubpixelSample_Straight(nullptr, x, y, &picture.params, &clipped);
            const auto p = [&](int i, int j) { return picture.at((x >> 16) + i, (y >> 16) + j); };
            const auto alpha = p(0, 0).alpha;
            const bool one_alpha = p(1, 0).alpha == alpha && p(0, 1).alpha == alpha && p(1, 1).alpha == alpha;
            if (level == ProcessorLevel::plain || !one_alpha || alpha == 0) {  // clear, whatever the colours
                ASSERT_EQ(out, clipped);
                continue;
            }
            const float fx = float(x & 0xFFFF) / 65536, fy = float(y & 0xFFFF) / 65536;
            const auto mix = [&](auto c) {
                const float left = p(0, 0).*c + float(p(0, 1).*c - p(0, 0).*c) * fy;
                const float right = p(1, 0).*c + float(p(1, 1).*c - p(1, 0).*c) * fy;
                return static_cast<std::uint8_t>((right - left) * fx + left + 0.5f);
            };
            const QX_Pixel8 want{alpha, mix(&QX_Pixel8::red), mix(&QX_Pixel8::green), mix(&QX_Pixel8::blue)};
            ASSERT_EQ(out, want) << x << ", " << y;
            different += out == clipped ? 0 : 1;
        }
    }
    EXPECT_GT(different, 0) << "the two forms are to be told apart";
}

/// The bicubic form for wide registers gives the plain form's pixels.
TEST(SamplerForms, BicubicEightBits) {
    std::vector<QX_Pixel8> seen[2];
    for (const auto level : {ProcessorLevel::plain, ProcessorLevel::faster}) {
        const Born born(1, level);
        Numbers number(7);
        for (const FillKind fill : kAllFills) {
            Source<QX_Pixel8> picture(90, 40, fill, 5);
            for (int n = 0; n < 500000; ++n) {
                const int x = number(0, 90 * 65536), y = number(0, 40 * 65536);
                QX_SubpixelBicubic8(nullptr, x, y, &picture.params,
                                    &seen[level == ProcessorLevel::faster].emplace_back());
            }
        }
    }
    EXPECT_TRUE(seen[0] == seen[1]);
}

/// Half way between alphas of 0 and 1 lies exactly one half, which rounds to 1 and shows its colour. Kept: translations
/// under the bicubic name are bilinear and keep colour under an alpha that rounds to nothing.
TEST(SamplerForms, FaintAlphas) {
    const auto expect = []<class Pixel>(Pixel out) {
        Source<Pixel> picture(2, 2, FillKind::clear, 1);
        for (const auto& [x, y] : places(2, 2)) picture.at(x, y) = {static_cast<QX_ChannelOf<Pixel>>(x), 90, 80, 70};
        const double weights[4] = {0.999, 0.001, 0, 0};
        for (const auto& [level, quality] : each(kLevels, std::array{1, 2})) {
            const Born born(1, level);
            const auto set = QXp_GetSamplerSet<Pixel>(quality);
            for (const auto sampler : {set.clipped, set.unclipped}) {
                if (quality == 2) continue;
                ASSERT_EQ(sampler(nullptr, 32768, 4321, &picture.params, &out), 0);
                EXPECT_EQ(out, (Pixel{1, 90, 80, 70}));
            }
            set.translate(nullptr, 1, 0, weights, &picture.params, &out);
            EXPECT_EQ(out, quality == 1 ? Pixel{} : (Pixel{0, 90, 80, 70}));
        }
    };
    expect(QX_Pixel8{}), expect(QX_Pixel16{});
}

TEST(SamplerForms, GpuWorldsAreRefused) {
    const Born born;
    BadWorlds bad;
    QX_SampPB params{};
    params.src = &bad.gpu;
    float sum = 5;
    const std::string never = "gpu effect world is not supported.";
    const auto point = [&]<class Block, class Pixel>(int (*routine)(void*, int, int, Block*, Pixel*)) {
        return [=, &params] {
            const Pixel before{1, 2, 3, 4};
            Pixel out = before;
            const int code = routine(nullptr, 0, 0, &params, &out);
            EXPECT_EQ(out, before);
            return code;
        };
    };
    const auto span = [&](int count) {
        return QX_SubpixelSpanSampleBilinearFloat(nullptr, count, 0, 0, &params, &sum, nullptr);
    };
    int (*const all)(void*, int, int, QX_SampPB*, QX_PixelFloat*) = [](void*, int x, int y, auto* block, auto* out) {
        bool all_in;
        return QX_SubpixelSpanSampleAllInBilinearFloat(nullptr, x, y, block, &all_in, out);
    };
    expect_refused(kOnGpu, {point(&QX_NNSample), point(&QX_NNSample16), point(&QX_NNSampleFloat)});
    expect_refused(never,
                   {point(&QX_SubpixelSample_Premul), point(&QX_AreaSample_Premul), point(all),
                    point(&QX_SubpixelBilinearFloat), point(&QX_SubpixelNoClipBilinearFloat),
                    point(&QX_AreaSample_CPlusPlus<QX_Pixel8, 1>), point(&QX_AreaSample_CPlusPlus<QX_Pixel16, 2>),
                    point(&QX_AreaSample_CPlusPlus<QX_PixelFloat, 1>), [&] { return span(1); }});
    EXPECT_TRUE(span(0) == 0 && span(-3) == 0 && sum == 5);
}

int sampler_of_test(void*, std::int32_t, std::int32_t, const QX_SampPB*, QX_Pixel8* out) {
    *out = {9, 8, 7, 6};
    return 77;
}

/// What goes through the table obeys it, and thin footprints read with what stands there.
TEST(SamplerForms, TheTableRules) {
    const Born born(1, ProcessorLevel::vector);
    Source<QX_Pixel8> picture(4, 4, FillKind::opaque, 1);
    picture.radii(32768, 32768);
    QX_Pixel8 out;
    for (const int slot : {3, 5, 61}) QX_SetOverrideFunc(slot, reinterpret_cast<void*>(&sampler_of_test));
    for (const auto routine : {&QX_AreaSample_Straight, &QX_SubpixelSampleNoClip_Straight}) {
        EXPECT_EQ(routine(nullptr, 0, 0, &picture.params, &out), 77);
    }
    const auto set = QXp_GetSamplerSet<QX_Pixel8>(-4);
    EXPECT_TRUE(set.clipped == &sampler_of_test && set.area == &sampler_of_test && set.unclipped == &sampler_of_test);
    ASSERT_EQ((QX_AreaSample_CPlusPlus<QX_Pixel8, 1>(nullptr, 65536, 65536, &picture.params, &out)), 0);
    EXPECT_EQ(out, (QX_Pixel8{9, 8, 7, 6}));
    for (const int quality : {-1, 0, 4}) EXPECT_EQ(QX_GetSampleQualityPixelSupport(quality), 0);
    EXPECT_TRUE(QX_GetSampleQualityPixelSupport(1) == 1 && QX_GetSampleQualityPixelSupport(2) == 2 &&
                QX_GetSampleQualityPixelSupport(3) == 2);
}

}  // namespace
