// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/LongWorkOptions.h"

#include <CLI/CLI.hpp>
#include <vector>

#include "tools/qx/options/Options.h"

namespace qx::tool {

FrameProgress::Style LongWorkOptions::style() const {
    constexpr const char* styles[] = {"line", "json", "none"};
    return progress.empty() ? FrameProgress::Style::line
                            : static_cast<FrameProgress::Style>(choice("--progress", progress, styles));
}

scene::FrameList LongWorkOptions::part_of(const scene::FrameList& frames) const {
    if (shard.empty()) return frames;
    const auto slash = shard.find('/');
    if (slash == std::string::npos) throw WrongUsage("--shard " + shard + ": not a part I/N, such as 2/8");
    const int parts = whole_number("--shard", shard.substr(slash + 1), 1, scene::kMostFrame);
    const int part = whole_number("--shard", shard.substr(0, slash), 1, parts);
    if (part > frames.count()) {
        throw WrongUsage("--shard " + shard + ": there are " + std::to_string(frames.count()) + " frames only");
    }
    std::vector<scene::FrameRange> own;
    for (int i = part - 1; i < frames.count(); i += parts) own.push_back({frames.frame(i), frames.frame(i), 1});
    return scene::FrameList(std::move(own));
}

void add_long_work_options(CLI::App& command, LongWorkOptions& options) {
    const auto flag = [&](const char* name, bool& to, const char* help) {
        command.add_flag(name, to, help)->disable_flag_override();
    };
    flag("--resume", options.resume,
         "leave frames alone that are there, whole, and of this very job: made by the same scene, depth, options and "
         "version");
    flag("--keep-going", options.keep_going,
         "make the other frames when one fails, and tell at the end which did; exit status 5");
    command
        .add_option("--shard", options.shard,
                    "one part of N equal ones: every Nth frame from the Ith on, for a machine of a farm")
        ->type_name("I/N");
    command
        .add_option("--progress", options.progress,
                    "what is told of frames on standard error: a line on a terminal, json a line each, or none "
                    "(default: line)")
        ->type_name("line|json|none");
    flag("--stats", options.stats, "tell at the end where the time went, and the most memory that was used");
}

}  // namespace qx::tool
