// SPDX-License-Identifier: Apache-2.0
// Effects by themselves: what they make of pixels, where a canvas goes that grows, and what they may not change.
#include <cmath>
#include <nlohmann/json.hpp>

#include "platform/standalone/Host.h"
#include "scene/EffectRead.h"
#include "tests/pictures/Support.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::row_of;
using qx::scene::Canvas;  // not that of the drawing tests

class Effects : public InFolder {
protected:
    const Born library{32};

    /// Applies effects, told as in a scene with ' for ", one after the other.
    Canvas after(const QX_World& world, const Names& effects, double frame = 0,
                 qx::pictures::Watch& watch = qx::pictures::unwatched()) const {
        Canvas canvas{qx::pictures::at_depth("layer", world, world.Depth())};
        for (std::string text : effects) {
            std::replace(text.begin(), text.end(), '\'', '"');
            const auto json = parse_json("{" + text + "}", "s.json");
            const SceneEffect effect = read_effect(SceneNode(json, file_), folder / "");
            effect.effect->apply(canvas, moment(frame, world.Depth(), watch));
        }
        return canvas;
    }
    Moment moment(double frame, int depth, qx::pictures::Watch& watch) const {
        const auto picture = [depth](const SceneFile& file) {
            auto shown = std::make_shared<qx::pictures::Picture>(qx::pictures::read_picture(file.at(0)));
            shown->world = qx::pictures::at_depth("", *shown->world, depth);
            return std::shared_ptr<const qx::pictures::Picture>(shown);
        };
        return {frame, "layer", picture, [](const std::string&) {}, watch};
    }

private:
    const std::string file_ = "s.json";
};

template <class Pixel, class Make> std::unique_ptr<QX_World> world_of(int width, int height, const Make& make) {
    return std::move(picture<Pixel>(width, height, true, make).world);
}

/// Red that fades into clear black.
std::unique_ptr<QX_World> red_spot(int side) {
    return world_of<QX_PixelFloat>(side, side, [=](int x, int y) -> QX_PixelFloat {
        const double r = std::hypot(x - side / 2, y - side / 2) / side * 4;
        if (r >= 1) return {};
        return {static_cast<float>(1 - r), 0.9f, 0.1f, 0.2f};
    });
}

/// 8 bits, opaque, with detail.
std::unique_ptr<QX_World> detail(int width, int height) {
    return world_of<QX_Pixel8>(width, height,
                               [](int x, int y) { return argb(255, x * 37 % 256, y * 53 % 256, x * y % 256); });
}

TEST_F(Effects, WhatIsClearHasNoColourToGive) {
    const auto spot = red_spot(48);
    for (const char* blur :
         {"'effect': 'blur', 'radius': 5", "'effect': 'blur', 'radius': 5, 'grow': true",
          "'effect': 'blur', 'kind': 'box', 'radius': 3, 'passes': 3", "'effect': 'blur', 'kind': 'mean', 'radius': 4",
          "'effect': 'blur', 'kind': 'disc', 'radius': 4", "'effect': 'convolve', 'filter': 'gaussian:4'"}) {
        const Canvas canvas = after(*spot, {blur});
        int seen = 0;
        qx::pictures::each_pixel<QX_PixelFloat>(*canvas.world, [&](const QX_PixelFloat& p, int x, int y) {
            if (p.alpha < 1e-4f) return;
            ++seen;
            const bool same = std::fabs(p.red - 0.9f) < 2e-3 && std::fabs(p.green - 0.1f) < 2e-3;
            ASSERT_TRUE(same) << blur << " " << x << " " << y << " " << p;
        });
        EXPECT_GT(seen, 500) << blur;
    }
}

TEST_F(Effects, ASolidPictureStaysSolidWhereItsEdgeIsKept) {
    const auto grey = world_of<QX_Pixel16>(40, 30, [](int, int) { return QX_Pixel16{32768, 9000, 20000, 123}; });
    for (const char* blur :
         {"'effect': 'blur', 'radius': 25", "'effect': 'blur', 'kind': 'box', 'radius': 7, 'passes': 3",
          "'effect': 'blur', 'kind': 'mean', 'radius': 11.5", "'effect': 'blur', 'kind': 'disc', 'radius': 6",
          "'effect': 'convolve', 'filter': 'box:5'", "'effect': 'convolve', 'filter': 'sharpen'"}) {
        const Canvas canvas = after(*grey, {blur});
        qx::pictures::each_pixel<QX_Pixel16>(*canvas.world, [&](const QX_Pixel16& p, int x, int y) {
            const auto near = [](int a, int b) { return std::abs(a - b) <= 2; };
            ASSERT_TRUE(p.alpha == 32768 && near(p.red, 9000) && near(p.green, 20000) && near(p.blue, 123))
                << blur << " " << x << " " << y << " " << p;
        });
    }
}

