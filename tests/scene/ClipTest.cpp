// SPDX-License-Identifier: Apache-2.0
// Numbered pictures as clips, the frames that are kept, and exact numbers.
#include "scene/Clip.h"

#include <stdexcept>

#include "scene/Words.h"
#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using qx::pictures::Failure;
using Clips = InFolder;

TEST(Rationals, AreReadExactlyAndInLowestTerms) {
    const std::tuple<const char*, std::int64_t, std::int64_t> cases[] = {{"60", 60, 1},
                                                                         {"24000/1001", 24000, 1001},
                                                                         {"50/2", 25, 1},
                                                                         {"23.976", 2997, 125},
                                                                         {".5", 1, 2},
                                                                         {"-0.125", -1, 8},
                                                                         {"0", 0, 1},
                                                                         {"1/3", 1, 3},
                                                                         {"-6/4", -3, 2},
                                                                         {"007", 7, 1},
                                                                         {"0.000000000000001", 1, 1000000000000000}};
    for (const auto& [text, number, per] : cases) {
        const Rational read = rational_of_text(text);
        EXPECT_EQ(std::pair(read.number(), read.per()), std::pair(number, per)) << text;
        EXPECT_TRUE(rational_of_text(words(read)) == read) << text;
    }
    for (const char* text : {"",
                             "-",
                             "/",
                             "1/",
                             "/2",
                             "1/0",
                             "1.",
                             ".",
                             "1..2",
                             "1/2/3",
                             "1e3",
                             "--1",
                             "1/-2",
                             " 1",
                             "a",
                             "1234567890123456789",
                             "0.1234567890123456789",
                             "123456789012345678.123456789012345678",
                             "+1",
                             "1.-5"}) {
        EXPECT_THROW(rational_of_text(text), BadText) << text;
    }
}

TEST(Rationals, ReckonExactly) {
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        const auto draw = [&] { return static_cast<std::int64_t>(random() % 2001) - 1000; };
        const std::int64_t an = draw(), ad = draw() * 2 + 1, bn = draw(), bd = draw() * 2 + 1;  // odd: not 0
        const Rational a(an, ad), b(bn, bd);
        EXPECT_TRUE(a + b == Rational(an * bd + bn * ad, ad * bd));
        EXPECT_TRUE(a - b + b == a && (a * b) == Rational(an * bn, ad * bd));
        EXPECT_TRUE(bn == 0 || a / b * b == a);
        const std::int64_t sign = (ad < 0) != (bd < 0) ? -1 : 1;
        EXPECT_EQ(a < b, sign * an * bd < sign * bn * ad);
        EXPECT_TRUE(a.floor() <= a && a < Rational(a.floor() + 1));
    }
    const Rational large(INT64_MAX, 3), small(1, INT64_MAX);
    EXPECT_TRUE(small < large && large > small && large - large == 0);
    EXPECT_THROW(large * large, std::overflow_error);
    EXPECT_THROW(large + small, std::overflow_error);
}

qx::pictures::Picture numbered(int number, int width = 8) {
    return picture<QX_Pixel8>(width, 4, false, [=](int x, int y) { return argb(255, number, x, y); });
}
double number_in(const SharedPicture& picture) { return channels(*picture, 1, 1)[1]; }

