// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/work/RenderJob.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "pictures/Dither.h"
#include "pictures/Light.h"
#include "pictures/Losses.h"
#include "pictures/Movie.h"
#include "platform/standalone/Cache.h"
#include "platform/standalone/Host.h"
#include "scene/Faults.h"
#include "scene/InOrder.h"
#include "scene/SceneRender.h"
#include "scene/colour/MovieColours.h"
#include "tools/qx/Library.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/Fingerprint.h"
#include "tools/qx/work/Flatten.h"
#include "tools/qx/work/FrameFiles.h"
#include "tools/qx/work/LongWork.h"

namespace qx::tool {
namespace {

/// By which frames of this job are known again: the scene, what is asked for beside it, and who made them.
std::string mark_of_job(const scene::Scene& scene, const RenderOptions& options) {
    const auto& c = options.colours;
    const std::string parts[] = {QX_VERSION,
                                 scene.text,
                                 std::to_string(scene.depth),
                                 c.space,
                                 c.to,
                                 c.linearize ? "linearize" : "",
                                 options.encoding.words(),
                                 std::to_string(standalone::BandCount())};
    std::string all;
    for (const std::string& part : parts) all += part + '\n';
    return fingerprint(all);
}

/// The frames of a job.
struct Job {
    const RenderOptions& options;
    const scene::Scene& scene;
    const scene::FrameList frames;
    scene::SceneRender& render;
    pictures::Watch& watch;
    const std::string mark;                                     ///< that files of pictures keep, each with its number
    std::optional<scene::InputChanges> changes = std::nullopt;  ///< where frames that are there may stay

    /// A file of another frame is none of this one.
    std::string mark_of(int number) const { return mark + "-" + std::to_string(number); }
    pictures::WriteOptions write_options(int number) const {
        pictures::WriteOptions written = options.encoding.write_options(options.output);
        written.mark = mark_of(number);
        return written;
    }

    int file_depth() const { return options.encoding.file_depth(scene.depth); }

