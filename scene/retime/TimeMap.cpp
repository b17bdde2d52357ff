// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/TimeMap.h"

#include <algorithm>
#include <cmath>

#include "scene/SceneValues.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

// Keys are doubles: what they miss a frame by through rounding is no motion.
constexpr double kMeets = 1e-6;

Rational between(const std::string& text, const Rational& least, const Rational& most, const char* such_as) {
    try {
        const Rational number = rational_of_text(text);
        if (number >= least && number <= most) return number;
    } catch (const BadText&) {
    }
    throw BadText(text,
                  "not a number from " + words(least.real()) + " to " + words(most.real()) + ", such as " + such_as);
}

Rational upwards(const Rational& number) { return -(Rational(0) - number).floor(); }

}  // namespace

Rational speed_of_text(const std::string& text) { return between(text, kLeastSpeed, kMostSpeed, "0.25 or 1/3"); }
Rational rate_of_text(const std::string& text) { return between(text, kLeastRate, kMostRate, "60 or 24000/1001"); }

ClipMoment moment_of_time(const Clip& clip, const Rational& time) {
    const int frame = clip.frame_at(time);
    const Rational& from = clip.time_of(frame);
    if (frame + 1 >= clip.frames() || time <= from) return {frame, 0};
    return {frame, ((time - from) / (clip.time_of(frame + 1) - from)).real()};
}

ClipMoment moment_of_number(const Clip& clip, double number) {
    int below = 0, above = clip.frames();  // the first one and one behind the last one that may be it
    while (above - below > 1) {
        const int middle = below + (above - below) / 2;
        (clip.number_of(middle) <= number + kMeets ? below : above) = middle;
    }
    const double from = clip.number_of(below);
    if (below + 1 >= clip.frames() || number <= from + kMeets) return {below, 0};
    const double position = (number - from) / (clip.number_of(below + 1) - from);
    return {below, position};
}

TimeMap::TimeMap(const Clip& clip, const Even& even)
    : clip_(clip), step_(even.speed / even.rate.value_or(clip.facts().rate)) {
    const Rational count = upwards((clip.end() - clip.time_of(0)) / step_);
    const int room = kMostFrame - even.start + 1;
    if (count > Rational(room)) throw BadText(words(count) + " frames", "more than numbers have room for");
    const int results = std::max(1, static_cast<int>(count.number()));
    numbers_ = {even.start, even.start + results - 1, 1};
}

TimeMap::TimeMap(const Clip& clip, const Track<1>& map) : clip_(clip), map_(map) {
    numbers_ = {static_cast<int>(std::ceil(map.first())), static_cast<int>(std::floor(map.last())), 1};
    if (numbers_.last < numbers_.first)
        throw BadText(words(map.first()) + " to " + words(map.last()), "no whole number lies between the keys");
}

ClipMoment TimeMap::at(int number) const {
    if (map_) return moment_of_number(clip_, map_->at(number)[0]);
    return moment_of_time(clip_, clip_.time_of(0) + step_ * Rational(number - numbers_.first));
}

Track<1> read_time_track(const SceneNode& node) {
    return Track<1>(
        track_keys<1>(node, [](const SceneNode& value) { return track_value<1>(value, 1, -kMostFrame, kMostFrame); }),
        -kMostFrame, kMostFrame);
}

Track<1> read_time_track_file(const std::string& path) {
    const nlohmann::json json = parse_json(text_of_file(path), path);
    return read_time_track(SceneNode(json, path));
}

}  // namespace qx::scene
