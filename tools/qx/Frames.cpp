// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Frames.h"

#include <algorithm>
#include <cstdlib>
#include <regex>

#include "tools/qx/Messages.h"
#include "tools/qx/Options.h"

namespace qx::tool {

FrameRange frame_range(const std::string& option, const std::string& text) {
    static const std::regex form("([0-9]+)(?:-([0-9]+)(?:x([0-9]+))?)?");
    std::smatch parts;
    if (!std::regex_match(text, parts, form)) throw WrongUsage(option + " " + text + ": not frames A-B or A-BxSTEP");
    FrameRange range;
    range.first = whole_number(option, parts[1], 0, kMostFrame);
    range.last = parts[2].matched ? whole_number(option, parts[2], 0, kMostFrame) : range.first;
    range.step = parts[3].matched ? whole_number(option, parts[3], 1, kMostFrame) : 1;
    if (range.last < range.first) throw WrongUsage(option + " " + text + ": the last frame is before the first");
    return range;
}

FramePattern::FramePattern(const std::string& option, const std::string& path) : before_(path) {
    static const std::regex form("#+|%(?:0([1-9]))?d");
    const auto folder = path.find_last_of('/') + 1;  // 0 where there is none
    const std::string name = path.substr(folder);
    const std::sregex_iterator found(name.begin(), name.end(), form), none;
    if (found == none) return;
    if (std::next(found) != none) throw WrongUsage(option + " " + path + ": two places for a frame's number");
    const std::smatch& place = *found;
    const bool signs = place.str()[0] == '#';
    digits_ = signs ? static_cast<int>(place.length()) : place[1].matched ? std::stoi(place[1]) : 1;
    before_ = path.substr(0, folder) + place.prefix().str();
    after_ = place.suffix().str();
}

FramePattern FramePattern::plain(const std::string& path) {
    FramePattern pattern;
    pattern.before_ = path;
    return pattern;
}

std::string FramePattern::name(int frame) const {
    if (!has_place()) return before_;
    const std::string number = std::to_string(std::abs(frame));
    const auto digits = static_cast<std::size_t>(digits_);
    const std::string zeros(digits - std::min(digits, number.size()), '0');
    return before_ + (frame < 0 ? "-" : "") + zeros + number + after_;
}

}  // namespace qx::tool
