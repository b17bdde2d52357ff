// SPDX-License-Identifier: Apache-2.0
// A copy is a copy: what is written comes back.
#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <random>

#include "pictures/Scale.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::channels;
using qx::test::Folder;

TEST(Scale, StepsGiveTheNearestValueAndWorldsSurvive) {
    for (std::int64_t v = 0; v <= 65535; ++v) {
        const std::int64_t q = from_file16(static_cast<std::uint32_t>(v));
        ASSERT_LT(std::abs(q * 65535 - v * 32768) * 2, 65535) << v;
    }
    for (std::uint32_t q = 0; q <= 32768; ++q) {
        const std::int64_t v = to_file16(q);
        ASSERT_LE(std::abs(v * 32768 - std::int64_t{q} * 65535) * 2, 32768) << q;
        ASSERT_EQ(from_file16(static_cast<std::uint32_t>(v)), q);
    }
    EXPECT_EQ(to_file16(32768), 65535);
    EXPECT_EQ(to_file16(65535), 65535) << "values above full do not leave the file's range";
}

TEST(Scale, StraightIsTheNearestQuotient) {
    for (int a = 0; a < 256; ++a) {
        for (int c = 0; c < 256; ++c) {
            const long expected = a == 0 ? c : std::min(255L, std::lround(c * 255.0 / a));
            ASSERT_EQ((straight<255>(static_cast<std::uint8_t>(c), static_cast<std::uint8_t>(a))), expected);
        }
    }
}

/// x is the value, y the alpha: all pairs, colours under alpha 0 included.
Picture all_pairs() {
    return qx::test::picture<QX_Pixel8>(256, 256, true, [](int x, int y) {
        const auto v = static_cast<std::uint8_t>(x);
        return QX_Pixel8{static_cast<std::uint8_t>(y), v, static_cast<std::uint8_t>(255 - v), v};
    });
}

TEST(RoundTrip, PngHoldsEveryPairAsItIs) {
    const Folder folder;
    const auto pairs = all_pairs();
    write_picture(folder / "pairs.png", pairs, 8);
    EXPECT_TRUE(qx::test::same_pixels(*read_picture(folder / "pairs.png").world, *pairs.world));

    // And the file itself holds them straight, as another reader sees it.
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_file(&image, (folder / "pairs.png").c_str()), 0);
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr), 0);
    for (std::size_t i = 0; i < 65536; ++i) {
        ASSERT_EQ(bytes[4 * i], i % 256);
        ASSERT_EQ(bytes[4 * i + 1], 255 - i % 256);
        ASSERT_EQ(bytes[4 * i + 3], i / 256);
    }
}

/// Random pixels; the float ones pass both ends of the range.
Picture random_picture(int depth, bool has_alpha) {
    const auto engine = std::make_shared<std::mt19937>(20u);
    const auto below = [engine](std::uint32_t n) { return (*engine)() % n; };
    if (depth == 8) {
        return qx::test::picture<QX_Pixel8>(61, 37, has_alpha, [=](int, int) {
            const auto c = [&] { return static_cast<std::uint8_t>(below(256)); };
            return QX_Pixel8{has_alpha ? c() : std::uint8_t{255}, c(), c(), c()};
        });
    }
    if (depth == 16) {
        return qx::test::picture<QX_Pixel16>(61, 37, has_alpha, [=](int, int) {
            const auto c = [&] { return static_cast<std::uint16_t>(below(32769)); };
            return QX_Pixel16{has_alpha ? c() : std::uint16_t{32768}, c(), c(), c()};
        });
    }
    return qx::test::picture<QX_PixelFloat>(61, 37, has_alpha, [=](int, int) {
        const auto c = [&] { return static_cast<float>(below(3001)) / 1000 - 1; };
        return QX_PixelFloat{has_alpha ? static_cast<float>(below(1000) + 1) / 1000 : 1.0f, c(), c(), c()};
    });
}

