// SPDX-License-Identifier: Apache-2.0
#include "scene/Frames.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>

#include "scene/Words.h"

namespace qx::scene {
namespace {

/// Takes what is in front of the sign away from the text; all of it where the sign is missing.
std::string cut(std::string& text, char sign, bool* found) {
    const auto end = text.find(sign);
    std::string front = text.substr(0, end);
    *found = end != std::string::npos;
    text = *found ? text.substr(end + 1) : "";
    return front;
}

/// Signs of a place for a number at `at`: #### or %04d. 0 when there is none.
std::size_t place_length(const std::string& name, std::size_t at, int* digits) {
    if (name[at] == '#') {
        const auto end = std::min(name.find_first_not_of('#', at), name.size());
        *digits = static_cast<int>(end - at);
        return end - at;
    }
    if (name.compare(at, 2, "%d") == 0) {
        *digits = 1;
        return 2;
    }
    const bool wide = name.compare(at, 2, "%0") == 0 && at + 3 < name.size() && name[at + 3] == 'd';
    if (!wide || name[at + 2] < '1' || name[at + 2] > '9') return 0;
    *digits = name[at + 2] - '0';
    return 4;
}

}  // namespace

FrameRange frame_range(const std::string& text) {
    const auto number = [&](const std::string& part, int least) {
        const bool digits = !part.empty() && part.find_first_not_of("0123456789") == std::string::npos;
        if (!digits) throw BadText(text, "not frames A-B or A-BxSTEP");
        try {
            return whole_number(part, least, kMostFrame);
        } catch (const BadText&) {
            throw BadText(text, part + " is not from " + std::to_string(least) + " to " + std::to_string(kMostFrame));
        }
    };
    std::string rest = text;
    bool has_last = false, has_step = false;
    FrameRange range;
    range.first = number(cut(rest, '-', &has_last), 0);
    range.last = has_last ? number(cut(rest, 'x', &has_step), 0) : range.first;
    range.step = has_step ? number(rest, 1) : 1;
    if (range.last < range.first) throw BadText(text, "the last frame is before the first");
    return range;
}

namespace {

/// Takes a number, perhaps below 0, from the front of a text. Throws BadText where there is none.
int take_number(std::string& rest, const std::string& text) {
    const std::size_t sign = rest.starts_with('-') ? 1 : 0;
    const std::size_t end = std::min(rest.find_first_not_of("0123456789", sign), rest.size());
    if (end == sign) throw BadText(text, "not frames A, A-B or A-BxSTEP with commas between");
    const std::string number = rest.substr(0, end);
    rest = rest.substr(end);
    try {
        return whole_number(number, -kMostFrame, kMostFrame);
    } catch (const BadText&) {
        throw BadText(text, number + " is not from " + words(-kMostFrame) + " to " + std::to_string(kMostFrame));
    }
}

/// One of a list: A, A-B or A-BxSTEP, rising or falling.
FrameRange list_part(std::string rest, const std::string& text) {
    FrameRange range;
    range.first = range.last = take_number(rest, text);
    if (rest.starts_with('-')) {
        rest = rest.substr(1);
        range.last = take_number(rest, text);
        if (rest.starts_with('x')) {
            rest = rest.substr(1);
            range.step = take_number(rest, text);
        }
    }
    if (!rest.empty()) throw BadText(text, "not frames A, A-B or A-BxSTEP with commas between");
    if (range.step < 1) throw BadText(text, "the step is not from 1 to " + std::to_string(kMostFrame));
    if (range.last < range.first) range.step = -range.step;
    return range;
}

}  // namespace

FrameList::FrameList(std::vector<FrameRange> ranges) : ranges_(std::move(ranges)) {
    int end = 0;
    for (const FrameRange& range : ranges_) ends_.push_back(end += range.count());
}

int FrameList::frame(int index) const {
    const auto range = static_cast<std::size_t>(std::upper_bound(ends_.begin(), ends_.end(), index) - ends_.begin());
    return ranges_[range].frame(range == 0 ? index : index - ends_[range - 1]);
}

FrameList FrameList::once() const {
    if (ranges_.size() == 1) return *this;
    std::set<int> known;
    std::vector<FrameRange> first;
    for (int i = 0; i < count(); ++i) {
        if (known.insert(frame(i)).second) first.push_back({frame(i), frame(i), 1});
    }
    return FrameList(first);
}

FrameList frame_list(const std::string& text) {
    std::vector<FrameRange> ranges;
    std::int64_t count = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        ranges.push_back(list_part(text.substr(begin, end - begin), text));
        count += ranges.back().count();
        if (count > kMostListed) throw BadText(text, "more than " + std::to_string(kMostListed) + " frames");
        begin = end + 1;
    }
    return FrameList(std::move(ranges));
}

FramePattern::FramePattern(const std::string& path) : before_(path) {
    for (std::size_t at = path.find_last_of('/') + 1; at < path.size(); ++at) {  // 0 where there is no folder
        int digits = 0;
        const std::size_t length = place_length(path, at, &digits);
        if (length == 0) continue;
        if (has_place()) throw BadText(path, "two places for a frame's number");
        digits_ = digits;
        sign_counts_ = path[at] == '%';
        before_ = path.substr(0, at);
        after_ = path.substr(at + length);
        at += length - 1;
    }
}

FramePattern FramePattern::plain(const std::string& path) {
    FramePattern pattern;
    pattern.before_ = path;
    return pattern;
}

std::optional<int> FramePattern::number_in(const std::string& path) const {
    const std::size_t around = before_.size() + after_.size();
    if (!has_place() || path.size() <= around || !path.starts_with(before_) || !path.ends_with(after_)) return {};
    const std::string signs = path.substr(before_.size(), path.size() - around);
    const bool is_below = signs[0] == '-';
    const std::string digits = signs.substr(is_below ? 1 : 0);
    if (digits.empty() || digits.size() > 7 || digits.find_first_not_of("0123456789") != std::string::npos)
        return {};  // kMostFrame
    const int number = is_below ? -std::stoi(digits) : std::stoi(digits);
    return name(number) == path ? std::optional(number) : std::nullopt;
}

std::string FramePattern::name(int frame) const {
    if (!has_place()) return before_;
    const std::string number = std::to_string(std::abs(frame));
    const auto digits = static_cast<std::size_t>(sign_counts_ && frame < 0 ? digits_ - 1 : digits_);
    std::string name = before_;
    if (frame < 0) name += '-';
    name.append(digits - std::min(digits, number.size()), '0').append(number).append(after_);
    return name;
}

}  // namespace qx::scene
