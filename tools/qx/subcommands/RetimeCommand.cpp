// SPDX-License-Identifier: Apache-2.0
// qx retime: a clip at another speed or frame rate, as pictures or as a movie.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "pictures/Losses.h"
#include "pictures/Movie.h"
#include "platform/standalone/Cache.h"
#include "platform/standalone/Host.h"
#include "scene/InOrder.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/RetimeOptions.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/Flatten.h"
#include "tools/qx/work/FrameFiles.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

const char* const kFooter =
    R"(Between the frames of INPUT, motion is followed and pictures are made; where a result's time meets
a frame, that frame is copied, bit for bit. Pictures of 8 bits are worked on at 16. INPUT is a
movie or numbered pictures, NAME.####.EXT or NAME.%04d.EXT with --in; OUT is one or the other too.
Vectors of motion stay in a cache on disk, see qx cache: the next run finds them. A farm gives each
machine a part of --frames. docs/retime.md tells the rest.

Example:
  qx retime clip.mp4 --speed 0.25 -o slow.mp4
  qx retime clip.mov --fps 60000/1001 --quality best --lossless -o smooth.mkv
  qx retime in/f.####.png --in 1-100 --speed 0.5 -o out/f.####.png --frames 1-50 --resume)";

/// One pair is a task with all that lies in it, so that its frames are read and its vectors are there; but results wait
/// for their turn in memory, so not without end.
/// @return the ends of the tasks, as indices of the range
constexpr int kMostOfTask = 32;
std::vector<int> tasks_of(const scene::FrameRange& range, const scene::TimeMap& map) {
    std::vector<int> ends;
    int pair = -1, begin = 0;
    for (int i = 0; i < range.count(); ++i) {
        const int frame = map.at(range.frame(i)).frame;
        if (ends.empty() || frame != pair || i - begin == kMostOfTask) {
            ends.push_back(i);
            begin = i;
        }
        ends.back() = i + 1;
        pair = frame;
    }
    return ends;
}

/// What is told at the end.
struct Counts {
    int copied = 0, made = 0, skipped = 0;
};

struct Job {
    const RetimeCommandOptions& options;
    scene::Clip& clip;
    const scene::TimeMap& map;
    const scene::RetimeOptions& retime;
    const scene::FrameRange range;
    scene::Retimer& retimer;
    pictures::Watch& watch;
    Counts counts{};

    int depth() const { return retime.between.depth != 0 ? retime.between.depth : clip.facts().depth; }

    /// Pairs at work at once: while the engine has one of them, another one is read or written; 32 parts of each stage
    /// keep eight threads busy, and more pairs would only take memory.
    int at_once() const {
        const int threads = standalone::PoolThreads(), asked = options.pairs_number();
        if (asked != 0) return asked;
        const scene::ClipFacts& facts = clip.facts();
        const auto pixels = static_cast<std::uint64_t>(facts.width) * static_cast<std::uint64_t>(facts.height);
        const auto pixel = static_cast<std::uint64_t>(depth() == 32 ? 16 : 8);  // as it is worked on
        const auto detail = static_cast<double>(retime.between.flow.vectorDetail);
        const auto engine = static_cast<std::uint64_t>(14 + 116 * detail * detail);  // bytes a pixel, as measured
        const int waiting = options.output_is_movie() ? kMostOfTask : 1;
        const std::uint64_t task = pixels * (pixel * static_cast<std::uint64_t>(8 + waiting) + engine);
        const std::uint64_t room = std::max<std::uint64_t>(options.memory_bytes() / task, 1);
        return static_cast<int>(std::min<std::uint64_t>(room, std::min(threads, (threads + 7) / 8 + 1)));
    }
};

/// What a result tells of itself where the work is told in detail.
const char* words_of(bool is_made) { return is_made ? "made" : "copied"; }

std::vector<Note> notes_on(const std::string& file, const std::vector<std::string>& notes) {
    std::vector<Note> all;
    for (const auto& note : notes) all.push_back({note, pictures::about(file, note)});
    return all;
}

