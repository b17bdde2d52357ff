// SPDX-License-Identifier: Apache-2.0
// qx render: frames of a scene, as pictures or as a movie.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>

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
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/CacheOptions.h"
#include "tools/qx/options/ColourOptions.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/FrameFiles.h"

namespace qx::tool {
namespace {

struct RenderOptions {
    CommonOptions common;
    EncodingOptions encoding;
    ColourOptions colours;
    CacheOptions cache;
    std::string scene, output, frames, depth, memory;
    bool resume = false;
    std::vector<std::string> effect_folders;
};

const char* const kFooter =
    R"(OUT has a place for the frame's number, #### or %04d, unless one frame is asked for. A name that
ends in mp4, mov, mkv, webm or avi becomes a movie of the frames. As many frames are at work at
once as there are threads and --memory has room for; they appear in their order. Frames do not
depend on each other: a farm gives each machine a part of --frames. Vectors of motion in clips
stay in a cache on disk, see qx cache. docs/scene.md describes the scene file.

Example:
  qx render scene.json -o out/frame.####.png --frames 1001-1100 --resume
  qx render scene.json -o out.mp4)";

scene::FrameRange frames_of(const RenderOptions& options, const scene::Scene& scene) {
    if (!options.frames.empty()) return value_of("--frames", [&] { return scene::frame_range(options.frames); });
    if (scene.frames) return *scene.frames;
    throw WrongUsage("--frames A-B is needed, the scene tells no frames");
}

/// True when the file of a frame is there and as it should be.
bool is_made(const std::string& path, scene::SceneRender& render, int frame, pictures::Watch& watch) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return false;
    FrameSize size{};
    render.size(frame, watch, &size.width, &size.height);
    return is_whole(path, size, watch);
}

/// The frames of a job.
struct Job {
    const RenderOptions& options;
    const scene::Scene& scene;
    const scene::FrameRange frames;
    scene::SceneRender& render;
    pictures::Watch& watch;