TEST_F(Clips, NumberedPicturesHaveTheTimesOfTheirNumbers) {
    for (const int i : {8, 9, 10, 13}) write("f." + std::to_string(i) + ".png", numbered(i));
    NumberedPictures files{FramePattern(folder / "f.#.png"), {8, 13, 1}, Rational(24000, 1001)};
    EXPECT_EQ(fault_of<Failure>([&] { open_pictures_clip(files); }), folder / "f.11.png" + ": frame 11 is missing");
    files.gaps = true;
    const auto clip = open_pictures_clip(files);
    ASSERT_EQ(clip->frames(), 4);
    const int numbers[] = {8, 9, 10, 13, 14};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(clip->number_of(i), numbers[i]);
        EXPECT_EQ(number_in(clip->frame(i)), numbers[i]);
    }
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(clip->time_of(i) == Rational((numbers[i] - 8) * 1001, 24000));
    EXPECT_EQ(clip->frame_at(Rational(-1)), 0);
    EXPECT_EQ(clip->frame_at(clip->time_of(2)), 2);
    EXPECT_EQ(clip->frame_at(clip->time_of(3) - Rational(1, 1000000)), 2);
    EXPECT_EQ(clip->frame_at(clip->end() + 7), 3);
    const auto& facts = clip->facts();
    EXPECT_TRUE(facts.width == 8 && facts.height == 4 && facts.depth == 8 && !facts.is_movie);

    files.range = {13, 13, 1};
    const auto one = open_pictures_clip(files);
    EXPECT_TRUE(one->frames() == 1 && one->end() == Rational(1001, 24000));
    files.range = {8, 14, 2};
    const auto even = open_pictures_clip(files);
    EXPECT_TRUE(even->frames() == 2 && even->time_of(1) == Rational(2 * 1001, 24000) &&
                even->end() == Rational(8 * 1001, 24000));
    files.range = {1, 3, 1};
    EXPECT_EQ(fault_of<Failure>([&] { open_pictures_clip(files); }), folder / "f.1.png" + ": no frame is there");
}

TEST_F(Clips, AFrameOfAnotherSizeIsRefused) {
    for (const int i : {1, 2, 3}) write("f." + std::to_string(i) + ".png", numbered(i, i == 2 ? 9 : 8));
    const auto clip = open_pictures_clip({FramePattern(folder / "f.#.png"), {1, 3, 1}});
    EXPECT_EQ(fault_of<Failure>([&] { clip->frame(1); }),
              folder / "f.2.png" + ": 9 x 4 pixels, the clip's first frame has 8 x 4");
    EXPECT_EQ(number_in(clip->frame(2)), 3);
    CountingWatch stopped(0);
    EXPECT_THROW(clip->frame(0, stopped), qx::pictures::Stopped);
}

SharedPicture shared(int number) { return std::make_shared<const qx::pictures::Picture>(numbered(number)); }

TEST(FrameStores, KeepTheLastUsedWithinTheirBytes) {
    const auto bytes = static_cast<std::uint64_t>(shared(0)->world->rowbytes) * 4;
    FrameStore store(3 * bytes);
    int made = 0;
    const auto get = [&](int i) {
        return store.get(i, [&] {
            ++made;
            return shared(i);
        });
    };
    const std::pair<int, int> steps[] = {{0, 1}, {1, 2}, {2, 3}, {0, 3}, {3, 4},
                                         {0, 4}, {2, 4}, {1, 5}, {3, 6}, {1, 6}};
    for (const auto& [number, expected] : steps) {
        EXPECT_EQ(number_in(get(number)), number);
        EXPECT_EQ(made, expected) << number;
    }
    EXPECT_THROW(store.get(9, []() -> SharedPicture { throw Failure("x", "y"); }), Failure);
    EXPECT_EQ(number_in(get(9)), 9);
    FrameStore none(0);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(number_in(none.get(i, [&] { return shared(i); })), i);
}

TEST(FrameStores, ThreadsGetTheirFramesAndMakeNoneTwice) {
    FrameStore all(1 << 30), few(2000);
    std::atomic<int> made{0};
    in_threads(8, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        for (int round = 0; round < 300; ++round) {
            const int i = static_cast<int>(random() % 40);
            EXPECT_EQ(number_in(all.get(i,
                                        [&] {
                                            ++made;
                                            return shared(i);
                                        })),
                      i);
            EXPECT_EQ(number_in(few.get(i, [&] { return shared(i); })), i);
        }
    });
    EXPECT_EQ(made, 40);
}

}  // namespace
