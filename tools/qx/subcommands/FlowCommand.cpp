// SPDX-License-Identifier: Apache-2.0
// qx flow: what moves where between two pictures.
#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <optional>

#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/FlowOptions.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/sheet/FlowWheel.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/FlowFiles.h"

namespace qx::tool {
namespace {

struct FlowCommandOptions {
    CommonOptions common;
    ReadingOptions reading;
    FlowOptions flow;
    std::string first, second, output, backward, picture, most;

    void check() const {
        check_field("-o", output);
        if (!backward.empty()) check_field("--backward", backward);
        if (!picture.empty() && !pictures::known_format(picture))
            throw WrongUsage("--picture " + picture + ": its ending is none of " + pictures::known_endings());
        check_places();
        if (picture.empty() && !most.empty()) throw WrongUsage("--max is for --picture");
        most_length();
        flow.choices();
    }
    std::optional<double> most_length() const {
        constexpr double least = 0.01, highest = 30000;
        if (most.empty()) return std::nullopt;
        return real_number("--max", most, least, highest);
    }

private:
    /// Refuses results that would be written over what is read, or over one another.
    void check_places() const {
        std::map<std::string, std::string> taken;  // by whom
        const auto take = [&](const std::string& path, const std::string& by, const std::string& words) {
            if (path.empty()) return;
            const auto [place, is_free] = taken.emplace(place_of(path), by);
            if (!is_free && !words.empty()) throw WrongUsage(words + " " + path + ": is " + place->second + " too");
        };
        take(first, "the input", "");
        take(second, "the input", "");
        take(output, "-o", "-o");
        take(backward, "--backward", "--backward");
        take(picture, "--picture", "--picture");
    }
    static void check_field(const char* option, const std::string& path) {
        if (!is_field_file(path))
            throw WrongUsage(std::string(option) + " " + path + ": its ending is none of flo, exr");
    }
};

const char* const kFlowFooter =
    R"(The fields are those at the time of A, in its pixels: u to the right and v down, to where things
are in B. A flo file has the field to B; an OpenEXR file has the channels forward.u, forward.v,
backward.u and backward.v. Vectors that are not known are 1e10. --picture shows the field to B: the
hue is the direction (red to the right, yellow down, blue to the left, violet up), the saturation the
length.

Example:
  qx flow a.png b.png -o motion.flo --picture motion.png --max 20)";

void check_sizes(const FlowCommandOptions& options, const pictures::Picture& first, const pictures::Picture& second) {
    const auto size = [](const pictures::Picture& picture) {
        return std::to_string(picture.world->width) + " x " + std::to_string(picture.world->height) + " pixels";
    };
    if (size(first) == size(second)) return;
    throw pictures::Failure(options.second, size(second) + ", " + options.first + " has " + size(first));
}

void run(const FlowCommandOptions& options) {
    apply_common_options(options.common);
    options.check();
    const Library library;
    SignalWatch watch;
    NotesOnce once;
    pictures::Picture first, second;
    options.reading.check({options.first, options.second});
    read_all({{&options.first, &first}, {&options.second, &second}}, once, options.reading.read_options());
    check_sizes(options, first, second);
    const auto fields =
        scene::flow_fields(options.first, first, second, scene::flow_params(options.flow.choices()), watch);
    std::vector<std::unique_ptr<pictures::OutputFile>> files;
    files.push_back(write_fields(options.output, &fields.forward, &fields.backward, watch));
    if (!options.backward.empty()) files.push_back(write_fields(options.backward, nullptr, &fields.backward, watch));
    if (!options.picture.empty()) {
        const double most = options.most_length().value_or(usual_length(fields.forward));
        files.push_back(pictures::write_uncommitted(options.picture, flow_picture(fields.forward, most), 8, {}, watch));
    }
    watch.must_go_on();
    for (const auto& file : files) {
        file->commit();
        say_detail(file->path(), "written");
    }
}

}  // namespace

void add_flow(CLI::App& app) {
    auto* command = app.add_subcommand("flow", "Tell what moves where between two pictures");
    const auto options = std::make_shared<FlowCommandOptions>();
    command->add_option("A", options->first, "the first picture")->required()->type_name("A");
    command->add_option("B", options->second, "the second one, of its size")->required()->type_name("B");
    const auto add = [&](const char* name, std::string& text, const char* help, const char* form) {
        return command->add_option(name, text, help)->type_name(form);
    };
    add("-o,--output", options->output, "the fields: flo or exr", "OUT")->required();
    add("--backward", options->backward, "the field backwards alone: flo or exr", "OUT2");
    add("--picture", options->picture, "the field in colours", "WHEEL.png");
    add("--max", options->most, "pixels of full colour (default: the length of 99 % of the vectors)", "PIXELS");
    add_flow_options(*command, options->flow);
    add_reading_options(*command, options->reading);
    add_common_options(*command, options->common);
    set_usage(*command, "A B [options] -o OUT.flo|OUT.exr");
    command->footer(kFlowFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