    /// How many frames are at work at once.
    int at_once() const {
        int width = 0, height = 0;
        render.size(frames.first, watch, &width, &height);
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

/// What a frame loses in its file.
std::vector<Note> losses(const Job& job, int number, const std::string& name, const pictures::Picture& frame) {
    const auto& background = job.scene.background;
    const std::string subject = background ? background->at(number) : job.scene.file;
    const std::string mixed = light_note(job, name, frame);
    std::vector<Note> notes;
    if (!mixed.empty()) notes.push_back({mixed, mixed});
    for (const auto& note : pictures::left_out(name, frame, job.scene.depth, job.options.encoding.write_options())) {
        notes.push_back({note, pictures::about(subject, note)});
    }
    return notes;
}

void make_pictures(const Job& job, const scene::FramePattern& names) {
    FrameProgress progress(job.frames.count());
    NotesOnce once;
    const auto make = [&](int index, pictures::Watch& watch) -> scene::InTurn {
        const int number = job.frames.frame(index);
        const std::string name = names.name(number);
        std::shared_ptr<pictures::OutputFile> file;
        std::vector<Note> notes;
        watch.must_go_on();
        if (!job.options.resume || !is_made(name, job.render, number, watch)) {
            pictures::Picture frame = job.render.frame(number, watch);
            notes = losses(job, number, name, frame);
            const bool dithers = job.scene.dither && pictures::file_depth(name, job.scene.depth) == 8;
            if (dithers) pictures::dither_to_8(name, frame);
            file =
                pictures::write_uncommitted(name, frame, job.scene.depth, job.options.encoding.write_options(), watch);
        }
        return [&, number, name, file, notes] {
            job.watch.must_go_on();
            once.say(notes);
            if (file) file->commit();
            say_detail(name, file ? "written" : "is there");
            progress.done(number, !file);
        };
    };
    scene::in_order(job.frames.count(), job.at_once(), job.watch, make);
}

/// The frame whose background tells the space, whatever part of a scene is rendered.
int first_of(const scene::Scene& scene, const scene::FrameRange& frames) {
    return scene.frames ? scene.frames->first : frames.first;
}

void render_pictures(const scene::Scene& scene, const scene::FrameRange& frames, const RenderOptions& options) {
    const auto names = value_of("-o", [&] { return scene::FramePattern(options.output); });
    if (frames.count() > 1 && !names.has_place()) {
        throw WrongUsage("-o " + options.output + ": more than one frame needs a place for its number, such as ####");
    }
    check_frames_option(names.name(frames.first));
    if (const auto input = scene::overwritten(scene, frames, names)) {
        throw WrongUsage("-o " + input->path + ": is a picture of the scene, at " + input->place);
    }
    const Library library;
    SignalWatch watch;
    scene::SceneRender render(scene, say_note, first_of(scene, frames), watch);
    make_pictures({options, scene, frames, render, watch}, names);
}

void render_movie(const scene::Scene& scene, const scene::FrameRange& frames, const RenderOptions& options) {
    if (options.resume) throw WrongUsage("--resume is for pictures, a movie is made as a whole");
    const Library library;
    SignalWatch watch;
    scene::SceneRender render(scene, say_note, first_of(scene, frames), watch);
    int width = 0, height = 0;
    render.size(frames.first, watch, &width, &height);
    const auto colours =
        scene.colours.output ? scene::movie_colours_of(scene.colours.output) : pictures::MovieColours{};
    pictures::MovieFile movie(options.output, width, height, {.rate = scene.rate, .colours = colours});
    FrameProgress progress(frames.count());
    NotesOnce once;
    const auto make = [&](int index, pictures::Watch& frame_watch) -> scene::InTurn {
        const int number = frames.frame(index);
        pictures::Picture frame = render.frame(number, frame_watch);
        if (frame.world->width != width || frame.world->height != height) {
            throw pictures::Failure(options.output,
                                    "frame " + std::to_string(number) + " has another size than the first");
        }
        auto lost = pictures::lost_at_depth(frame, 8);
        for (const auto& note : pictures::lost_beside(frame)) lost.push_back(note);
        if (scene.dither) pictures::dither_to_8(options.output, frame);
        const std::shared_ptr<const QX_World> shown = over_black(options.output, *frame.world, frame_watch);
        std::vector<Note> notes;
        notes.reserve(lost.size());
        for (const auto& note : lost) notes.push_back({note, pictures::about(scene.file, note)});
        return [&, number, shown, notes] {
            watch.must_go_on();
            once.say(notes);
            movie.add(*shown);
            progress.done(number, false);
        };
    };
    scene::in_order(frames.count(), Job{options, scene, frames, render, watch}.at_once(), watch, make);
    watch.must_go_on();
    movie.commit();
    say_detail(options.output, "written");
}

/// What players of movies take frames for.
scene::Profile movie_profile() { return scene::profile_of_text("rec709-2.4"); }

void run(const RenderOptions& options) {
    apply_common_options(options.common);
    if (!options.memory.empty()) memory_size("--memory", options.memory);
    options.encoding.check(options.output);
    options.cache.apply();
    const int depth = depth_of(options.depth);
    const bool movie = pictures::is_movie(options.output);
    host::EffectFolders folders(options.effect_folders);
    scene::Scene scene = scene::read_scene(options.scene, &folders);
    if (depth != 0) scene.depth = depth;
    options.colours.apply(scene.colours);
    if (const char* option = options.colours.without_space(); option != nullptr && !scene.colours.has_space) {
        throw WrongUsage(option + std::string(kNeedsSpaceOption));
    }
    scene::check_colours(scene);
    if (movie && scene.colours.has_space && !scene.colours.output) scene.colours.output = movie_profile();
    const scene::FrameRange frames = frames_of(options, scene);
    scene::check_files(scene, frames);
    (movie ? render_movie : render_pictures)(scene, frames, options);
    if (const std::string note = standalone::CacheNote(); !note.empty()) say_note(note);
}

}  // namespace

void add_render(CLI::App& app) {
    auto* command = app.add_subcommand("render", "Render the frames of a scene, as pictures or as a movie");
    const auto options = std::make_shared<RenderOptions>();
    command->add_option("SCENE", options->scene, "scene file")->required()->type_name("FILE");
    command->add_option("-o,--output", options->output, "files to write: " + pictures::known_endings() + ", or a movie")
        ->required()
        ->type_name("OUT");
    command->add_option("--frames", options->frames, "frames, every STEPth (default: those of the scene)")
        ->type_name("A-B[xSTEP]");
    command->add_flag("--resume", options->resume, "leave frames alone whose file is there and whole")
        ->disable_flag_override();
    add_depth_option(*command, options->depth, "those of the scene");
    add_effect_folders_option(*command, options->effect_folders);
    add_colour_options(*command, options->colours);
    command
        ->add_option("--memory", options->memory,
                     "memory for frames that are at work at once (default: half of the machine's)")
        ->type_name("N[K|M|G]");
    add_cache_options(*command, options->cache);
    add_no_cache_option(*command, options->cache);
    add_encoding_options(*command, options->encoding);
    add_common_options(*command, options->common);
    set_usage(*command, "SCENE.json [options] -o OUT.####.EXT");
    command->footer(kFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