struct Kind {
    const char* name;
    int depth;
    bool half;
    double tolerance;  ///< of a colour, relative to the largest value of the depth
};
const Kind kKinds[] = {{"a.png", 8, false, 0},   {"b.png", 16, false, 0}, {"c.tif", 8, false, 0},
                       {"d.TIFF", 16, false, 0}, {"e.tif", 32, false, 0}, {"f.exr", 32, false, 1e-6},
                       {"g.exr", 32, true, 2e-3}};

TEST(RoundTrip, EveryFormatKeepsPixelsProfileAndResolution) {
    const Folder folder;
    for (const Kind& kind : kKinds) {
        for (const bool has_alpha : {false, true}) {
            SCOPED_TRACE(std::string(kind.name) + (has_alpha ? " with alpha" : ""));
            Picture in = random_picture(kind.depth, has_alpha);
            in.icc = qx::test::small_profile();
            in.resolution = {300, 150, Resolution::Unit::inch};
            write_picture(folder / kind.name, in, kind.depth, {kind.half});
            const Picture out = read_picture(folder / kind.name);
            EXPECT_EQ(out.has_alpha, has_alpha);
            ASSERT_EQ(out.world->Depth(), kind.depth);
            EXPECT_TRUE(kind.tolerance > 0 || qx::test::same_pixels(*in.world, *out.world));
            for (int y = 0; y < 37; ++y) {
                const auto a = channels(*in.world, y, y), b = channels(*out.world, y, y);
                for (std::size_t i = 0; i < 4; ++i) ASSERT_NEAR(a[i], b[i], kind.tolerance) << y;
            }
            const bool exr = kind.depth == 32 && kind.tolerance > 0;
            EXPECT_EQ(out.icc, exr ? std::vector<std::uint8_t>{} : in.icc);
            const Resolution dpi = out.resolution.in(Resolution::Unit::inch);
            EXPECT_NEAR(dpi.x, 300, 0.02);
            EXPECT_NEAR(dpi.y, 150, 0.02);
        }
    }
}

TEST(RoundTrip, JpegIsNearAndKeepsProfileAndResolution) {
    const Folder folder;
    auto in = qx::test::picture<QX_Pixel8>(64, 64, false, [](int x, int y) {
        return QX_Pixel8{255, static_cast<std::uint8_t>(4 * x), static_cast<std::uint8_t>(4 * y), 90};
    });
    in.icc = qx::test::small_profile();
    in.resolution = {72, 72, Resolution::Unit::inch};
    write_picture(folder / "a.jpeg", in, 32);  // a depth that it cannot have
    const auto out = read_picture(folder / "a.jpeg");
    for (int y = 0; y < 64; ++y) {
        const auto a = channels(*in.world, 63 - y, y), b = channels(*out.world, 63 - y, y);
        for (std::size_t i = 0; i < 4; ++i) ASSERT_NEAR(a[i], b[i], i == 0 ? 0 : 6);
    }
    EXPECT_EQ(out.icc, in.icc);
    EXPECT_EQ(out.resolution.x, 72);
    EXPECT_FALSE(out.has_alpha);
    EXPECT_THROW(write_picture(folder / "b.jpg", all_pairs(), 8), Failure);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.jpeg"});
}

TEST(RoundTrip, FloatAlphaIsLimitedOnTheWayToIntegers) {
    const auto in = qx::test::picture<QX_PixelFloat>(5, 1, true, [](int x, int) {
        const float alphas[] = {-0.25f, NAN, 0.5f, 1.0f, 1.75f};
        return QX_PixelFloat{alphas[x], 1.5f, -1, 0.25f};
    });
    const auto out = at_depth("test", *in.world, 8);
    const double expected[] = {0, 0, 128, 255, 255};
    for (int x = 0; x < 5; ++x) EXPECT_EQ(channels(*out, x, 0)[0], expected[x]) << x;
    EXPECT_EQ(channels(*out, 3, 0), (std::vector<double>{255, 255, 0, 64}));
}

}  // namespace
