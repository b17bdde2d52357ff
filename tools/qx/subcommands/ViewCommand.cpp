// SPDX-License-Identifier: Apache-2.0
// qx view: a page in the browser that shows a scene, a picture or a clip.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/qx/Commands.h"
#include "tools/qx/options/EffectArgument.h"
#include "tools/qx/view/View.h"

namespace qx::tool {
namespace {

const char* const kViewFooter =
    R"(FILE is a scene, a picture, numbered pictures (frame.####.png) or a movie; two of them are shown
beside each other. Nothing is written. The page is served to this machine alone, at an address that
nobody guesses, and drawn anew when the scene or a file that it names is saved. Ctrl-C ends it.
docs/view.md tells the rest.

Example:
  qx view scene.json
  qx view before.png after.png
  qx view scene.json --no-open --port 8080)";

}  // namespace

void add_view(CLI::App& app) {
    auto* command = app.add_subcommand("view", "Look at a scene, a picture or a clip in the browser");
    const auto options = std::make_shared<ViewOptions>();
    command->add_option("FILE", options->inputs, "what is looked at, one or two")->required()->type_name("FILE");
    command->add_option("--port", options->port, "port of the page's address (default: a free one)")->type_name("N");
    command->add_flag("--no-open", options->no_open, "only print the address, open no browser")
        ->disable_flag_override();
    command
        ->add_option("--frames", options->frames,
                     "frames, such as 1,3,5-9x2 (default: those of the scene, or all that are there)")
        ->type_name("A[-B[xSTEP]],...");
    add_depth_option(*command, options->depth, "those of the scene");
    add_effect_folders_option(*command, options->effect_folders);
    add_colour_options(*command, options->colours);
    command->add_option("--memory", options->memory, "memory for frames that are kept (default: 512M)")
        ->type_name("N[K|M|G]");
    add_cache_options(*command, options->cache);
    add_no_cache_option(*command, options->cache);
    add_common_options(*command, options->common);
    set_usage(*command, "FILE [FILE] [options]");
    command->footer(kViewFooter);
    command->callback([options] {
        apply_common_options(options->common);
        view(*options);
    });
}

}  // namespace qx::tool
