// SPDX-License-Identifier: Apache-2.0
// Where shots begin, on painted sequences.
#include <cmath>

#include "scene/retime/Cuts.h"
#include "tests/pictures/Support.h"
#include "tests/scene/Painted.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::unwatched;

/// Frames that a function paints: (frame, x, y) to a grey from 0 to 1.
class PaintedClip : public Clip {
public:
    using Paint = std::function<double(int, int, int)>;
    PaintedClip(int frames, int width, int height, Paint paint)
        : width_(width), height_(height), paint_(std::move(paint)) {
        for (int i = 0; i <= frames; ++i) times_.emplace_back(i, 25);
    }
    std::string name_of(int) const override { return "painted"; }
    SharedPicture frame(int index, qx::pictures::Watch&) override {
        ++asked;
        return std::make_shared<const qx::pictures::Picture>(
            picture<QX_Pixel8>(width_, height_, false, [&](int x, int y) {
                const int v = static_cast<int>(std::clamp(paint_(index, x, y), 0.0, 1.0) * 255);
                return argb(255, v, v, v);
            }));
    }
    std::atomic<int> asked{0};

private:
    const int width_, height_;
    const Paint paint_;
};

std::vector<int> cuts_of(PaintedClip& clip) {
    Cuts cuts(clip, CutSearch::automatic);
    std::vector<int> found;
    for (int i = 0; i + 1 < clip.frames(); ++i) {
        if (cuts.behind(i, unwatched())) found.push_back(i + 1);
    }
    return found;
}

constexpr int kShotFrames = 8;
using Paint = PaintedClip::Paint;
std::vector<int> found(const Paint& paint, int width = 240, int height = 136) {
    PaintedClip clip(kShotFrames, width, height, paint);
    return cuts_of(clip);
}

TEST(RetimeCuts, JoinsAreFound) {
    const std::pair<const char*, Paint> joined[] = {
        {"still", [](int i, int x, int y) { return painted(i < 4 ? 1 : 9, x, y); }},
        {"slow pans", [](int i, int x, int y) { return painted(i < 4 ? 2 : 3, x + 3 * i, y); }},
        {"fast pans", [](int i, int x, int y) { return painted(i < 4 ? 4 : 5, x + 60 * i, y); }},
        {"of one brightness and little contrast",
         [](int i, int x, int y) { return 0.4 + 0.3 * painted(i < 4 ? 6 : 7, x, y + i); }},
        {"into black", [](int i, int x, int y) { return i < 4 ? painted(8, x, y) : 0; }},
    };
    for (const auto& [name, paint] : joined) EXPECT_EQ(found(paint), std::vector<int>{4}) << name;
    for (int seed = 20; seed < 40; ++seed) {
        EXPECT_EQ(found([&](int i, int x, int y) { return painted(i < 4 ? seed : seed + 50, x + 5 * i, y); }),
                  std::vector<int>{4})
            << seed;
    }
    EXPECT_EQ(found([](int i, int x, int y) { return painted(i / 3, x, y); }), (std::vector<int>{3, 6}));
    PaintedClip two(2, 160, 90, [](int i, int x, int y) { return painted(i, x, y); });
    EXPECT_EQ(cuts_of(two), std::vector<int>{1});
}

TEST(RetimeCuts, MotionIsNone) {
    for (int seed = 1; seed <= 6; ++seed) {
        for (const int step : {5, 23, 41, 60}) {
            for (const int width : {240, 640, 1000}) {
                const auto pan = [&](int i, int x, int y) { return painted(seed, x + step * i, y); };
                EXPECT_EQ(found(pan, width, width * 9 / 16), std::vector<int>{}) << seed << " " << step << " " << width;
            }
            const auto slanted = [&](int i, int x, int y) {
                return painted(seed, x - step * i * 0.8, y + step * i * 0.6);
            };
            EXPECT_EQ(found(slanted), std::vector<int>{}) << seed << " " << step;
        }
    }
    // One jerk between stills, and a thing that moves every second frame.
    EXPECT_EQ(found([](int i, int x, int y) { return painted(7, x + (i < 4 ? 0 : 60), y); }), std::vector<int>{});
    EXPECT_EQ(found([](int i, int x, int y) {
                  const bool thing = std::abs(x - 40 - 30 * (i / 2)) < 25 && std::abs(y - 60) < 30;
                  return thing ? 0.9 : painted(8, x, y);
              }),
              std::vector<int>{});
}

TEST(RetimeCuts, FadesAndFlashesAreNone) {
    EXPECT_EQ(found([](int i, int x, int y) { return painted(1, x, y) * (kShotFrames - 1 - i) / (kShotFrames - 1); }),
              std::vector<int>{});
    EXPECT_EQ(found([](int i, int x, int y) { return painted(1, x, y) * i / (kShotFrames - 1); }), std::vector<int>{});
    EXPECT_EQ(found([](int i, int x, int y) {  // from one scene into another
                  const double u = i / (kShotFrames - 1.0);
                  return painted(2, x, y) * (1 - u) + painted(3, x, y) * u;
              }),
              std::vector<int>{});
    for (const double light : {0.3, 0.6, 1.0}) {
        EXPECT_EQ(found([&](int i, int x, int y) { return painted(4, x + 4 * i, y) + (i == 4 ? light : 0); }),
                  std::vector<int>{})
            << light;
    }
    EXPECT_EQ(found([](int i, int x, int y) { return i == 4 ? 0 : painted(5, x, y); }), std::vector<int>{});
}

TEST(RetimeCuts, AListIsAList) {
    PaintedClip clip(9, 32, 32, [](int i, int x, int y) { return painted(i, x, y); });
    Cuts listed(clip, CutSearch::listed, {3, 7}), none(clip, CutSearch::none);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(listed.behind(i, unwatched()), i == 2 || i == 6);
        EXPECT_FALSE(none.behind(i, unwatched()));
    }
    EXPECT_EQ(clip.asked, 0);
}

TEST(RetimeCuts, FramesAreReadOnce) {
    PaintedClip clip(kShotFrames, 64, 64, [](int i, int x, int y) { return painted(i, x, y); });
    cuts_of(clip);
    EXPECT_EQ(clip.asked, kShotFrames);
}

}  // namespace