/// What a result loses beside the depth that it was made at.
std::vector<Note> losses(const Job& job, const std::string& name, const pictures::Picture& frame, int depth) {
    std::vector<std::string> notes = frame.notes;
    for (const auto& note : pictures::lost_at_depth(frame, depth)) notes.push_back(note);
    if (pictures::is_movie(name)) {
        for (const auto& note : pictures::lost_beside(frame)) notes.push_back(note);
    } else {
        for (const auto& note : lost_in_file(name, frame, depth, job.options.encoding)) notes.push_back(note);
    }
    return notes_on(job.options.input, notes);
}

/// One result, made.
struct Result {
    explicit Result(int of) : number(of) {}
    int number;
    bool is_made = false, is_there = false;
    std::vector<Note> notes;
    scene::SharedPicture picture;
    std::shared_ptr<pictures::OutputFile> file;
};

void count(Job& job, const Result& result, FrameProgress& progress) {
    ++(result.is_there ? job.counts.skipped : result.is_made ? job.counts.made : job.counts.copied);
    progress.done(result.number, result.is_there);
}

/// Makes all results, and has each one finished in its turn.
template <class Make, class Finish> void make_all(Job& job, const Make& make, const Finish& finish) {
    const auto tasks = tasks_of(job.range, job.map);
    FrameProgress progress(job.range.count());
    NotesOnce once;
    const auto work = [&](int index, pictures::Watch& watch) -> scene::InTurn {
        watch.must_go_on();
        const auto result = std::make_shared<const Result>(make(job.range.frame(index), watch));
        return [&, result] {
            job.watch.must_go_on();
            once.say(result->notes);
            finish(*result);
            count(job, *result, progress);
        };
    };
    scene::in_order(tasks, job.at_once(), job.watch, work);
}

int depth_of_movie(const Job& job) { return job.options.lossless && job.depth() != 8 ? 16 : 8; }

Result shown(Job& job, int number, const std::string& name, pictures::Watch& watch) {
    Result result(number);
    const auto made = job.retimer.at(job.map.at(number), watch);
    result.picture = made.picture;
    result.is_made = made.is_made;
    const int depth = pictures::is_movie(name) ? depth_of_movie(job) : int{made.picture->world->Depth()};
    result.notes = losses(job, name, *made.picture, depth);
    return result;
}

void make_pictures(Job& job, const scene::FramePattern& names) {
    const FrameSize size{job.clip.facts().width, job.clip.facts().height};
    const auto make = [&](int number, pictures::Watch& watch) {
        const std::string name = names.name(number);
        if (job.options.resume && is_whole(name, size, "", watch)) {
            Result result(number);
            result.is_there = true;
            return result;
        }
        Result result = shown(job, number, name, watch);
        if (auto flat = flattened(name, *result.picture, job.options.encoding, watch))
            result.picture = std::make_shared<pictures::Picture>(std::move(*flat));
        const int depth = result.picture->world->Depth();
        result.file = pictures::write_uncommitted(name, *result.picture, job.options.encoding.file_depth(depth),
                                                  job.options.encoding.write_options(name), watch);
        result.picture.reset();
        return result;
    };
    make_all(job, make, [&](const Result& result) {
        if (result.file) result.file->commit();
        say_detail(names.name(result.number), result.is_there ? "is there" : words_of(result.is_made));
    });
}

constexpr const char* kBlack = "what is transparent becomes black, since the movie has no transparency";

