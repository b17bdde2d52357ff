// SPDX-License-Identifier: Apache-2.0
// Which moment of a clip each result shows, in numbers that were worked out by hand.
#include <cmath>

#include "scene/Faults.h"
#include "scene/Words.h"
#include "scene/retime/TimeMap.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::scene;

/// Times alone.
class Times : public Clip {
public:
    Times(std::vector<Rational> times, Rational rate, std::vector<int> numbers = {}) : numbers_(std::move(numbers)) {
        times_ = std::move(times);
        facts_.rate = rate;
    }
    int number_of(int index) const override {
        return numbers_.empty() ? index : numbers_[static_cast<std::size_t>(index)];
    }
    std::string name_of(int) const override { return "clip"; }
    SharedPicture frame(int, qx::pictures::Watch&) override { return nullptr; }

private:
    const std::vector<int> numbers_;
};

/// Frames at an even rate.
Times even_clip(int frames, const Rational& rate) {
    std::vector<Rational> times;
    for (int i = 0; i <= frames; ++i) times.push_back(Rational(i) / rate);
    return {times, rate};
}

using Shown = std::pair<int, double>;
std::vector<Shown> shown(const TimeMap& map) {
    std::vector<Shown> all;
    for (int i = 0; i < map.numbers().count(); ++i) {
        const ClipMoment moment = map.at(map.numbers().frame(i));
        all.emplace_back(moment.frame, moment.position);
    }
    return all;
}

TEST(RetimeTime, SlowerFasterAndOtherRates) {
    const Times clip = even_clip(3, 24);
    const auto with = [&](const Rational& speed, std::optional<Rational> rate) {
        return shown(TimeMap(clip, {speed, rate, 1}));
    };
    // A quarter of the speed: four results a frame; the last frame lasts as long as it did, and holds.
    EXPECT_EQ(
        with({1, 4}, {}),
        (std::vector<Shown>{
            {0, 0}, {0, .25}, {0, .5}, {0, .75}, {1, 0}, {1, .25}, {1, .5}, {1, .75}, {2, 0}, {2, 0}, {2, 0}, {2, 0}}));
    EXPECT_EQ(with(2, {}), (std::vector<Shown>{{0, 0}, {2, 0}}));
    EXPECT_EQ(with(1, {}), (std::vector<Shown>{{0, 0}, {1, 0}, {2, 0}}));
    // 24 to 60: each frame is 2.5 results long, and 3 frames are 7.5, the eighth of which begins before the end.
    EXPECT_EQ(with(1, Rational(60)),
              (std::vector<Shown>{{0, 0}, {0, .4}, {0, .8}, {1, .2}, {1, .6}, {2, 0}, {2, 0}, {2, 0}}));
    // Both: half the speed at 12 frames a second is every frame once.
    EXPECT_EQ(with({1, 2}, Rational(12)), with(1, {}));
    // Slower than the clip is long: its first frame.
    EXPECT_EQ(with(1000, {}), (std::vector<Shown>{{0, 0}}));
}

TEST(RetimeTime, IsExactOverLongClips) {
    const Rational ntsc(24000, 1001);
    const Times clip = even_clip(200000, ntsc);
    const TimeMap map(clip, {1, Rational(60000, 1001), 1});
    EXPECT_EQ(map.numbers().count(), 500000);
    for (const int k : {0, 1, 2, 3, 4, 250000, 499990, 499994}) {  // two frames are five results
        const ClipMoment moment = map.at(k + 1);
        EXPECT_EQ(moment.frame, k * 2 / 5);
        EXPECT_EQ(moment.position, k * 2 % 5 / 5.0) << k;
    }
}

TEST(RetimeTime, TakesPlacesBetweenUnevenStamps) {
    // Frames of 1, 3 and 2 tenths of a second.
    const Times clip({0, Rational(1, 10), Rational(4, 10), Rational(6, 10)}, 5);
    EXPECT_EQ(shown(TimeMap(clip, {1, Rational(20), 1})), (std::vector<Shown>{{0, 0},
                                                                              {0, .5},
                                                                              {1, 0},
                                                                              {1, 1 / 6.0},
                                                                              {1, 2 / 6.0},
                                                                              {1, .5},
                                                                              {1, 4 / 6.0},
                                                                              {1, 5 / 6.0},
                                                                              {2, 0},
                                                                              {2, 0},
                                                                              {2, 0},
                                                                              {2, 0}}));
    EXPECT_EQ(shown(TimeMap(clip, {1, {}, 1})), (std::vector<Shown>{{0, 0}, {1, 1 / 3.0}, {2, 0}}));
}

