// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Index.h"

#include <algorithm>
#include <cstdlib>

namespace qx::movie {
namespace {

constexpr std::int64_t kNone = AV_NOPTS_VALUE;
constexpr std::int64_t kFarthest = std::int64_t{1} << 53;  // stamps beyond are no times, and sums of others fit

bool is_time(std::int64_t stamp) { return stamp != kNone && stamp > -kFarthest && stamp < kFarthest; }

/// What the pass collects.
struct Pass {
    Index index;
    std::size_t orders = 0;
    std::int64_t last_decoded = kNone, last_shown = kNone, duration = 0;
    bool falls = false, lacks = false;
    double seconds = 0;  ///< to the end of the last packet of any stream

    void take(const AVPacket& packet);
    void take_time(const AVPacket& packet, const AVStream& stream);
};

void Pass::take(const AVPacket& packet) {
    const std::size_t order = orders++;
    if (is_time(packet.dts)) {
        falls = falls || (last_decoded != kNone && packet.dts < last_decoded);
        last_decoded = packet.dts;
    }
    if ((packet.flags & AV_PKT_FLAG_KEY) != 0) index.keys.push_back({packet.pts, packet.dts, order});
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) return;  // decoded, and not shown
    lacks = lacks || !is_time(packet.pts);
    index.frames.push_back({packet.pts, order});
    if (static_cast<std::int64_t>(index.frames.size()) > kMostFrames) {
        throw Failure("has more than " + std::to_string(kMostFrames) + " frames");
    }
    if (last_shown == kNone || packet.pts >= last_shown) {
        last_shown = packet.pts;
        duration = packet.duration;
    }
}

void Pass::take_time(const AVPacket& packet, const AVStream& stream) {
    const std::int64_t stamp = is_time(packet.pts) ? packet.pts : packet.dts;
    if (!is_time(stamp) || packet.duration < 0 || packet.duration > kFarthest) return;
    seconds = std::max(seconds, static_cast<double>(stamp + packet.duration) * av_q2d(stream.time_base));
}

/// Notes on a file that holds less than it tells of. What a container tells of frames and times is not exact, and
/// frames that were dropped count for some: nothing is cut off where all bytes are there.
void note_a_cut(const Demuxer& movie, const Pass& pass, std::vector<std::string>& notes) {
    const std::int64_t told = movie.video().nb_frames;
    const auto found = static_cast<std::int64_t>(pass.orders);
    const AVFormatContext& format = movie.format();
    constexpr double slack = 0.03;  // containers round, and do not tell of all packets how long they are
    const double length = format.duration > 0 ? static_cast<double>(format.duration) / AV_TIME_BASE : 0;
    const double start = is_time(format.start_time) ? static_cast<double>(format.start_time) / AV_TIME_BASE : 0;
    const double frame = found > 0 ? pass.seconds / static_cast<double>(found) : 0;
    const bool may_be_cut = movie.is_cut() || !movie.missing();
    if (may_be_cut && told > found) {
        notes.push_back("is cut short: it tells of " + std::to_string(told) + " frames and holds " +
                        std::to_string(found));
    } else if (may_be_cut && length + start - pass.seconds > slack + frame) {
        notes.push_back("is cut short: it tells of a longer time than its " + std::to_string(found) + " frames last");
    } else if (movie.is_cut()) {
        notes.push_back("is cut short: " + std::to_string(*movie.missing()) + " bytes are missing at its end, and " +
                        std::to_string(found) + " frames are there");
    } else if (movie.is_damaged()) {
        notes.push_back("is damaged or cut short: it ends after " + std::to_string(found) + " frames");
    }
}

/// The number of each frame by a rate, from that of the first on, which its stamp tells but for the units of stamps;
/// none where frames come at other times. Coarse units make everything so: there the stamps must be exact.
std::vector<std::int64_t> places_by(const AVRational& rate, const std::vector<Index::Shown>& frames,
                                    const AVRational& unit) {
    if (rate.num < 1 || rate.den < 1) return {};
    // A frame lasts number / per units.
    const auto number = static_cast<__int128>(rate.den) * unit.den, per = static_cast<__int128>(rate.num) * unit.num;
    const __int128 slack = number >= 4 * per ? per : 1;
    std::vector<std::int64_t> places;
    places.reserve(frames.size());
    for (const Index::Shown& frame : frames) {
        const __int128 units = (frame.stamp - frames[0].stamp) * per, place = (units + number / 2) / number;
        const __int128 off = units - place * number;
        if (off >= slack || -off >= slack || place > kFarthest || (!places.empty() && place <= places.back()))
            return {};
        places.push_back(static_cast<std::int64_t>(place));
    }
    return places;
}

Ratio lowest(__int128 number, __int128 per) {
    __int128 a = number, b = per;
    while (b != 0) std::swap(a %= b, b);
    number /= a;
    per /= a;
    while (number > kFarthest || per > kFarthest) {  // of no movie
        number = std::max<__int128>(number / 2, 1);
        per = std::max<__int128>(per / 2, 1);
    }
    return {static_cast<std::int64_t>(number), static_cast<std::int64_t>(per)};
}

}  // namespace