/// A rate that files can tell, the very one unless its numbers are too large.
pictures::Rate file_rate(const scene::Rational& rate) {
    constexpr std::int64_t most = 1'000'000;
    if (rate.number() <= most * 1000 && rate.per() <= most)
        return {static_cast<int>(rate.number()), static_cast<int>(rate.per())};
    return {static_cast<int>(rate.real() * 10'000 + 0.5), 10'000};
}

/// The file whose audio goes into the result; empty for none, with a note where that may surprise.
std::string audio_of(const Job& job) {
    if (!job.clip.facts().has_audio || job.options.drops_audio()) return "";
    const bool runs_as_it_was = job.options.map.empty() && job.options.frames.empty() &&
                                job.options.speed_number().value_or(scene::Rational(1)) == scene::Rational(1);
    if (runs_as_it_was) return job.options.input;
    say_note(pictures::about(job.options.input, "its audio is left out, since the result does not run as it does"));
    return "";
}

pictures::MovieSettings settings_of(const Job& job) {
    const scene::ClipFacts& facts = job.clip.facts();
    pictures::MovieSettings settings;
    settings.rate = file_rate(job.options.rate_number().value_or(facts.rate));
    if (facts.is_movie) {
        settings.colours = facts.colours;
        settings.orientation = facts.orientation;
        settings.aspect = file_rate(facts.aspect);
    }
    settings.encoding = job.options.encoding.movie_encoding();
    settings.lossless = job.options.lossless;
    settings.alpha = job.options.lossless && facts.has_alpha;
    settings.depth = depth_of_movie(job);
    settings.audio = audio_of(job);
    const scene::Rational& start = job.clip.time_of(0);
    settings.audio_start = {start.number(), start.per()};
    return settings;
}

void make_movie(Job& job) {
    const auto settings = settings_of(job);
    const std::string& output = job.options.output;
    pictures::MovieFile movie(output, job.clip.facts().width, job.clip.facts().height, settings);
    if (!movie.note().empty()) say_note(pictures::about(output, movie.note()));
    const auto make = [&](int number, pictures::Watch& watch) {
        Result result = shown(job, number, output, watch);
        if (!settings.alpha && pictures::any_transparency(*result.picture->world))
            result.notes.push_back({kBlack, pictures::about(job.options.input, kBlack)});
        if (settings.lossless) return result;
        auto flat = std::make_shared<pictures::Picture>();
        flat->world = opaque_frame(output, *result.picture->world, job.options.encoding.ground(), watch);
        result.picture = flat;
        return result;
    };
    make_all(job, make, [&](const Result& result) {
        movie.add(*result.picture);
        say_detail("frame " + std::to_string(result.number), words_of(result.is_made));
    });
    job.watch.must_go_on();
    movie.commit();
    say_detail(output, "written");
}

/// Refuses results that would be written over what is read.
void check_output(const Job& job) {
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
void check_frames(const Job& job) {
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

nlohmann::ordered_json report(const Job& job, double seconds) {
    const int pairs = job.retimer.pairs();
    const int computed = static_cast<int>(standalone::CacheStatistics().misses);
    auto cuts = nlohmann::ordered_json::array();
    for (const int frame : job.retimer.cuts()) cuts.push_back(job.clip.number_of(frame));
    return {{"output", job.options.output},
            {"frames", job.range.count()},
            {"copied", job.counts.copied},
            {"made", job.counts.made},
            {"skipped", job.counts.skipped},
            {"pairs", {{"computed", computed}, {"found", std::max(0, pairs - computed)}}},
            {"cuts", cuts},
            {"seconds", seconds}};
}

void tell(const Job& job, double seconds) {
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
    if (!options.output_is_movie() && clip.facts().orientation != 1)
        say_note(pictures::about(options.input, "is to be turned, which pictures do not tell"));
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
    Job job{options, *clip, map, retime, options.range(map), retimer, watch};
    check_output(job);
    check_frames(job);
    tell_clip(options, *clip);
    standalone::ForgetCacheCounts();
    if (options.output_is_movie()) {
        make_movie(job);
    } else {
        make_pictures(job, scene::FramePattern(options.output));
    }
    if (const std::string note = standalone::CacheNote(); !note.empty()) say_note(note);
    tell(job, std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
}

}  // namespace

void add_retime(CLI::App& app) {
    auto* command = app.add_subcommand("retime", "Give a clip another speed or frame rate, with frames between frames");
    const auto options = std::make_shared<RetimeCommandOptions>();
    add_retime_options(*command, *options);
    set_usage(*command, "INPUT [options] -o OUT");
    command->footer(kFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
