// SPDX-License-Identifier: Apache-2.0
// A copy is a copy: what is written comes back.
#include "pictures/Scale.h"
#include "tests/pictures/Writers.h"

namespace {

using namespace qx::pictures;
using namespace qx::test;
using RoundTrip = InFolder;

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

TEST(Scale, FloatsGiveTheNearestValueAndAreCut) {
    for (int v = 0; v < 65535; ++v) {
        ASSERT_EQ(file16_of_float(float((v + 0.48) / 65535)), v);
        ASSERT_EQ(file16_of_float(float((v + 0.52) / 65535)), v + 1);
    }
    for (const auto& [value, cut] :
         {std::pair{-0.25f, 0}, {NAN, 0}, {-INFINITY, 0}, {1.75f, 65535}, {INFINITY, 65535}}) {
        EXPECT_EQ(file16_of_float(value), cut);
    }
}

TEST(Scale, StraightIsTheNearestQuotient) {
    for (int i = 0; i < 65536; ++i) {
        const int a = i / 256, c = i % 256;
        const long expected = a == 0 ? c : std::min(255L, std::lround(c * 255.0 / a));
        ASSERT_EQ((straight<255>(static_cast<std::uint8_t>(c), static_cast<std::uint8_t>(a))), expected);
    }
}

/// x is the value, y the alpha: all pairs, colours under alpha 0 included.
Picture all_pairs() {
    return picture<QX_Pixel8>(256, 256, true, [](int x, int y) { return argb(y, x, 255 - x, x); });
}

TEST_F(RoundTrip, PngHoldsEveryPairAsItIs) {
    write("pairs.png", all_pairs());
    EXPECT_TRUE(same_pixels(read("pairs.png"), all_pairs()));

    // And the file itself holds them straight, as another reader sees it.
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_file(&image, (folder / "pairs.png").c_str()), 0);
    image.format = PNG_FORMAT_RGBA;
    Bytes straight(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, straight.data(), 0, nullptr), 0);
    for (std::size_t i = 0; i < 65536; ++i) {
        ASSERT_EQ(straight[4 * i], i % 256);
        ASSERT_EQ(straight[4 * i + 1], 255 - i % 256);
        ASSERT_EQ(straight[4 * i + 3], i / 256);
    }
}