TEST_F(Effects, ACanvasThatGrowsHoldsWhatSpreadsAroundWhatWasThere) {
    const auto spot = world_of<QX_PixelFloat>(9, 7, [](int x, int y) -> QX_PixelFloat {
        return x == 4 && y == 3 ? QX_PixelFloat{1, 1, 1, 1} : QX_PixelFloat{};
    });
    const Cases<const char*, int, int> cases = {
        {"'radius': [6, 3]", 6, 3},
        {"'radius': 2, 'passes': 3", 6, 6},
        {"'kind': 'box', 'radius': [2, 1], 'passes': 2", 4, 2},
        {"'kind': 'mean', 'radius': [2, 1]", 2, 1},
        {"'kind': 'disc', 'radius': 3", 3, 3},
    };
    for (const auto& [keys, across, down] : cases) {
        const Canvas canvas = after(*spot, {std::string("'effect': 'blur', 'grow': true, ") + keys});
        EXPECT_TRUE(canvas.x == -across && canvas.y == -down) << keys;
        EXPECT_TRUE(canvas.world->width == 9 + 2 * across && canvas.world->height == 7 + 2 * down) << keys;
        double all = 0, at_x = 0, at_y = 0;
        qx::pictures::each_pixel<QX_PixelFloat>(*canvas.world, [&](const QX_PixelFloat& p, int x, int y) {
            all += p.alpha;
            at_x += double{p.alpha} * (x + canvas.x);
            at_y += double{p.alpha} * (y + canvas.y);
        });
        EXPECT_NEAR(all, 1, 2e-3) << keys;  // nothing is lost, and its middle stays
        EXPECT_NEAR(at_x, 4, 1e-2) << keys;
        EXPECT_NEAR(at_y, 3, 1e-2) << keys;
    }
}

TEST_F(Effects, BoxesKeepLightAboveOne) {
    const auto light = world_of<QX_PixelFloat>(21, 21, [](int x, int y) {
        const float v = x == 10 && y == 10 ? 30.0f : 0.25f;
        return QX_PixelFloat{1, v, v, v};
    });
    const Canvas canvas = after(*light, {"'effect': 'blur', 'kind': 'box', 'radius': 2"});
    const QX_PixelFloat& p = row_of<QX_PixelFloat>(*canvas.world, 10)[11];
    EXPECT_NEAR(p.red, (30 + 24 * 0.25) / 25, 1e-5);
    EXPECT_NEAR(row_of<QX_PixelFloat>(*canvas.world, 2)[2].green, 0.25, 1e-6);
}

/// Light that has no power of two above it.
TEST_F(Effects, TheBrightestLightBlursToNumbers) {
    const auto light = world_of<QX_PixelFloat>(9, 9, [](int x, int y) {
        return QX_PixelFloat{1, x == 4 && y == 4 ? 3.4e38f : 0.0f, 0.0f, 0.5f};
    });
    const Canvas canvas = after(*light, {"'effect': 'blur', 'kind': 'box', 'radius': 1"});
    qx::pictures::each_pixel<QX_PixelFloat>(*canvas.world, [](const QX_PixelFloat& p, int x, int y) {
        ASSERT_TRUE(std::isfinite(p.red) && p.green == 0 && p.blue <= 0.5f) << p << " at " << x << ", " << y;
    });
}

