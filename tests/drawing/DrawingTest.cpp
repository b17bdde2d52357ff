// SPDX-License-Identifier: Apache-2.0
// Pixels, lines and brush spots.
#include "tests/support/Test.h"

namespace qx::test {
namespace {

using Places = std::set<std::pair<int, int>>;

/// What a line of full white leaves on a clear world.
Places drawn(double x0, double y0, double x1, double y1, int width, int height) {
    const World world(QX_World::New(width, height, 8, 1));
    const QX_PixelFloat white{1, 1, 1, 1};
    const double from[] = {x0, y0}, to[] = {x1, y1};
    EXPECT_EQ(QX_DrawLine(from, to, &white, world.get()), 0);
    Places places;
    for (const auto& [x, y] : qx::test::places(width, height)) {
        const QX_Pixel8& p = pixel_of<QX_Pixel8>(*world, x, y);
        EXPECT_TRUE(p.red == p.alpha && (p.alpha == 0 || p.alpha == 255));
        if (p.alpha != 0) places.emplace(x, y);
    }
    return places;
}

/// Every step of the walk, one after the other, in numbers of 64 bits that are brought back to 32.
Places walked(double x0, double y0, double x1, double y1, int width, int height) {
    const auto low = [](std::int64_t v) { return static_cast<std::int32_t>(static_cast<std::uint32_t>(v)) >> 16; };
    const auto fixed = [](double v) { return static_cast<std::int64_t>(v * 65536 + (v < 0 ? -0.5 : 0.5)); };
    const bool steep = std::abs(x1 - x0) <= std::abs(y1 - y0);
    if (steep) std::swap(x0, y0), std::swap(x1, y1);
    const std::int64_t start = fixed(x0), rounded = (start + 32768) & ~std::int64_t{65535};
    std::int64_t step = 65536, minor_step = fixed((y1 - y0) / (x1 - x0));
    std::int64_t x = rounded, y = fixed(y0) + ((minor_step * (rounded - start)) >> 16) + 32768;
    std::int64_t n = static_cast<std::int64_t>(x1 + 0.5) - (rounded >> 16);
    if (n < 0) step = -step, minor_step = -minor_step, n = -n;
    Places places;
    for (; n >= 0; --n, x += step, y += minor_step) {
        const auto [px, py] = steep ? std::pair(low(y), low(x)) : std::pair(low(x), low(y));
        if (holds({0, 0, width, height}, px, py)) places.emplace(px, py);
    }
    return places;
}

TEST(DrawLine, FollowsTheWalkWhereverItsEndsLie) {
    std::mt19937 random(5);
    for (int i = 0; i < 3000; ++i) {
        const double reach = i % 3 == 0 ? 30 : i % 3 == 1 ? 900 : 30000;  // positions are numbers of 16 bits
        std::uniform_real_distribution<double> place(-reach, reach);
        const double a = place(random), b = place(random), c = place(random), d = place(random);
        ASSERT_EQ(drawn(a, b, c, d, 37, 23), walked(a, b, c, d, 37, 23)) << a << "," << b << " to " << c << "," << d;
    }
}

TEST(DrawLine, KnownLinesAndNoNumbers) {
    EXPECT_EQ(drawn(2.5, 2.49, 2.5, 2.49, 8, 8), (Places{{3, 2}}));
    EXPECT_EQ(drawn(9, 2, 9, 2, 8, 8), Places{});
    EXPECT_EQ(drawn(4, -1e5, 4, 1e5, 8, 2), (Places{{4, 0}, {4, 1}}));
    for (const double odd : {double(NAN), double(INFINITY), -double(INFINITY), 1e300, 2147483647.0, -2147483648.0}) {
        drawn(odd, 3, 5, 4, 8, 8), drawn(3, odd, 5, 4, 8, 8), drawn(3, 3, odd, 4, 8, 8), drawn(3, 3, 5, odd, 8, 8);
    }
}

TEST(DrawLine, ColourKeepsItsLowBits) {
    const QX_PixelFloat colour{1.5f, -0.25f, 0.3f, 1.0f};
    const double at[] = {0, 0};
    const World w8(QX_World::New(1, 1, 8, 1)), w16(QX_World::New(1, 1, 16, 1)), wf(QX_World::New(1, 1, 32, 1));
    for (const World* w : {&w8, &w16, &wf}) ASSERT_EQ(QX_DrawLine(at, at, &colour, w->get()), 0);
    EXPECT_EQ(pixel_of<QX_Pixel8>(*w8, 0, 0), (QX_Pixel8{383 & 255, -63 & 255, 77, 255}));  // -63.25 towards zero
    const QX_Pixel16 deep{49152, -8191 & 65535, 9830, 32768};  // -8191.5 towards zero, 0.3 * 32768 = 9830.4
    EXPECT_EQ(pixel_of<QX_Pixel16>(*w16, 0, 0), deep);
    EXPECT_EQ(pixel_of<QX_PixelFloat>(*wf, 0, 0), colour);
}

TEST(SetPixel, StoresInsideOnly) {
    const World world(QX_World::New(3, 2, 16, 1));
    const QX_Pixel16 p{1, 2, 3, 4};
    EXPECT_TRUE(QX_SetPixel16(2, 1, &p, world.get()));
    EXPECT_EQ(pixel_of<QX_Pixel16>(*world, 2, 1), p);
    for (const M_LPoint at : {M_LPoint{3, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
        EXPECT_FALSE(QX_SetPixel16(at.x, at.y, &p, world.get())) << at.x << "," << at.y;
    }
    EXPECT_FALSE(QX_SetPixel8(0, 0, nullptr, world.get()));
    EXPECT_FALSE(QX_SetPixelFloat(0, 0, nullptr, world.get()));
}

/// Spots of all shapes, anywhere about the world, against the sum as it is written, over packed weights.
TEST(PaintSpot, MixesByItsWeights) {
    std::mt19937 random(7);
    const QX_Pixel8 colour{200, 255, 0, 31};
    for (int i = 0; i < 2000; ++i) {
        const std::uint32_t flags = static_cast<std::uint32_t>(random());
        const int size = 1 + 2 * static_cast<int>(random() % 6), r = size / 2;
        const int x = static_cast<int>(random() % 24) - 8, y = static_cast<int>(random() % 20) - 7;
        const bool line = (flags & 1) != 0, column = line && (flags & 32) != 0;
        const int columns = column ? 1 : size, rows = line && !column ? 1 : size;
        std::vector<std::uint32_t> weights(static_cast<std::size_t>(columns * rows));
        for (auto& w : weights) w = random() % 256;
        Canvas canvas{8, 9, 7, 4};
        const auto before = canvas.memory;
        ASSERT_EQ(
            QX_PaintSpot(nullptr, x + (i % 2) * 65536, y, flags, size, weights.data(), colour, canvas.world.get()), 0);
        canvas.expect([&](int px, int py, int byte) {
            const int bx = px - x + (column ? 0 : r), by = py - y + (line && !column ? 0 : r);
            if (bx < 0 || bx >= columns || by < 0 || by >= rows) return -1;
            const int w = static_cast<int>(weights[static_cast<std::size_t>(by * columns + bx)]);
            const int old = before[static_cast<std::size_t>((7 + py) * canvas.rowbytes + 4 * px + byte)];
            const int to[] = {colour.alpha, colour.red, colour.green, colour.blue};
            return (old * (255 - w) + to[byte] * w) / 255;
        });
        if (HasFailure()) FAIL() << "spot " << i;
    }
}

TEST(Drawing, Refusals) {
    const World world = make(4, 4, 8);
    BadWorlds bad;
    const std::uint32_t weight = 255;
    const auto spot = [](QX_LayerDef* w, int size, const std::uint32_t* weights) {
        return [=] { return QX_PaintSpot(nullptr, 1, 1, 0, size, weights, {}, w); };
    };
    const double at[] = {0, 0};
    expect_refused({{spot(&bad.gpu, 1, &weight), kOnGpu}, {spot(nullptr, 1, &weight), kBadParameter, 3, 0x250009}});
    expect_refused(kBadParameter,
                   {spot(&bad.empty, 1, &weight), spot(world.get(), 1, nullptr), spot(world.get(), -1, &weight),
                    spot(world.get(), 4, &weight), [&] { return QX_DrawLine(at, at, nullptr, world.get()); }});
}

}  // namespace
}  // namespace qx::test