/// Random pixels; the float ones pass both ends of the range.
Picture random_picture(int depth, bool has_alpha) {
    std::mt19937 random(20);
    const auto whole = [&]<class Pixel>(Pixel, std::uint32_t full) {
        using Channel = decltype(Pixel::alpha);
        const auto c = [&] { return static_cast<Channel>(random() % (full + 1)); };
        return picture<Pixel>(61, 37, has_alpha, [&](int, int) {
            return Pixel{has_alpha ? c() : static_cast<Channel>(full), c(), c(), c()};
        });
    };
    if (depth == 8) return whole(QX_Pixel8{}, 255);
    if (depth == 16) return whole(QX_Pixel16{}, 32768);
    const auto c = [&] { return static_cast<float>(random() % 3001) / 1000 - 1; };
    return picture<QX_PixelFloat>(61, 37, has_alpha, [&](int, int) {
        return QX_PixelFloat{has_alpha ? static_cast<float>(random() % 1000 + 1) / 1000 : 1.0f, c(), c(), c()};
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

TEST_F(RoundTrip, EveryFormatKeepsPixelsProfileAndResolution) {
    for (int i = 0; i < 14; ++i) {
        const Kind& kind = kKinds[i / 2];
        const bool has_alpha = i % 2 != 0, exr = kind.tolerance > 0;
        SCOPED_TRACE(std::string(kind.name) + (has_alpha ? " with alpha" : ""));
        Picture in = random_picture(kind.depth, has_alpha);
        in.colours.icc.bytes = small_profile();
        in.resolution = {300, 150, Resolution::Unit::inch};
        write_picture(folder / kind.name, in, kind.depth, {kind.half});
        const Picture out = read(kind.name);
        EXPECT_EQ(out.has_alpha, has_alpha);
        ASSERT_EQ(out.world->Depth(), kind.depth);
        EXPECT_TRUE(exr || same_pixels(in, out));
        for (int y = 0; y < 37; ++y) {
            for (std::size_t c = 0; c < 4; ++c) {
                ASSERT_NEAR(channels(in, y, y)[c], channels(out, y, y)[c], kind.tolerance) << y;
            }
        }
        EXPECT_EQ(out.colours.icc.bytes, exr ? Bytes{} : in.colours.icc.bytes);
        const Resolution dpi = out.resolution.in(Resolution::Unit::inch);
        EXPECT_NEAR(dpi.x, 300, 0.02);
        EXPECT_NEAR(dpi.y, 150, 0.02);
    }
}

TEST_F(RoundTrip, JpegIsNearAndKeepsProfileAndResolution) {
    auto in = picture<QX_Pixel8>(64, 64, false, [](int x, int y) { return argb(255, 4 * x, 4 * y, 90); });
    in.colours.icc.bytes = small_profile();
    in.resolution = {72, 72, Resolution::Unit::inch};
    write("a.jpeg", in, 32);  // a depth that it cannot have
    const auto out = read("a.jpeg");
    for (int y = 0; y < 64; ++y) {
        const auto a = channels(in, 63 - y, y), b = channels(out, 63 - y, y);
        for (std::size_t i = 0; i < 4; ++i) ASSERT_NEAR(a[i], b[i], i == 0 ? 0 : 6);
    }
    EXPECT_EQ(out.colours.icc.bytes, in.colours.icc.bytes);
    EXPECT_EQ(out.resolution.x, 72);
    EXPECT_FALSE(out.has_alpha);
    EXPECT_THROW(write("b.jpg", all_pairs()), Failure);
    EXPECT_EQ(folder.names(), Names{"a.jpeg"});
}

TEST(Depths, FloatAlphaIsLimitedOnTheWayToIntegers) {
    for (const auto& [alpha, limited] : {std::pair{-0.25f, 0.0}, {NAN, 0}, {0.5f, 128}, {1, 255}, {1.75f, 255}}) {
        const auto pixel = [a = alpha](int, int) { return QX_PixelFloat{a, 1.5f, -1, 0.25f}; };
        const auto in = picture<QX_PixelFloat>(1, 1, true, pixel);
        EXPECT_EQ(channels(*at_depth("test", *in.world, 8), 0, 0), (List{limited, 255, 0, 64})) << alpha;
    }
}

/// The library rounds float rows to 8 bits by a rule that asks for their address. Here is memory of someone else's, at
/// every distance from a boundary, of values whose product with 255 is a number and a half exactly.
TEST(Depths, HalvesBecomeEvenWhereverTheRowsLie) {
    std::vector<std::pair<float, double>> ties;  // and the even number beside each
    for (int below = 0; below < 255; ++below) {
        const auto value = static_cast<float>((below + 0.5) / 255);
        if (value * 255.0f == static_cast<float>(below) + 0.5f) ties.emplace_back(value, (below + 1) / 2 * 2);
    }
    const int width = static_cast<int>(ties.size()), height = 3, rowbytes = width * 16 + 4;
    for (int shift = 0; shift < 16; shift += 4) {
        std::vector<float> memory(static_cast<std::size_t>(height * rowbytes + shift) / sizeof(float));
        auto* first = reinterpret_cast<std::byte*>(memory.data()) + shift;
        const std::unique_ptr<QX_World> world(QX_World::NewReference(first, width, height, 32, rowbytes));
        each_pixel<QX_PixelFloat>(*world, [&](QX_PixelFloat& to, int x, int) {
            const float v = ties[static_cast<std::size_t>(x)].first;
            to = {1, v, v, v};
        });
        const auto rounded = at_depth("test", *world, 8);
        for (int i = 0; i < width * height; ++i) {
            const double even = ties[static_cast<std::size_t>(i % width)].second;
            ASSERT_EQ(channels(*rounded, i % width, i / width), (List{255, even, even, even})) << shift << " " << i;
        }
    }
}

TEST_F(RoundTrip, BytesInMemoryAreThoseOfTheFile) {
    for (const std::string name : {"n.png", "n.jpg", "n.tif", "n.exr"}) {
        write(name, noise(90, 70), 16);
        EXPECT_TRUE(bytes_of_picture(name, noise(90, 70), 16) == bytes(name)) << name;
    }
    EXPECT_EQ(folder.names().size(), 4u);
    CountingWatch watch(3);
    EXPECT_THROW(bytes_of_picture("n.png", noise(90, 70), 8, {}, watch), Stopped);
    EXPECT_HOLDS(fault_of<Failure>([] { bytes_of_picture("n.gif", noise(9, 7), 8); }), "n.gif: ");
}

}  // namespace
