// SPDX-License-Identifier: Apache-2.0
// qx retime: a clip at another speed or frame rate, as pictures or as a movie.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "platform/standalone/Cache.h"
#include "platform/standalone/Host.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/FrameFiles.h"
#include "tools/qx/work/Output.h"
#include "tools/qx/work/RetimeJob.h"

namespace qx::tool {
namespace {

const char* const kRetimeFooter =
    R"(Between the frames of INPUT, motion is followed and pictures are made; where a result's time meets
a frame, that frame is copied, bit for bit. Pictures of 8 bits are worked on at 16. INPUT is a
movie or numbered pictures, NAME.####.EXT or NAME.%04d.EXT with --in; OUT is one or the other too.
Vectors of motion stay in a cache on disk, see qx cache: the next run finds them. On a farm, --shard
gives each machine results in a row, which share vectors. docs/retime.md tells the rest.

Example:
  qx retime clip.mp4 --speed 0.25 -o slow.mp4
  qx retime clip.mov --fps 60000/1001 --quality best --lossless -o smooth.mkv
  qx retime in/f.####.png --in 1-100 --speed 0.5 -o out/f.####.png --frames 1-50 --resume)";

/// Refuses results that would be written over what is read.
void check_output(const RetimeJob& job) {
    if (pictures::is_standard_output(job.options.output)) return;
    std::set<std::string> inputs;
    for (int i = 0; i < job.clip.frames(); ++i) inputs.insert(job.clip.name_of(i));
    std::set<std::string> places;
    for (const auto& input : inputs) places.insert(place_of(input));
    const auto check = [&](const std::string& name) {
        if (places.count(place_of(name)) != 0) throw WrongUsage("-o " + name + ": is the input");
    };
    if (job.options.output_is_movie()) return check(job.options.output);
    const scene::FramePattern names(job.options.output);
    if (job.range.count() > 1 && !names.has_place())
        throw WrongUsage("-o " + job.options.output +
                         ": more than one frame needs a place for its number, such as ####");
    for (int i = 0; i < job.range.count(); ++i) check(names.name(job.range.frame(i)));
}

/// Refuses frames that cannot be used, as far as that shows without decoding, before there is a result.
void check_frames(const RetimeJob& job) {
    std::set<int> needed;
    for (int i = 0; i < job.range.count(); ++i) {
        const scene::ClipMoment moment = job.map.at(job.range.frame(i));
        needed.insert(moment.frame);
        if (moment.position > 0) needed.insert(std::min(moment.frame + 1, job.clip.frames() - 1));
    }
    for (const int frame : needed) {
        job.watch.must_go_on();
        job.clip.check(frame, job.watch);
    }
}

/// Before anything is read: the name of the results.
void check_names(const RetimeCommandOptions& options) {
    if (options.output_is_movie()) return;
    const auto names = value_of("-o", [&] { return scene::FramePattern(options.output); });
    check_frames_option(names.name(1));
}

nlohmann::ordered_json report(const RetimeJob& job, double seconds) {
    const int pairs = job.retimer.pairs();
    const int computed = static_cast<int>(standalone::CacheStatistics().misses);
    auto cuts = nlohmann::ordered_json::array();
    for (const int frame : job.retimer.cuts()) cuts.push_back(job.clip.number_of(frame));
    return {{"output", job.options.output},
            {"frames", job.range.count()},
            {"copied", job.counts.copied},
            {"made", job.counts.made},
            {"skipped", job.counts.skipped},
            {"failed", job.counts.failed},
            {"pairs", {{"computed", computed}, {"found", std::max(0, pairs - computed)}}},
            {"cuts", cuts},
            {"seconds", seconds}};
}

void tell(const RetimeJob& job, double seconds) {
    const nlohmann::ordered_json all = report(job, seconds);
    if (!all["cuts"].empty() && job.retime.cuts == scene::CutSearch::automatic) {
        std::string list;
        for (const auto& cut : all["cuts"]) list += (list.empty() ? "" : ", ") + cut.dump();
        say_note(pictures::about(job.options.input, "shots begin at " + list + " (--cuts tells it otherwise)"));
    }
    const auto number = [&](const char* key) { return all[key].dump(); };
    char took[32];
    std::snprintf(took, sizeof took, "%.2f s", seconds);
    say_detail(job.options.output, number("copied") + " copied, " + number("made") + " made, " + number("skipped") +
                                       " there; vectors of " + all["pairs"]["computed"].dump() +
                                       " pairs computed, of " + all["pairs"]["found"].dump() + " found; " + took);
    if (job.options.json) {
        print_json(all);
        finish_output();
    }
}

void tell_clip(const RetimeCommandOptions& options, const scene::Clip& clip) {
    for (const auto& note : clip.notes()) say_note(pictures::about(options.input, note));
    if (clip.frames() == 1) say_note(pictures::about(options.input, "has one frame, which is shown throughout"));
}

void run(const RetimeCommandOptions& options) {
    apply_common_options(options.common);
    options.check();
    options.cache.apply();
    check_names(options);
    const Library library;
    SignalWatch watch;
    const auto began = std::chrono::steady_clock::now();
    constexpr std::uint64_t share = 4;  // of the memory, for frames that were read
    const auto clip = options.open(options.memory_bytes() / share, standalone::PoolThreads(), watch);
    const scene::TimeMap map = options.time_map(*clip);
    const auto retime = options.retime_options(*clip);
    scene::Retimer retimer(*clip, retime);
    RetimeJob job{options, *clip, map, retime, options.range(map), retimer, watch};
    check_output(job);
    if (!options.work.keep_going) check_frames(job);
    tell_clip(options, *clip);
    standalone::ForgetCacheCounts();
    if (options.output_is_movie()) {
        retime_to_movie(job);
    } else {
        retime_to_pictures(job, scene::FramePattern(options.output));
    }
    if (const std::string note = standalone::CacheNote(); !note.empty()) say_note(note);
    tell(job, std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
    tell_failures(job.counts.failed, job.range.count());
}

}  // namespace

void add_retime(CLI::App& app) {
    auto* command = app.add_subcommand("retime", "Give a clip another speed or frame rate, with frames between frames");
    const auto options = std::make_shared<RetimeCommandOptions>();
    add_retime_options(*command, *options);
    set_usage(*command, "INPUT [options] -o OUT");
    command->footer(kRetimeFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
