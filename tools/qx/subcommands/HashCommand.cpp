// SPDX-License-Identifier: Apache-2.0
// qx hash: numbers that tell pictures by their values.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Fingerprint.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

struct HashOptions {
    CommonOptions common;
    ReadingOptions reading;
    std::vector<std::string> files;
    bool json = false;
};

const char* const kHashFooter =
    R"(A hash of size, depth and straight values as the file holds them: the same for every format that
holds the same ones, whatever its compression, its profile and its other tags. A file without
alpha counts as opaque. Half floats count as the floats that they are.

Example:
  qx hash frame.*.png > frames.txt)";

void run(const HashOptions& options) {
    apply_common_options(options.common);
    options.reading.check(options.files);
    const Library library;
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const std::string& file : options.files) {
        FileProgress progress("reading");
        const pictures::Picture picture = pictures::read_picture(file, progress, options.reading.read_options());
        const std::string hash = fingerprint(file, picture);
        if (options.json) {
            const QX_World& world = *picture.world;
            all.push_back({{"file", file},
                           {"hash", hash},
                           {"size", {world.width, world.height}},
                           {"depth", static_cast<int>(world.Depth())}});
        } else {
            std::printf("%s  %s\n", hash.c_str(), pictures::one_line(file).c_str());
        }
    }
    if (options.json) print_json(all);
    finish_output();
}

}  // namespace

void add_hash(CLI::App& app) {
    auto* command = app.add_subcommand("hash", "Tell pictures by their values");
    const auto options = std::make_shared<HashOptions>();
    command->add_option("files", options->files, "the pictures")->required()->type_name("FILE");
    add_json_option(*command, options->json);
    add_reading_options(*command, options->reading);
    add_common_options(*command, options->common);
    set_usage(*command, "FILE... [--json]");
    command->footer(kHashFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