/// A disc is cut to rows, whose pixels count as far as it covers them.
TEST_F(Effects, ADiscIsTheMeanOfWhatItCovers) {
    const int width = 7, height = 5;
    const auto world = world_of<QX_PixelFloat>(width, height, [](int x, int y) {
        return QX_PixelFloat{1, static_cast<float>((x * 5 + y * 3) % 8) / 8, static_cast<float>(x) / 8, 0.25f};
    });
    for (const auto& [radius, keeps] : each(std::array{2, 9, 400}, std::array{true, false})) {
        const Canvas canvas =
            after(*world, {"'effect': 'blur', 'kind': 'disc', 'edge': '" + std::string(keeps ? "keep" : "clear") +
                           "', 'radius': " + std::to_string(radius)});
        for (const auto& [y, x] : places(height, width)) {
            double area = 0, covered = 0, red = 0, green = 0;
            for (int row = -radius; row <= radius; ++row) {
                const double half = std::sqrt((radius + 0.5) * (radius + 0.5) - row * row);
                area += 2 * half;
                for (int at = -radius - 1; at <= radius + 1; ++at) {
                    const double part = std::min(half, at + 0.5) - std::max(-half, at - 0.5);
                    const int sx = std::clamp(x + at, 0, width - 1), sy = std::clamp(y + row, 0, height - 1);
                    if (part <= 0 || (!keeps && (sx != x + at || sy != y + row))) continue;
                    const QX_PixelFloat& p = row_of<QX_PixelFloat>(*world, sy)[sx];
                    covered += part, red += part * p.red, green += part * p.green;
                }
            }
            const QX_PixelFloat& made = row_of<QX_PixelFloat>(*canvas.world, y)[x];
            ASSERT_NEAR(made.alpha, covered / area, 1e-5) << radius << " " << x << " " << y;
            ASSERT_NEAR(made.red, red / covered, 1e-5) << radius << " " << x << " " << y;
            ASSERT_NEAR(made.green, green / covered, 1e-5) << radius << " " << x << " " << y;
        }
    }
}

/// Neither time nor memory goes with the reach, but along a line.
TEST_F(Effects, AReachFarBeyondAPictureIsNoWork) {
    write("m.png", 8, 6, [](int, int) { return argb(255, 0, 0, 0); });
    const auto world = detail(8, 6);
    const Canvas disc = after(*world, {"'effect': 'blur', 'kind': 'disc', 'radius': 30000"});
    const QX_Pixel8 all = row_of<QX_Pixel8>(*disc.world, 0)[0];
    qx::pictures::each_pixel<QX_Pixel8>(
        *disc.world, [&](const QX_Pixel8& p, int x, int y) { ASSERT_NEAR(p.green, all.green, 1) << x << ", " << y; });
    for (const auto& [passes, inverted] : each(std::array{1, 3}, std::array{false, true})) {
        const Canvas faint =
            after(*world, {"'effect': 'matte', 'masks': [{'file': 'm.png', 'feather': 30000, 'passes': " +
                           std::to_string(passes) + (inverted ? ", 'kind': 'inverse'}]" : "}]")});
        EXPECT_NEAR(row_of<QX_Pixel8>(*faint.world, 3)[4].alpha, inverted ? 255 : 0, 2) << passes;
    }
}

TEST_F(Effects, AMapSetsTheRadiusOfEachPixel) {
    write("map.png", 40, 30, [](int x, int) { return x < 20 ? argb(255, 0, 0, 0) : argb(255, 255, 255, 255); });
    const auto world = detail(40, 30);
    for (const char* kind : {"mean", "disc"}) {
        const std::string keys = std::string("'effect': 'blur', 'radius': 4, 'kind': '") + kind + "'";
        const Canvas some = after(*world, {keys + ", 'map': 'map.png'"}), all = after(*world, {keys});
        for (const auto& [y, x] : places(30, 40)) {
            const QX_World& like = x < 20 ? *world : *all.world;
            ASSERT_EQ(row_of<QX_Pixel8>(*some.world, y)[x], row_of<QX_Pixel8>(like, y)[x])
                << kind << " " << x << " " << y;
        }
    }
}

TEST_F(Effects, UnselectedChannelsStay) {
    const auto world = detail(30, 20);
    const Canvas red = after(*world, {"'effect': 'blur', 'radius': 6, 'channels': 'r'"});
    const Canvas all = after(*world, {"'effect': 'blur', 'radius': 6"});
    for (const auto& [y, x] : places(20, 30)) {
        const auto own = row_of<QX_Pixel8>(*world, y)[x], blurred = row_of<QX_Pixel8>(*all.world, y)[x];
        ASSERT_EQ(row_of<QX_Pixel8>(*red.world, y)[x], argb(own.alpha, blurred.red, own.green, own.blue));
    }
}

TEST_F(Effects, BandsDoNotShow) {
    const auto world = detail(50, 37);
    const Names effects = {"'effect': 'blur', 'radius': 3.5", "'effect': 'convolve', 'filter': 'emboss'",
                           "'effect': 'blur', 'kind': 'disc', 'radius': 5, 'gain': 1",
                           "'effect': 'adjust', 'hue': 77, 'saturation': 1.3, 'chroma': 0.7"};
    const Canvas expected = after(*world, effects);
    for (const int bands : {1, 2, 7}) {
        standalone::SetBandCount(bands);
        EXPECT_TRUE(same_pixels(*after(*world, effects).world, *expected.world)) << bands;
    }
    standalone::SetBandCount(32);
}