const Index::Key* Index::key_for(const Shown& frame) const {
    const auto behind = std::upper_bound(keys.begin(), keys.end(), frame.order,
                                         [](std::size_t order, const Key& key) { return order < key.order; });
    for (auto key = behind; key != keys.begin();) {
        --key;
        if (key->stamp <= frame.stamp) return &*key;  // others lead to frames that need what is before them
    }
    return nullptr;
}

const Index::Shown* Index::frame_at(std::int64_t stamp) const {
    const auto found = std::lower_bound(frames.begin(), frames.end(), stamp,
                                        [](const Shown& frame, std::int64_t s) { return frame.stamp < s; });
    return found != frames.end() && found->stamp == stamp ? &*found : nullptr;
}

void Index::begin_at(std::int64_t stamp) {
    const auto first = std::find_if(frames.begin(), frames.end(), [&](const Shown& f) { return f.stamp >= stamp; });
    if (first == frames.begin()) return;
    notes.push_back("its first " + std::to_string(first - frames.begin()) +
                    " frames need others that are missing, and are left out");
    frames.erase(frames.begin(), first);
}

void Index::find_rate(const AVStream& video, std::int64_t last_duration) {
    const AVRational unit = video.time_base;
    for (const AVRational told : {video.avg_frame_rate, video.r_frame_rate}) {
        auto by_rate = places_by(told, frames, unit);
        regular = !by_rate.empty() && by_rate.back() + 1 == static_cast<std::int64_t>(frames.size());
        if (!regular && (!is_cut || by_rate.empty())) continue;
        rate = {told.num, told.den};
        if (!regular) places = std::move(by_rate);
        break;
    }
    const std::int64_t span = frames.back().stamp - frames.front().stamp;
    const auto gaps = static_cast<std::int64_t>(frames.size()) - 1;
    if (last_duration < 1 || last_duration > kFarthest) {
        const auto usual = static_cast<double>(rate.per) / static_cast<double>(rate.number) / av_q2d(unit);
        last_duration = gaps > 0 ? span / gaps : std::clamp<std::int64_t>(static_cast<std::int64_t>(usual), 1, 1 << 30);
        last_duration = std::max<std::int64_t>(last_duration, 1);
    }
    end = frames.back().stamp + last_duration;
    if (!regular && places.empty())
        rate =
            lowest(static_cast<__int128>(gaps + 1) * unit.den, static_cast<__int128>(span + last_duration) * unit.num);
}

std::vector<std::int64_t> Index::stamps(const AVStream& video, Ratio* unit) const {
    const AVRational& base = video.time_base;
    *unit = numbered ? Ratio{rate.per, rate.number} : Ratio{base.num, base.den};
    std::vector<std::int64_t> all;
    all.reserve(frames.size() + 1);
    for (const Shown& frame : frames) all.push_back(frame.stamp);
    all.push_back(end);
    if (places.empty()) return all;
    // The first stamp and frames of the rate in one unit, unless that takes larger numbers than those of any movie.
    const std::int64_t first = frames.front().stamp, parts = rate.number * base.num, frame_parts = rate.per * base.den;
    const auto farthest =
        static_cast<__int128>(std::abs(first)) * parts + static_cast<__int128>(places.back() + 1) * frame_parts;
    if (farthest > kFarthest) return all;
    *unit = {1, rate.number * base.den};
    for (std::size_t i = 0; i < places.size(); ++i) all[i] = first * parts + places[i] * frame_parts;
    all.back() = all[places.size() - 1] + frame_parts;
    return all;
}

void Index::number(std::int64_t count, const AVStream& video) {
    for (const AVRational told : {video.avg_frame_rate, video.r_frame_rate}) {
        if (told.num < 1 || told.den < 1) continue;
        rate = {told.num, told.den};
        break;
    }
    frames.clear();
    keys.clear();
    for (std::int64_t i = 0; i < count; ++i) frames.push_back({i, static_cast<std::size_t>(i)});
    end = count;
    numbered = regular = true;
    if (is_cut) return;  // and with it went the list of times, which is no news
    notes.emplace_back("its frames have no usable time stamps; they are numbered in their order, at the rate it tells");
}

Index make_index(Demuxer& movie, std::int64_t* last_duration) {
    Pass pass;
    const Packet packet(made(av_packet_alloc()));
    for (; movie.next(packet.get()); av_packet_unref(packet.get())) {
        if (packet->stream_index == movie.video().index && packet->size > 0) pass.take(*packet);
        pass.take_time(*packet, *movie.format().streams[packet->stream_index]);
    }
    Index& index = pass.index;
    if (index.frames.empty()) movie.refuse("has no frames");
    note_a_cut(movie, pass, index.notes);
    index.is_cut = movie.is_cut();
    const auto by_stamp = [](const Index::Shown& a, const Index::Shown& b) {
        return a.stamp != b.stamp ? a.stamp < b.stamp : a.order < b.order;
    };
    const auto same_stamp = [](const Index::Shown& a, const Index::Shown& b) { return a.stamp == b.stamp; };
    std::sort(index.frames.begin(), index.frames.end(), by_stamp);
    const bool twice = std::adjacent_find(index.frames.begin(), index.frames.end(), same_stamp) != index.frames.end();
    index.numbered = pass.falls || pass.lacks || twice;
    *last_duration = pass.duration;
    return std::move(index);
}

}  // namespace qx::movie
