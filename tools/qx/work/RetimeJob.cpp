// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/RetimeJob.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

#include "pictures/Losses.h"
#include "pictures/Movie.h"
#include "platform/standalone/Host.h"
#include "scene/InOrder.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/Fingerprint.h"
#include "tools/qx/work/Flatten.h"
#include "tools/qx/work/FrameFiles.h"

namespace qx::tool {
namespace {

constexpr int kMostOfTask = 32;

/// One pair is a task with all that lies in it, so that its frames are read and its vectors are there; but results wait
/// for their turn in memory, so not without end.
/// @return the ends of the tasks, as indices of the range
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

/// By which the pictures of a job are known again: who made them, from what and how.
std::string mark_of(const RetimeCommandOptions& options) {
    return fingerprint(QX_VERSION + ('\n' + options.words()) + '\n' + std::to_string(standalone::BandCount()));
}

/// What a job's mark has behind it for one picture. At the same moment that is the same, whatever its number.
std::string moment_of(const RetimeJob& job, int number) {
    const auto [frame, position] = job.map.at(number);
    char moment[64];
    std::snprintf(moment, sizeof moment, "-%d%+a", job.clip.number_of(frame), position);
    return moment;
}

/// What a result tells of itself where the work is told in detail.
const char* words_of(bool is_made) { return is_made ? "made" : "copied"; }

std::vector<Note> notes_on(const std::string& file, const std::vector<std::string>& notes) {
    std::vector<Note> all;
    all.reserve(notes.size());
    for (const auto& note : notes) all.push_back({note, pictures::about(file, note)});
    return all;
}

/// What a result loses beside the depth that it was made at.
std::vector<Note> losses(const RetimeJob& job, const std::string& name, const pictures::Picture& frame, int depth) {
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
    std::string fault;  ///< of one that could not be made, where others are
    std::vector<Note> notes;
    scene::SharedPicture picture;
    std::shared_ptr<pictures::OutputFile> file;
};

void count(RetimeJob& job, const Result& result, FrameProgress& progress) {
    if (!result.fault.empty()) return progress.failed(result.number, result.fault);
    ++(result.is_there ? job.counts.skipped : result.is_made ? job.counts.made : job.counts.copied);
    progress.done(result.number, result.is_there);
}

/// A result, or with --keep-going why there is none.
Result made_or_fault(const RetimeJob& job, int number, const std::function<Result()>& make) {
    if (!job.options.work.keep_going) return make();
    Result result(number);
    std::string fault = fault_of([&] { result = make(); });
    result.fault = std::move(fault);
    return result;
}

/// Makes all results, has each one finished in its turn, and then all of them.
template <class Make, class Finish, class FinishAll>
void make_all(RetimeJob& job, const Make& make, const Finish& finish, const FinishAll& finish_all) {
    const auto tasks = tasks_of(job.range, job.map);
    FrameProgress progress(job.range.count(), job.options.work.style());
    NotesOnce once;
    const auto work = [&](int index, pictures::Watch& watch) -> scene::InTurn {
        watch.must_go_on();
        const int number = job.range.frame(index);
        const auto result =
            std::make_shared<const Result>(made_or_fault(job, number, [&] { return make(number, watch); }));
        return [&, result] {
            job.watch.must_go_on();
            once.say(result->notes);
            if (result->fault.empty()) finish(*result);
            count(job, *result, progress);
        };
    };
    scene::in_order(tasks, job.at_once(), job.watch, work);
    finish_all();
    if (job.options.work.stats) tell_stats(progress, job.stages);
    job.counts.failed = progress.failures();
}

/// @param depth  of the file it is for; 0 for its own
Result shown(RetimeJob& job, int number, const std::string& name, int depth, pictures::Watch& watch) {
    Result result(number);
    const auto made = Stages::timed(job.stages.making, [&] { return job.retimer.at(job.map.at(number), watch); });
    result.picture = made.picture;
    result.is_made = made.is_made;
    result.notes = losses(job, name, *made.picture, depth != 0 ? depth : int{made.picture->world->Depth()});
    return result;
}

constexpr const char* kBecomesBlack = "what is transparent becomes black, since the movie has no transparency";

/// A rate that files can tell, the very one unless its numbers are too large.
pictures::Rate file_rate(const scene::Rational& rate) {
    constexpr std::int64_t most = 1'000'000;
    if (rate.number() <= most * 1000 && rate.per() <= most)
        return {static_cast<int>(rate.number()), static_cast<int>(rate.per())};
    return {static_cast<int>(rate.real() * 10'000 + 0.5), 10'000};
}

/// From begin to end, at its own speed.
bool runs_as_it_was(const RetimeJob& job) {
    return job.options.map.empty() && job.options.frames.empty() &&
           job.options.speed_number().value_or(scene::Rational(1)) == scene::Rational(1);
}

/// The file whose audio goes into the result; empty for none, with a note where that may surprise.
std::string audio_of(const RetimeJob& job) {
    if (!job.clip.facts().has_audio || job.options.drops_audio()) return "";
    if (runs_as_it_was(job)) return job.options.input;
    say_note(pictures::about(job.options.input, "its audio is left out, since the result does not run as it does"));
    return "";
}

pictures::MovieSettings settings_of(const RetimeJob& job) {
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
    settings.depth = job.options.lossless && job.depth() == 8 ? 8 : 16;
    settings.audio = audio_of(job);
    const scene::Rational& start = job.clip.time_of(0);
    settings.audio_start = {start.number(), start.per()};
    if (runs_as_it_was(job)) settings.time_code = facts.time_code;
    return settings;
}

}  // namespace

/// Pairs at work at once: while the engine has one of them, another one is read or written; 32 parts of each stage
/// keep eight threads busy, and more pairs would only take memory.
int RetimeJob::at_once() const {
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

namespace {

/// What a result is to be that is left alone. It shows one frame, or what lies between that and the next.
WantedFrame wanted_of(const RetimeJob& job, int number, const std::string& mark) {
    const scene::ClipFacts& facts = job.clip.facts();
    const auto [frame, position] = job.map.at(number);
    const int next = position > 0 ? std::min(frame + 1, job.clip.frames() - 1) : frame;
    const auto changed = [&](int of) { return pictures::changed_at(job.clip.name_of(of)); };
    return {facts.width, facts.height, mark, std::max(changed(frame), changed(next))};
}

}  // namespace

void retime_to_pictures(RetimeJob& job, const scene::FramePattern& names) {
    const std::string mark_of_job = mark_of(job.options);
    const auto make = [&](int number, pictures::Watch& watch) {
        const std::string name = names.name(number);
        const std::string mark = mark_of_job + moment_of(job, number);
        if (job.options.work.resume && is_whole(name, wanted_of(job, number, mark), watch)) {
            Result result(number);
            result.is_there = true;
            return result;
        }
        Result result = shown(job, number, name, 0, watch);
        if (auto flat = flattened(name, *result.picture, job.options.encoding, watch))
            result.picture = std::make_shared<pictures::Picture>(std::move(*flat));
        const int depth = job.options.encoding.file_depth(result.picture->world->Depth());
        pictures::WriteOptions written = job.options.encoding.write_options(name);
        written.mark = mark;
        result.file = Stages::timed(job.stages.writing, [&] {
            return pictures::write_uncommitted(name, *result.picture, depth, written, watch);
        });
        result.picture.reset();
        return result;
    };
    if (job.options.work.resume) pictures::sweep_unfinished(names.name(job.range.first));
    const auto finish = [&](const Result& result) {
        if (result.file) result.file->commit();
        say_detail(names.name(result.number), result.is_there ? "is there" : words_of(result.is_made));
    };
    make_all(job, make, finish, [&] { pictures::flush_disk_of(names.name(job.range.first)); });
}

void retime_to_movie(RetimeJob& job) {
    const auto settings = settings_of(job);
    const std::string& output = job.options.output;
    pictures::MovieFile movie(output, job.clip.facts().width, job.clip.facts().height, settings);
    if (!movie.note().empty()) say_note(pictures::about(output, movie.note()));
    const auto make = [&](int number, pictures::Watch& watch) {
        Result result = shown(job, number, output, movie.depth(), watch);
        if (!settings.alpha && pictures::any_transparency(*result.picture->world))
            result.notes.push_back({kBecomesBlack, pictures::about(job.options.input, kBecomesBlack)});
        if (settings.lossless) return result;
        result.picture =
            opaque_frame(output, *result.picture->world, movie.depth(), job.options.encoding.ground(), watch);
        return result;
    };
    const auto finish = [&](const Result& result) {
        Stages::timed(job.stages.writing, [&] { movie.add(*result.picture); });
        say_detail("frame " + std::to_string(result.number), words_of(result.is_made));
    };
    make_all(job, make, finish, [&] {
        job.watch.must_go_on();
        movie.commit();
        pictures::flush_disk_of(output);
        say_detail(output, "written");
    });
}

}  // namespace qx::tool