TEST_F(Effects, AWatchHearsOfEachAndStopsItAnywhere) {
    write("m.png", 30, 20, [](int x, int y) { return argb(9 * x, 9 * y, 0, 0); });
    const auto world = detail(30, 20);
    standalone::SetPoolLimit(1);  // how often it is asked differs with the order of several threads
    for (const std::string text :
         {"'blur', 'radius': 3, 'passes': 2", "'blur', 'kind': 'box'", "'blur', 'kind': 'mean'",
          "'blur', 'kind': 'disc'", "'convolve', 'filter': 'gaussian:20'", "'adjust', 'hue': 5",
          "'blend', 'with': 'm.png'",
          "'matte', 'masks': [{'file': 'm.png', 'feather': 4}, {'file': 'm.png', 'kind': 'hue'}]"}) {
        CountingWatch all;
        after(*world, {"'effect': " + text}, 0, all);
        EXPECT_FALSE(all.wrong) << text;
        EXPECT_GT(all.told, 0) << text;
        EXPECT_GT(all.finished, 0) << text;
        for (int most = 0; most < all.told; ++most) {
            CountingWatch watch(most);
            EXPECT_THROW(after(*world, {"'effect': " + text}, 0, watch), qx::pictures::Stopped) << text << most;
        }
    }
    standalone::SetPoolLimit(0);
}

TEST_F(Effects, AConvolutionIsTheSumOfItsWindow) {
    put("k.txt", "# unlike on purpose\n1 2 3\n-4 5 6\n7 8 -9\n");
    const auto world = detail(17, 13);
    const Canvas canvas = after(*world, {"'effect': 'convolve', 'kernel': 'k.txt', 'normalise': true"});
    const int weights[3][3] = {{1, 2, 3}, {-4, 5, 6}, {7, 8, -9}};
    for (const auto& [y, x] : places(13, 17)) {
        int sum = 0;
        for (const auto& [i, k] : places(3, 3)) {
            const int sy = std::clamp(y + i - 1, 0, 12), sx = std::clamp(x + k - 1, 0, 16);
            sum += weights[i][k] * row_of<QX_Pixel8>(*world, sy)[sx].green;
        }
        ASSERT_EQ(row_of<QX_Pixel8>(*canvas.world, y)[x].green, std::clamp(sum / 19, 0, 255)) << x << " " << y;
    }
}

TEST_F(Effects, MasksJoinByTheirOperators) {
    write("a.png", 8, 6, [](int x, int y) { return argb(20 * x + y, 9, 9, 9); });
    write("b.png", 5, 6, [](int, int y) { return argb(200 - 9 * y, 9, 9, 9); });
    const auto white = world_of<QX_Pixel8>(8, 6, [](int, int) { return argb(255, 1, 2, 3); });
    const auto mul = [](int a, int b) { return static_cast<int>(std::lround(a * b / 255.0)); };
    const std::tuple<const char*, int (*)(int, int)> operators[] = {
        {"max", [](int s, int d) { return std::max(s, d); }},
        {"min", [](int s, int d) { return std::min(s, d); }},
        {"difference", [](int s, int d) { return std::abs(s - d); }},
        {"add", [](int s, int d) { return std::min(s + d, 255); }},
    };
    for (const auto& [name, operate] : operators) {
        const Canvas canvas = after(*white, {std::string("'effect': 'matte', 'masks': [{'file': 'a.png'}, "
                                                         "{'file': 'b.png', 'at': [2, -1], 'opacity': 0.5, 'op': '") +
                                             name + "'}]"});
        for (const auto& [y, x] : places(6, 8)) {
            const bool covered = x >= 2 && x < 7 && y < 5;
            const int b = covered ? mul(200 - 9 * (y + 1), 128) : 0;
            ASSERT_EQ(row_of<QX_Pixel8>(*canvas.world, y)[x].alpha, operate(b, 20 * x + y))
                << name << " " << x << " " << y;
        }
    }
}

