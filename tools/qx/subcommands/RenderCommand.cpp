// SPDX-License-Identifier: Apache-2.0
// qx render: frames of a scene, as pictures or as a movie.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include "pictures/Light.h"
#include "pictures/Movie.h"
#include "scene/Faults.h"
#include "scene/LayerWords.h"
#include "scene/SceneRender.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"

namespace qx::tool {
namespace {

struct RenderOptions {
    CommonOptions common;
    std::string scene, output, frames, depth;
    bool resume = false;
};

const char* const kFooter =
    R"(OUT has a place for the frame's number, #### or %04d, unless one frame is asked for. A name that
ends in mp4, mov, mkv, webm or avi becomes a movie of the frames. Frames do not depend on each
other: a farm gives each machine a part of --frames. docs/scene.md describes the scene file.

Example:
  qx render scene.json -o out/frame.####.png --frames 1001-1100 --resume
  qx render scene.json -o out.mp4)";

scene::FrameRange frames_of(const RenderOptions& options, const scene::Scene& scene) {
    if (!options.frames.empty()) return value_of("--frames", [&] { return scene::frame_range(options.frames); });
    if (scene.frames) return *scene.frames;
    throw WrongUsage("--frames A-B is needed, the scene tells no frames");
}

/// True when the file of a frame can be read to its end and has the frame's size: what a frame's writer was stopped
/// in, or some other program left, is made anew.
bool is_whole(const std::string& path, int width, int height, pictures::Watch& watch) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return false;
    try {
        const pictures::Picture picture = pictures::read_picture(path, watch);
        return picture.world->width == width && picture.world->height == height;
    } catch (const pictures::Failure&) {
        return false;
    }
}

void note_light(const scene::Scene& scene, const std::string& output, const pictures::Picture& frame) {
    if (scene.background && frame.linear != pictures::is_linear_format(output)) {
        say_note(pictures::kLightIsMixed);
    }
}

void render_pictures(const scene::Scene& scene, const scene::FrameRange& frames, const RenderOptions& options) {
    const auto names = value_of("-o", [&] { return scene::FramePattern(options.output); });
    if (frames.count() > 1 && !names.has_place()) {
        throw WrongUsage("-o " + options.output + ": more than one frame needs a place for its number, such as ####");
    }
    check_output_option(names.name(frames.first));
    if (const auto input = scene::overwritten(scene, frames, names)) {
        throw WrongUsage("-o " + input->path + ": is a picture of the scene, at " + input->place);
    }
    const Library library;
    SignalWatch watch;
    scene::SceneRender render(scene, watch, say_note);
    FrameProgress progress(frames.count());
    bool told = false;
    for (int i = 0; i < frames.count(); ++i) {
        watch.must_go_on();
        const int number = frames.frame(i);
        const std::string file = names.name(number);
        int width = 0, height = 0;
        if (options.resume) render.size(number, &width, &height);
        const bool skipped = options.resume && is_whole(file, width, height, watch);
        if (!skipped) {
            const pictures::Picture frame = render.frame(number);
            if (!told) note_light(scene, file, frame);
            told = true;
            pictures::write_picture(file, frame, scene.depth, {}, watch);
        }
        say_detail(file, skipped ? "is there" : "written");
        progress.done(number, skipped);
    }
}

/// What is transparent becomes black.
std::unique_ptr<QX_World> opaque(const std::string& path, const QX_World& frame, pictures::Watch& watch) {
    auto eight = pictures::at_depth(path, frame, 8);
    if (!pictures::any_transparency(*eight)) return eight;
    auto black = pictures::new_world(path, frame.width, frame.height, 8);
    black->Fill(QX_PixelFloat{1, 0, 0, 0}, nullptr);
    scene::Transfer transfer;
    transfer.layer = eight.get();
    scene::must(scene::composite(transfer, *black, watch), path);
    return black;
}

void render_movie(const scene::Scene& scene, const scene::FrameRange& frames, const RenderOptions& options) {
    if (options.resume) throw WrongUsage("--resume is for pictures, a movie is made as a whole");
    const Library library;
    SignalWatch watch;
    scene::SceneRender render(scene, watch, say_note);
    int width = 0, height = 0;
    render.size(frames.first, &width, &height);
    pictures::MovieFile movie(options.output, width, height, scene.rate);
    FrameProgress progress(frames.count());
    for (int i = 0; i < frames.count(); ++i) {
        const int number = frames.frame(i);
        const pictures::Picture frame = render.frame(number);
        if (frame.world->width != width || frame.world->height != height) {
            throw pictures::Failure(options.output,
                                    "frame " + std::to_string(number) + " has another size than the first");
        }
        movie.add(*opaque(options.output, *frame.world, watch));
        progress.done(number, false);
    }
    watch.must_go_on();
    movie.commit();
    say_detail(options.output, "written");
}

void run(const RenderOptions& options) {
    apply_common_options(options.common);
    const int depth = options.depth.empty() ? 0 : 8 << choice("--depth", options.depth, scene::kDepthWords);
    const bool movie = pictures::is_movie(options.output);
    scene::Scene scene = scene::read_scene(options.scene);
    if (depth != 0) scene.depth = depth;
    const scene::FrameRange frames = frames_of(options, scene);
    scene::check_files(scene, frames);
    (movie ? render_movie : render_pictures)(scene, frames, options);
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
    command->add_option("--depth", options->depth, "bits to work with (default: those of the scene)")
        ->type_name("8|16|32");
    add_common_options(*command, options->common);
    set_usage(*command, "SCENE.json [options] -o OUT.####.EXT");
    command->footer(kFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
