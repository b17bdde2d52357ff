// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/LongWorkOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <vector>

#include "tools/qx/options/Options.h"

namespace qx::tool {

FrameProgress::Style LongWorkOptions::style() const {
    constexpr const char* styles[] = {"line", "json", "none"};
    return progress.empty() ? FrameProgress::Style::line
                            : static_cast<FrameProgress::Style>(choice("--progress", progress, styles));
}

LongWorkOptions::Share LongWorkOptions::share_of(int frames) const {
    const auto slash = shard.find('/');
    if (slash == std::string::npos) throw WrongUsage("--shard " + shard + ": not a part I/N, such as 2/8");
    const auto number = [&](const std::string& text, int most) {
        return value_of("--shard " + shard + ":", [&] { return scene::whole_number(text, 1, most); });
    };
    const int parts = number(shard.substr(slash + 1), scene::kMostFrame);
    const int part = number(shard.substr(0, slash), parts);
    if (part > frames) {  // a farm may have more machines than there are frames
        say_note("--shard " + shard + ": has nothing to do, there are " + std::to_string(frames) + " frames");
        throw EndedWith{kDone};
    }
    return {part, parts};
}

scene::FrameList LongWorkOptions::part_of(const scene::FrameList& frames) const {
    if (shard.empty()) return frames;
    const Share share = share_of(frames.count());
    std::vector<scene::FrameRange> own;
    for (int i = share.part - 1; i < frames.count(); i += share.parts)
        own.push_back({frames.frame(i), frames.frame(i), 1});
    return scene::FrameList(std::move(own));
}

scene::FrameRange LongWorkOptions::row_of(const scene::FrameRange& frames) const {
    if (shard.empty()) return frames;
    const Share share = share_of(frames.count());
    const int parts = std::min(share.parts, frames.count());  // none is empty
    const auto begin = [&](int part) { return static_cast<int>(std::int64_t{frames.count()} * part / parts); };
    return {frames.frame(begin(share.part - 1)), frames.frame(begin(share.part) - 1), frames.step};
}

void LongWorkOptions::check_for_movie() const {
    const char* const only_pictures = resume          ? "--resume"
                                      : keep_going    ? "--keep-going"
                                      : shard.empty() ? nullptr
                                                      : "--shard";
    if (only_pictures != nullptr)
        throw WrongUsage(std::string(only_pictures) + " is for pictures, a movie is made as a whole");
}

void add_long_work_options(CLI::App& command, LongWorkOptions& options) {
    const auto flag = [&](const char* name, bool& to, const char* help) {
        command.add_flag(name, to, help)->disable_flag_override();
    };
    flag("--resume", options.resume,
         "leave frames alone that are there, whole, and of this very job (of the same names, options and version), "
         "and no older than the pictures that they show");
    flag("--keep-going", options.keep_going,
         "make the other frames when one fails, and tell at the end which did; exit status 5");
    command.add_option("--shard", options.shard, "the Ith of N equal parts, for a machine of a farm")->type_name("I/N");
    command
        .add_option("--progress", options.progress,
                    "what is told of frames on standard error: a line on a terminal, json a line each, or none "
                    "(default: line)")
        ->type_name("line|json|none");
    flag("--stats", options.stats, "tell at the end where the time went, and the most memory that was used");
}

}  // namespace qx::tool