TEST_F(Effects, AMaskThatMissesIsAnEmptyOneAndItsInverseIsFull) {
    write("m.png", 4, 4, [](int, int) { return argb(255, 0, 0, 0); });
    const auto white = world_of<QX_Pixel16>(10, 8, [](int, int) { return QX_Pixel16{32768, 5, 6, 7}; });
    const std::string far = "{'file': 'm.png', 'at': [1000, -900], 'feather': 3";
    const Cases<std::string, int> cases = {
        {far + "}", 0},
        {far + ", 'invert': true}", 32768},
        {"{'file': 'm.png', 'kind': 'inverse', 'at': [-50, 0]}", 32768},
        {"{'file': 'm.png', 'invert': true, 'at': [50, 0]}, " + far + ", 'op': 'intersect'}", 0},
        {"{'file': 'm.png', 'invert': true, 'at': [50, 0]}, " + far + ", 'op': 'subtract'}", 32768}};
    for (const auto& [masks, alpha] : cases) {
        const Canvas canvas = after(*white, {"'effect': 'matte', 'masks': [" + masks + "]"});
        qx::pictures::each_pixel<QX_Pixel16>(*canvas.world, [&, alpha = alpha, &what = masks](const auto& p, int, int) {
            ASSERT_TRUE(p.alpha == alpha && p.red == 5) << what << p;
        });
    }
}

TEST_F(Effects, AFeatherIsEvenAndKeepsTheAmount) {
    write("m.png", 61, 61,
          [](int x, int y) { return argb(x >= 20 && x <= 40 && y >= 20 && y <= 40 ? 255 : 0, 0, 0, 0); });
    const auto white = world_of<QX_Pixel8>(61, 61, [](int, int) { return argb(255, 0, 0, 0); });
    for (const char* passes : {"1", "3"}) {
        const std::string keys = std::string("'feather': 8, 'passes': ") + passes;
        const Canvas canvas = after(*white, {"'effect': 'matte', 'masks': [{'file': 'm.png', " + keys + "}]"});
        const auto alpha = [&](int x, int y) { return int{row_of<QX_Pixel8>(*canvas.world, y)[x].alpha}; };
        double all = 0;
        for (const auto& [y, x] : places(61, 61)) {
            all += alpha(x, y);
            ASSERT_LE(std::abs(alpha(x, y) - alpha(60 - x, y)), 2) << passes << " " << x << " " << y;
            ASSERT_LE(std::abs(alpha(x, y) - alpha(y, x)), 2) << passes << " " << x << " " << y;
        }
        EXPECT_NEAR(all, 21 * 21 * 255, 0.02 * 21 * 21 * 255) << passes;  // tails below a step are lost
        EXPECT_TRUE(alpha(30, 30) > 200 && alpha(18, 30) > 20 && alpha(2, 30) == 0) << passes;
    }
}

TEST_F(Effects, AWholeTurnOfTheHueChangesNothingAndNoChromaIsGrey) {
    const auto world = detail(40, 40);
    for (const char* turn : {"'hue': 360", "'hue': -720", "'chroma': 1"}) {
        const Canvas canvas = after(*world, {std::string("'effect': 'adjust', ") + turn});
        EXPECT_TRUE(same_pixels(*canvas.world, *world)) << turn;
    }
    const Canvas grey = after(*world, {"'effect': 'adjust', 'chroma': 0"});
    qx::pictures::each_pixel<QX_Pixel8>(*grey.world, [&](const QX_Pixel8& p, int x, int y) {
        const QX_Pixel8& own = row_of<QX_Pixel8>(*world, y)[x];
        ASSERT_TRUE(std::abs(p.red - p.green) <= 1 && std::abs(p.red - p.blue) <= 1) << p;
        ASSERT_NEAR(p.green, 0.299 * own.red + 0.587 * own.green + 0.114 * own.blue, 2);
    });
    const auto light = world_of<QX_PixelFloat>(1, 1, [](int, int) { return QX_PixelFloat{1, 12, 3, 3}; });
    const Canvas turned = after(*light, {"'effect': 'adjust', 'hue': 120"});
    EXPECT_NEAR(row_of<QX_PixelFloat>(*turned.world, 0)[0].green, 12, 1e-3);
}

TEST_F(Effects, NumbersMove) {
    const auto world = detail(20, 20);
    const char* const moving =
        "'effect': 'blur', 'radius': {'keys': [{'frame': 0, 'value': 0}, {'frame': 4, 'value': 8}]}";
    EXPECT_TRUE(same_pixels(*after(*world, {moving}).world, *world));
    EXPECT_TRUE(
        same_pixels(*after(*world, {moving}, 2).world, *after(*world, {"'effect': 'blur', 'radius': 4"}).world));
}

}  // namespace