    /// How many frames are at work at once.
    int at_once() const {
        int width = 0, height = 0;
        render.size(frames.frame(0), watch, &width, &height);
        const std::uint64_t memory =
            options.memory.empty() ? half_the_memory() : memory_size("--memory", options.memory);
        return std::min(render.frames_within(memory, width, height), standalone::PoolThreads());
    }
};

/// What is to be said of values that a format is not meant for; empty where there is nothing.
std::string light_note(const Job& job, const std::string& name, const pictures::Picture& frame) {
    if (job.render.space() != nullptr) {
        const scene::Profile& output = job.scene.colours.output;
        return scene::not_light(name, output ? output : job.render.space()->profile());
    }
    const bool mixed = job.scene.background && frame.linear != pictures::is_linear_format(name);
    return mixed ? pictures::kLightIsMixed : "";
}

/// What a frame's losses are told of: the picture that it begins with, or the scene.
std::string subject_of(const scene::Scene& scene, int number) {
    return scene.background ? scene.background->at(number) : scene.file;
}

/// What a frame loses in its file.
std::vector<Note> losses(const Job& job, int number, const std::string& name, const pictures::Picture& frame) {
    const std::string subject = subject_of(job.scene, number);
    const std::string mixed = light_note(job, name, frame);
    std::vector<Note> notes;
    if (!mixed.empty()) notes.push_back({mixed, mixed});
    for (const auto& note : lost_in_file(name, frame, job.scene.depth, job.options.encoding)) {
        notes.push_back({note, pictures::about(subject, note)});
    }
    return notes;
}

/// A frame that has been made, and waits for its turn.
struct MadeFrame {
    std::shared_ptr<pictures::OutputFile> file;  ///< null where it is there already
    std::vector<Note> notes;
};

/// True when the file of a frame is there and as it should be.
bool is_made(const Job& job, int number, const std::string& path, pictures::Watch& watch) {
    if (!pictures::is_there(path)) return false;
    WantedFrame wanted{0, 0, job.mark_of(number), job.changes->latest(number)};
    job.render.size(number, watch, &wanted.width, &wanted.height);
    return is_whole(path, wanted, watch);
}

MadeFrame make_picture(const Job& job, int number, const std::string& name, Stages& stages, pictures::Watch& watch) {
    MadeFrame made;
    if (job.options.work.resume && is_made(job, number, name, watch)) return made;
    pictures::Picture frame = Stages::timed(stages.making, [&] { return job.render.frame(number, watch); });
    if (auto flat = flattened(name, frame, job.options.encoding, watch)) frame = std::move(*flat);
    made.notes = losses(job, number, name, frame);
    if (job.scene.dither && pictures::file_depth(name, job.file_depth()) == 8) pictures::dither_to_8(name, frame);
    made.file = Stages::timed(stages.writing, [&] {
        return pictures::write_uncommitted(name, frame, job.file_depth(), job.write_options(number), watch);
    });
    return made;
}

void make_pictures(const Job& job, const scene::FramePattern& names) {
    FrameProgress progress(job.frames.count(), job.options.work.style());
    NotesOnce once;
    Stages stages;
    const auto make = [&](int index, pictures::Watch& watch) -> scene::InTurn {
        const int number = job.frames.frame(index);
        const std::string name = names.name(number);
        watch.must_go_on();
        MadeFrame made;
        const auto work = [&] { made = make_picture(job, number, name, stages, watch); };
        std::string fault;
        if (job.options.work.keep_going) {
            fault = fault_of(work);
        } else {
            work();
        }
        return [&, number, name, made, fault] {
            job.watch.must_go_on();
            if (!fault.empty()) return progress.failed(number, fault);
            once.say(made.notes);
            if (made.file) made.file->commit();
            say_detail(name, made.file ? "written" : "is there");
            progress.done(number, !made.file);
        };
    };
    scene::in_order(job.frames.count(), job.at_once(), job.watch, make);
    pictures::flush_disk_of(names.name(job.frames.frame(0)));
    if (job.options.work.stats) tell_stats(progress, stages);
    tell_failures(progress.failures(), job.frames.count());
}

/// The frame whose background tells the space, whatever part of a scene is rendered.
int first_of(const scene::Scene& scene, const scene::FrameList& frames) {
    return scene.frames ? scene.frames->frame(0) : frames.frame(0);
}

void check_inputs_stay(const scene::Scene& scene, const scene::FrameList& frames, const scene::FramePattern& names) {
    if (const auto input = scene::overwritten(scene, frames, names))
        throw WrongUsage("-o " + input->path + ": is a picture of the scene, at " + input->place);
}

void render_pictures(const scene::Scene& scene, const scene::FrameList& listed, const RenderOptions& options) {
    const scene::FrameList frames = listed.once();  // a movie shows a frame as often as it is listed
    const auto names = value_of("-o", [&] { return scene::FramePattern(options.output); });
    check_frames_option(names.name(frames.frame(0)));
    if (frames.count() > 1 && !names.has_place() && !pictures::is_standard_output(options.output)) {
        throw WrongUsage("-o " + options.output + ": more than one frame needs a place for its number, such as ####");
    }
    if (options.work.resume && pictures::is_standard_output(options.output))
        throw WrongUsage("--resume is for files, not for standard output");
    check_inputs_stay(scene, frames, names);
    const Library library;
    SignalWatch watch;
    scene::SceneRender render(scene, say_note, first_of(scene, frames), watch);
    if (options.work.resume) pictures::sweep_unfinished(names.name(frames.frame(0)));
    Job job{options, scene, frames, render, watch, mark_of_job(scene, options)};
    if (options.work.resume) job.changes.emplace(scene);
    make_pictures(job, names);
}

void render_movie(const scene::Scene& scene, const scene::FrameList& frames, const RenderOptions& options) {
    options.work.check_for_movie();
    check_inputs_stay(scene, frames, scene::FramePattern::plain(options.output));
    const Library library;
    SignalWatch watch;
    scene::SceneRender render(scene, say_note, first_of(scene, frames), watch);
    int width = 0, height = 0;
    render.size(frames.frame(0), watch, &width, &height);
    const auto colours =
        scene.colours.output ? scene::movie_colours_of(scene.colours.output) : pictures::MovieColours{};
    const pictures::MovieSettings settings{.rate = scene.rate,
                                           .encoding = options.encoding.movie_encoding(),
                                           .colours = colours,
                                           .aspect = pictures::Rate{static_cast<int>(options.lead.aspect.number()),
                                                                    static_cast<int>(options.lead.aspect.per())},
                                           .depth = 16,
                                           .audio = options.lead.audio,
                                           .audio_start = {options.lead.start.number(), options.lead.start.per()},
                                           .time_code = options.lead.time_code};
    pictures::MovieFile movie(options.output, width, height, settings);
    if (!movie.note().empty()) say_note(pictures::about(options.output, movie.note()));
    const std::optional<QX_PixelFloat> ground = options.encoding.ground();
    FrameProgress progress(frames.count(), options.work.style());
    NotesOnce once;
    Stages stages;
    const auto make = [&](int index, pictures::Watch& frame_watch) -> scene::InTurn {
        const int number = frames.frame(index);
        pictures::Picture frame = Stages::timed(stages.making, [&] { return render.frame(number, frame_watch); });
        if (frame.world->width != width || frame.world->height != height) {
            throw pictures::Failure(options.output,
                                    "frame " + std::to_string(number) + " has another size than the first");
        }
        auto lost = pictures::lost_at_depth(frame, movie.depth());
        for (const auto& note : pictures::lost_beside(frame)) lost.push_back(note);
        if (scene.dither && movie.depth() == 8) pictures::dither_to_8(options.output, frame);
        const auto shown = opaque_frame(options.output, *frame.world, movie.depth(), ground, frame_watch);
        std::vector<Note> notes;
        notes.reserve(lost.size());
        for (const auto& note : lost) notes.push_back({note, pictures::about(subject_of(scene, number), note)});
        return [&, number, shown, notes] {
            watch.must_go_on();
            once.say(notes);
            Stages::timed(stages.writing, [&] { movie.add(*shown); });
            progress.done(number, false);
        };
    };
    scene::in_order(frames.count(), Job{options, scene, frames, render, watch, ""}.at_once(), watch, make);
    watch.must_go_on();
    movie.commit();
    pictures::flush_disk_of(options.output);
    if (options.work.stats) tell_stats(progress, stages);
    say_detail(options.output, "written");
}

/// What players of movies take frames for.
scene::Profile movie_profile() { return scene::profile_of_text("rec709-2.4"); }

}  // namespace

void render_scene(scene::Scene scene, const scene::FrameList& frames, const RenderOptions& options) {
    const bool movie = pictures::is_movie(options.output);
    if (movie && scene.colours.has_space && !scene.colours.output) scene.colours.output = movie_profile();
    scene::check_files(scene, frames);
    (movie ? render_movie : render_pictures)(scene, frames, options);
    if (const std::string note = standalone::CacheNote(); !note.empty()) say_note(note);
}

}  // namespace qx::tool
