// SPDX-License-Identifier: Apache-2.0
// qx render: frames of a scene, as pictures or as a movie.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "scene/Faults.h"
#include "tools/qx/Commands.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/work/Output.h"
#include "tools/qx/work/RenderJob.h"
#include "tools/qx/work/SceneChoices.h"

namespace qx::tool {
namespace {

const char* const kRenderFooter =
    R"(OUT has a place for the frame's number, #### or %04d, unless one frame is asked for. A name that
ends in mp4, mov, mkv, webm or avi becomes a movie of the frames. As many frames are at work at
once as there are threads and --memory has room for; they appear in their order. Frames do not
depend on each other: a farm gives each machine a part of --frames. Vectors of motion in clips
stay in a cache on disk, see qx cache. docs/scene.md describes the scene file.

Example:
  qx render scene.json -o out/frame.####.png --frames 1001-1100 --resume
  qx render scene.json -o out.mp4
  qx render scene.json --frames 1,3,5-9x2 --check)";

scene::FrameList frames_of(const RenderOptions& options, const scene::Scene& scene) {
    if (const auto frames = frames_asked(options.frames, scene)) return *frames;
    throw WrongUsage("--frames A-B is needed, the scene tells no frames");
}

/// Looks at all of a scene, and tells each fault in a line of its own.
void check(const RenderOptions& options, host::EffectFolders& folders) {
    std::vector<std::string> faults;
    scene::Scene scene = scene::read_scene(options.scene, &folders, &faults);
    int count = 0;
    if (faults.empty()) {
        try {
            settle(scene, options.depth, options.colours);
        } catch (const scene::SceneFault& fault) {
            faults.emplace_back(fault.what());
        }
        const scene::FrameList frames = frames_of(options, scene);
        SignalWatch watch;
        for (auto& fault : scene::faults_of_files(scene, frames, watch)) faults.push_back(std::move(fault));
        count = frames.count();
    }
    for (std::size_t i = 0; i + 1 < faults.size(); ++i) say_error(faults[i]);
    if (!faults.empty()) throw WorkFailed(faults.back());
    std::printf("%s: fine, %d frame%s\n", options.scene.c_str(), count, count == 1 ? "" : "s");
    finish_output();
}

void run(RenderOptions options) {
    apply_common_options(options.common);
    if (!options.memory.empty()) memory_size("--memory", options.memory);
    host::EffectFolders folders(options.effect_folders);
    if (options.check) return check(options, folders);
    if (options.output.empty()) throw WrongUsage("--output is required (see qx --help)");
    options.encoding.check(options.output);
    options.cache.apply();
    scene::Scene scene = scene::read_scene(options.scene, &folders);
    options.encoding.take(scene.output, options.output);
    options.encoding.check(options.output);
    settle(scene, options.depth, options.colours);
    options.work.style();
    render_scene(scene, options.work.part_of(frames_of(options, scene)), options);
}

}  // namespace

void add_render(CLI::App& app) {
    auto* command = app.add_subcommand("render", "Render the frames of a scene, as pictures or as a movie");
    const auto options = std::make_shared<RenderOptions>();
    command->add_option("SCENE", options->scene, "scene file")->required()->type_name("FILE");
    command->add_option("-o,--output", options->output, "files to write: " + pictures::known_endings() + ", or a movie")
        ->type_name("OUT");
    command
        ->add_flag("--check", options->check,
                   "make nothing: look whether the scene and its files are as they should be")
        ->disable_flag_override();
    command->add_option("--frames", options->frames, "frames, such as 1,3,5-9x2 (default: those of the scene)")
        ->type_name("A[-B[xSTEP]],...");
    add_long_work_options(*command, options->work);
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
    add_movie_options(*command, options->encoding);
    add_common_options(*command, options->common);
    set_usage(*command, "SCENE.json [options] -o OUT.####.EXT");
    command->footer(kRenderFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