TEST(RetimeTime, TimesRiseAtEverySpeedAndRate) {
    const Times clip = even_clip(50, Rational(30000, 1001));
    for (const char* speed : {"0.001", "0.07", "1/3", "0.999", "1", "7.3"}) {
        for (const char* rate : {"12", "23.976", "24000/1001", "50", "120"}) {
            const TimeMap map(clip, {speed_of_text(speed), rate_of_text(rate), 1});
            double before = -1;
            for (int i = 0; i < map.numbers().count(); ++i) {
                const ClipMoment moment = map.at(i + 1);
                const double time = moment.frame + moment.position;
                ASSERT_GE(moment.position, 0);
                ASSERT_LT(moment.position, 1);
                ASSERT_TRUE(time > before || (moment.frame == 49 && time == before))
                    << speed << " " << rate << " " << i;
                before = time;
            }
        }
    }
}

TEST(RetimeTime, KeysTellSourceNumbersAndNameResults) {
    const Times clip = even_clip(100, 25);
    const auto linear = [](std::vector<std::pair<double, double>> keys) {
        std::vector<Track<1>::Key> all;
        for (const auto& [frame, value] : keys) all.push_back({frame, {value}, Between::linear});
        return Track<1>(all);
    };
    // Stands still, runs, and runs backwards.
    const TimeMap map(clip, linear({{10, 4}, {12, 4}, {16, 6}, {17, 5.25}}));
    EXPECT_EQ(map.numbers().first, 10);
    EXPECT_EQ(shown(map), (std::vector<Shown>{{4, 0}, {4, 0}, {4, 0}, {4, .5}, {5, 0}, {5, .5}, {6, 0}, {5, .25}}));
    // What a key misses a frame by through rounding is no motion: 28/100 * 25 is 7 and a bit.
    EXPECT_EQ(TimeMap(clip, linear({{0, 0}, {100, 25}})).at(28).position, 0);
    // Beyond the ends the outermost frames hold.
    EXPECT_EQ(shown(TimeMap(clip, linear({{1, -5}, {2, 99}, {3, 200}}))),
              (std::vector<Shown>{{0, 0}, {99, 0}, {99, 0}}));
    EXPECT_THROW(TimeMap(clip, linear({{1.25, 0}, {1.75, 3}})), BadText);
    // Pictures count by the numbers in their names; a missing one makes the interval longer.
    const Times numbered({0, 1, 3, 4}, 1, {101, 102, 104});
    EXPECT_EQ(shown(TimeMap(numbered, linear({{1, 101.5}, {2, 103}, {3, 104}}))),
              (std::vector<Shown>{{0, .5}, {1, .5}, {2, 0}}));
}

TEST(RetimeTime, NumbersBeginWhereTold) {
    const Times clip = even_clip(2, 10);
    const TimeMap map(clip, {{1, 2}, {}, 1001});
    EXPECT_EQ(map.numbers().first, 1001);
    EXPECT_EQ(map.numbers().last, 1004);
    EXPECT_EQ(map.at(1002).position, 0.5);
    EXPECT_THROW(TimeMap(clip, {{1, 2}, {}, 9999997}), BadText);
    EXPECT_NO_THROW(TimeMap(clip, {{1, 2}, {}, 9999996}));
    EXPECT_THROW(TimeMap(even_clip(20000, 10), {{1, 1000}, {}, 1}), BadText);
}

TEST(RetimeTime, RefusesSpeedsAndRatesThatAreNone) {
    for (const char* text : {"0", "-1", "nan", "inf", "1e9", "1000000000", "0.0001", "1000.5", "", "1/0", "fast"}) {
        EXPECT_THROW(speed_of_text(text), BadText) << text;
        EXPECT_THROW(rate_of_text(text), BadText) << text;
    }
    EXPECT_EQ(words(rate_of_text("24000/1001")), "24000/1001");
    EXPECT_EQ(words(speed_of_text("0.25")), "1/4");
}

TEST(RetimeTime, RefusesMapsThatAreNone) {
    const std::string file = "map.json";
    const auto read = [&](const char* text) {
        const auto json = parse_json(text, file);
        return read_time_track(SceneNode(json, file));
    };
    for (const char* text : {R"({})", R"({"keys": []})", R"({"keys": [{"frame": 1}]})", R"([1])",
                             R"({"keys": [{"frame": 1, "value": 1}], "speed": 2})",
                             R"({"keys": [{"frame": 2, "value": 1}, {"frame": 2, "value": 3}]})",
                             R"({"keys": [{"frame": 2, "value": 1}, {"frame": 1, "value": 3}]})",
                             R"({"keys": [{"frame": 2, "value": "x"}]})",
                             R"({"keys": [{"frame": 1, "value": 1}], "interpolation": "cubic"})"}) {
        EXPECT_THROW(read(text), SceneFault) << text;
    }
    const auto smooth =
        read(R"({"keys": [{"frame": 0, "value": 0}, {"frame": 4, "value": 8}], "interpolation": "smooth"})");
    EXPECT_DOUBLE_EQ(smooth.at(1)[0], 8 * (3 / 16.0 - 2 / 64.0));  // 3u^2 - 2u^3 of the way
}

}  // namespace
