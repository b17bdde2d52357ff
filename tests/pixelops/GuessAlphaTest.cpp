// SPDX-License-Identifier: Apache-2.0
// Guesses of alpha on pictures made for each step of the decision.
#include "tests/support/Test.h"

namespace qx::test {
namespace {

constexpr std::int32_t kStraight = kQX_AlphaStraight, kPremul = kQX_AlphaPremultiplied, kUnknown = kQX_AlphaUnknown;
using Row = std::vector<QX_Pixel8>;

struct Guess {
    std::int32_t kind = -1;
    QX_Pixel8 matte{1, 2, 3, 4};
    std::string message{};
};

/// Of pixels laid out `width` to a row, between others that don't count.
Guess guess(const Row& pixels, int width) {
    Picture<QX_Pixel8> picture(width, static_cast<int>(pixels.size()) / width);
    fill_pixels<QX_Pixel8>(picture.pixels, FillKind::random, 5);
    for (const auto& [x, y] : places(width, picture.record.height)) {
        picture.at(x, y) = pixels[static_cast<std::size_t>(y * width + x)];
    }
    Guess g, silent;
    char message[kQX_GuessMessageBytes] = "before";
    EXPECT_EQ(QX_GuessAlphaMessage(nullptr, &picture.record, &g.kind, &g.matte, message), 0);
    EXPECT_EQ(QX_GuessAlpha(nullptr, &picture.record, &silent.kind, &silent.matte), 0);
    EXPECT_TRUE(silent.kind == g.kind && silent.matte == g.matte);
    g.message = message;
    return g;
}

constexpr QX_Pixel8 white{0, 255, 255, 255}, black{0, 0, 0, 0}, solid_white{255, 255, 255, 255},
    solid_black{255, 0, 0, 0}, unwritten{1, 2, 3, 4};
/// Grey of an alpha.
constexpr QX_Pixel8 grey(int a, int c) {
    const auto v = static_cast<std::uint8_t>(c);
    return {static_cast<std::uint8_t>(a), v, v, v};
}
constexpr QX_Pixel8 matte(int r, int g, int b) {
    return {255, static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g), static_cast<std::uint8_t>(b)};
}

const Cases<Text, Row, std::int32_t, QX_Pixel8> kPictures = {
    {"nothing to be seen", {black, white, grey(0, 7)}, kUnknown, unwritten},
    // White: all clear pixels, and the pixel of the least alpha no further off than that
    {"white", {white, grey(40, 215), solid_black}, kPremul, solid_white},
    {"one channel too far", {white, {40, 255, 213, 255}, solid_black}, kStraight, unwritten},
    {"the first of two of the least alpha counts", {white, grey(40, 213), grey(40, 215)}, kStraight, unwritten},
    {"so it does here", {white, grey(40, 215), grey(40, 100), solid_black}, kPremul, solid_white},
    {"opaque ones are no less than the first pixel", {white, solid_black, solid_black}, kPremul, solid_white},
    {"one clear pixel is not white", {white, {0, 255, 254, 255}, grey(40, 215)}, kStraight, unwritten},
    // Black: all clear pixels, and no colour above its alpha
    {"black", {black, grey(40, 40), {9, 9, 8, 7}}, kPremul, solid_black},
    {"one colour above its alpha, but near black", {black, grey(40, 40), {9, 9, 8, 10}}, kPremul, solid_black},
    {"further still", {black, grey(40, 40), {9, 9, 8, 11}}, kStraight, unwritten},
    {"one channel of one clear pixel", {black, {0, 0, 0, 3}, {9, 9, 8, 7}, {1, 9, 9, 9}}, kStraight, unwritten},
    // The usual colour of clear pixels, which hardly vary, near the pixel of the least alpha
    {"a colour",
     {{0, 90, 80, 70}, {0, 90, 80, 70}, {0, 91, 82, 72}, {20, 111, 59, 91}, grey(255, 9)},
     kPremul,
     matte(90, 80, 70)},
    {"one further", {{0, 90, 80, 70}, {0, 90, 80, 70}, {20, 112, 59, 91}, grey(255, 9)}, kStraight, unwritten},
    {"three apart, a pixel later", {grey(0, 90), grey(20, 90), grey(0, 93), grey(99, 9)}, kStraight, unwritten},
    {"by twos, each from the one before",
     {grey(0, 90), grey(0, 92), grey(0, 94), grey(20, 90), grey(99, 9)},
     kPremul,
     matte(90, 90, 90)},
    {"of two as frequent the lower", {grey(0, 92), grey(0, 90), grey(20, 90), grey(99, 9)}, kPremul, matte(90, 90, 90)},
    {"all that is seen is alike", {grey(0, 90), grey(0, 90), grey(20, 90), grey(20, 90)}, kStraight, unwritten},
    {"but for alpha", {grey(0, 90), grey(0, 90), grey(20, 90), grey(21, 90)}, kPremul, matte(90, 90, 90)},
    // Without clear pixels the usual colour is black; all lies within 256 of it
    {"opaque", {grey(255, 240), grey(255, 241)}, kPremul, solid_black},
    {"opaque and even", {grey(255, 7), grey(255, 7)}, kStraight, unwritten},
    {"hardly clear, bright", {grey(20, 240), grey(255, 241)}, kStraight, unwritten},
};

TEST(GuessAlpha, EachStepOfTheDecision) {
    for (const auto& [name, pixels, kind, colour] : kPictures) {
        for (const int width : {static_cast<int>(pixels.size()), 1}) {  // what came before goes on across rows
            SCOPED_TRACE(testing::Message() << name << ", width " << width);
            const Guess g = guess(pixels, width);
            EXPECT_EQ(g.kind, kind);
            EXPECT_EQ(g.matte, colour);
            EXPECT_EQ(g.message, kind == kUnknown ? "Unable to guess alpha channel." : "");
        }
    }
}

TEST(GuessAlpha, WorldsWithoutPixels) {
    Picture<QX_Pixel8> flat(3, 1);
    flat.record.height = 0;
    Picture<QX_Pixel8> narrow(3, 2);
    narrow.record.width = 0;
    QX_LayerDef none{};
    const Reports reports;
    for (const QX_LayerDef* world : {&flat.record, &narrow.record, &none}) {
        Guess g;
        char message[kQX_GuessMessageBytes];
        EXPECT_EQ(QX_GuessAlphaMessage(nullptr, world, &g.kind, &g.matte, message), 0);
        EXPECT_TRUE(g.kind == kUnknown && g.matte == unwritten);
        EXPECT_STREQ(message, "Unable to guess alpha channel.");
    }
    EXPECT_TRUE(reports.all().empty());
}

/// Layers over a matte, mixed as a compositor does it, are told from straight ones.
TEST(GuessAlpha, LayersOverAMatte) {
    for (const std::uint64_t seed : seeds(40)) {
        SCOPED_TRACE(seed);
        Numbers random(static_cast<unsigned>(seed));
        Row layer(4000);
        fill_pixels<QX_Pixel8>(layer, FillKind::layer, seed);
        layer[0].alpha = 0, layer[1] = {12, 99, 0, 200}, layer[2] = grey(200, 255);
        const QX_Pixel8 under = seed % 3 == 0   ? solid_white
                                : seed % 3 == 1 ? solid_black
                                                : matte(random(1, 255), random(1, 255), random(1, 255));
        EXPECT_EQ(guess(layer, 50).kind, kStraight);
        for (QX_Pixel8& p : layer) {
            for (auto c : {&QX_Pixel8::red, &QX_Pixel8::green, &QX_Pixel8::blue}) {
                p.*c = static_cast<std::uint8_t>((p.*c * p.alpha + under.*c * (255 - p.alpha) + 127) / 255);
            }
        }
        const Guess g = guess(layer, 50);
        EXPECT_EQ(g.kind, kPremul);
        EXPECT_EQ(g.matte, under);
    }
}

/// The decision as told, over whole statistics.
Guess told(const Row& pixels) {
    std::array<std::array<int, 256>, 3> histogram{};
    int white_count = 0, black_count = 0, clear_count = 0, least = 255;
    bool clear_vary = false, visible_vary = false, above = false;
    const QX_Pixel8 *clear = nullptr, *visible = nullptr, *p = &pixels[0];
    const auto colours = [](const QX_Pixel8& q) { return std::array<int, 3>{q.red, q.green, q.blue}; };
    for (const QX_Pixel8& q : pixels) {
        const auto c = colours(q);
        if (q.alpha == 0) {
            ++clear_count;
            white_count += c == std::array{255, 255, 255};
            black_count += c == std::array{0, 0, 0};
            for (std::size_t i = 0; i < 3; ++i) {
                ++histogram[i][static_cast<std::size_t>(c[i])];
                clear_vary |= clear != nullptr && std::abs(c[i] - colours(*clear)[i]) >= 3;
            }
            clear = &q;
        } else {
            visible_vary |= visible != nullptr && !(q == *visible);
            above |= *std::max_element(c.begin(), c.end()) > q.alpha;
            if (q.alpha < least) least = q.alpha, p = &q;
            visible = &q;
        }
    }
    const auto near = [&](const QX_Pixel8& m, int most) {
        const auto a = colours(m), b = colours(*p);
        return std::abs(a[0] - b[0]) <= most && std::abs(a[1] - b[1]) <= most && std::abs(a[2] - b[2]) <= most;
    };
    const auto usual = [&](std::size_t i) {
        return static_cast<int>(std::max_element(histogram[i].begin(), histogram[i].end()) - histogram[i].begin());
    };
    const QX_Pixel8 mode = matte(usual(0), usual(1), usual(2));
    if (visible == nullptr) return {kUnknown};
    if (white_count != 0 && white_count == clear_count && near(solid_white, least)) return {kPremul, solid_white};
    if (black_count != 0 && black_count == clear_count && !above) return {kPremul, solid_black};
    if (!clear_vary && visible_vary && near(mode, least + 1)) return {kPremul, mode};
    return {kStraight};
}

/// Pixels of few colours, with one that stands out here and there, so that each step decides some of the pictures.
Row striking(std::uint64_t seed, std::size_t count) {
    Numbers n(static_cast<unsigned>(seed));
    const int base = n(0, 3) == 0 ? 0 : n(0, 2) == 0 ? 255 : n(0, 256), spread = n(0, 4), rare = n(1, 900);
    const bool opaque = n(0, 6) == 0, even = n(0, 5) == 0;
    Row row(count);
    for (QX_Pixel8& p : row) {
        const auto c = [&](int alpha) {
            const int v = base + (spread > 2 ? 0 : n(0, spread + 1)) + (n(0, rare) == 0 ? n(0, 9) : 0);
            return std::min(alpha == 0 ? v : v * (255 - alpha) / 255 + (even ? 0 : n(0, alpha + 1)), 255);
        };
        const int alpha = opaque ? 255 : n(0, 2) == 0 ? 0 : even ? 200 : n(1, 256);
        p = {static_cast<std::uint8_t>(alpha), static_cast<std::uint8_t>(c(alpha)), static_cast<std::uint8_t>(c(alpha)),
             static_cast<std::uint8_t>(c(alpha))};
    }
    return row;
}

TEST(GuessAlpha, EveryLevelDecidesAsTold) {
    for (const auto level : kLevels) {
        const Born born(1, level);
        std::map<std::pair<std::int32_t, int>, int> outcomes;
        for (const std::uint64_t seed : seeds(2000)) {
            const int width = 1 + static_cast<int>(seed * 31 % 97);
            const Row row = striking(seed, static_cast<std::size_t>(width) * (1 + seed % 71));
            const Guess want = told(row), got = guess(row, width);
            ASSERT_EQ(got.kind, want.kind) << "seed " << seed;
            ASSERT_EQ(got.matte, want.kind == kPremul ? want.matte : unwritten) << "seed " << seed;
            ++outcomes[{got.kind, got.kind == kPremul ? (got.matte.red == 255) + 2 * (got.matte.red == 0) : 0}];
        }
        EXPECT_TRUE(outcomes.size() >= 4 || std::getenv("QX_SEEDS") != nullptr);
    }
}

}  // namespace
}  // namespace qx::test
