// SPDX-License-Identifier: Apache-2.0
// Line blurs at every level against their model.
#include "QX/filters/QX_Blur.h"
#include "QX/filters/QX_BlurShortMean.h"

#include "tests/filters/BlurModel.h"

namespace qx::test {
namespace {

template <class Pixel> class BlurAt : public testing::Test {};
TYPED_TEST_SUITE(BlurAt, AllDepths);

/// Blurs of all kinds from a seed. A fifth has radii that reach over most lines.
Blur random_blur(Numbers& number) {
    Blur b;
    const float radii[] = {0, 0.25f, 0.5f, 1, 1.5f, 2, 3.7f, 5, 8, 20, 33.3f, 70};
    b.radius = radii[number(0, 12)];
    b.flags = static_cast<std::uint32_t>((number(0, 3) == 0 ? number(0, 16) : 15) | number(0, 2) << 4);
    b.iterations = number(-1, 5);
    if (number(0, 2) == 0) b.iterations = -1;
    b.from_columns = number(0, 2) != 0;
    b.to_columns = number(0, 4) == 0 ? !b.from_columns : b.from_columns;
    b.straight = number(0, 2) != 0;
    b.copies = number(0, 4) == 0;
    return b;
}

TEST(BlurShortMean, IsTheNearestIntegerOfEverySum) {
    for (std::uint32_t d = 1; d <= 255; d += 2) {
        const ShortMean mean(d);
        for (std::uint32_t sum = 0; sum <= 255 * d; ++sum)
            ASSERT_EQ(mean.of(sum), (2 * sum + d) / (2 * d)) << sum << " / " << d;
        ASSERT_LT(255 * d + mean.bias, 65536u);
    }
}

/// Worlds that count as larger than the caches, for a scope.
struct SmallCaches {
    explicit SmallCaches(bool on) { standalone::SetCacheBytes(on ? 1 : 0); }
    ~SmallCaches() { standalone::SetCacheBytes(0); }
};

TYPED_TEST(BlurAt, EveryLevelGivesTheModelsPixels) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto seed : seeds(400)) {
            SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << " seed " << seed);
            Numbers number(static_cast<unsigned>(seed));
            const Blur blur = random_blur(number);
            const bool is_long = number(0, 8) == 0, beside = number(0, 4) == 0;
            const int length = is_long ? number(200, 700) : number(1, 68),
                      lines = is_long ? number(1, 9) : number(1, 40);
            const auto fill = [&] { return kAllFills[number(0, 6)]; };
            const bool whole_lines = number(0, 2) == 0;  // rows begin alike in lines of the caches
            const SmallCaches caches(number(0, 2) == 0);
            const auto plate = [&](bool columns, int along, int across) {
                const int width = columns ? across : along, height = columns ? along : across;
                const int bytes = width * static_cast<int>(sizeof(TypeParam));
                const int shift = whole_lines ? 16 * number(0, 4) : number(0, 17);
                return Plate<TypeParam>(width, height, fill(), seed, shift, whole_lines ? -bytes & 63 : number(0, 9));
            };
            const Plate<TypeParam> src = plate(blur.from_columns, length, lines);
            Plate<TypeParam> dst =
                plate(blur.to_columns, beside ? number(1, 90) : length, beside ? number(1, 40) : lines);
            if (beside) {
                dst.world->origin_x = number(-30, 30), dst.world->origin_y = number(-30, 30);
                src.world->origin_x = number(-30, 30), src.world->origin_y = number(-30, 30);
            }
            BlurModel<TypeParam>::expect(blur, src, dst);
            if (this->HasFatalFailure()) return;
        }
    }
}

/// What is infinite, no number or next to nothing comes out as the rules have it, in every form.
TEST(BlurOfFloats, OddPixelsFollowTheRulesToo) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        for (const auto seed : seeds(120)) {
            SCOPED_TRACE(testing::Message() << "level " << static_cast<int>(level) << " seed " << seed);
            Numbers number(static_cast<unsigned>(seed));
            Blur blur = random_blur(number);
            blur.flags |= 15;
            const Plate<QX_PixelFloat> src(50, 40, FillKind::layer, seed);
            const float scale = seed % 3 == 0 ? 1e-36f : 1;
            for (const auto& [x, y] : places(50, 40)) {
                auto pixel = src.at(x, y);
                for (float& channel : pixel) channel *= scale;
                std::memcpy(const_cast<std::byte*>(src.place(x, y)), &pixel, sizeof pixel);
            }
            for (int i = 0; i < (seed % 2 == 0 ? 6 : 0); ++i) {
                const float odd[] = {INFINITY, -INFINITY, 1e30f, NAN, -1e30f};
                auto pixel = src.at(number(0, 50), number(0, 40));
                pixel[static_cast<unsigned>(number(0, 4))] = odd[number(0, 5)];
                std::memcpy(const_cast<std::byte*>(src.place(number(0, 50), number(0, 40))), &pixel, sizeof pixel);
            }
            Plate<QX_PixelFloat> dst(50, 40, FillKind::random, seed);
            const auto want = BlurModel<QX_PixelFloat>::blurred(blur, src, dst);
            blur(src.world.get(), dst.world.get());
            for (const auto& [x, y] : places(50, 40)) {
                for (unsigned c = 0; c < 4; ++c) {
                    const float a = dst.at(x, y)[c], b = want.at(x, y)[c];
                    ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b))) << x << " " << y << " " << a << " " << b;
                }
            }
        }
    }
}

TYPED_TEST(BlurAt, BandsAndThreadsDontShow) {
    const Plate<TypeParam> src(301, 170, FillKind::layer, 5);
    for (const auto& [passes, columns] : each(std::array{-1, 1, 3}, std::array{false, true})) {
        const Blur blur{.radius = 6.5f,
                        .flags = 31,
                        .iterations = passes,
                        .from_columns = columns,
                        .to_columns = columns,
                        .straight = true};
        std::vector<std::byte> first;
        for (const int bands : {1, 2, 7, 32}) {
            const Born born(bands);
            Plate<TypeParam> dst(301, 170, FillKind::clear, 0);
            blur(src.world.get(), dst.world.get());
            if (first.empty()) first = dst.memory;
            EXPECT_TRUE(dst.memory == first) << bands << " bands, " << blur;
        }
    }
}

}  // namespace
}  // namespace qx::test
