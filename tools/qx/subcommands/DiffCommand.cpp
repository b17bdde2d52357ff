// SPDX-License-Identifier: Apache-2.0
// qx diff: how far two pictures lie apart.
#include <CLI/CLI.hpp>
#include <memory>

#include "pictures/Carried.h"
#include "scene/Words.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/work/Differences.h"
#include "tools/qx/work/Files.h"
#include "tools/qx/work/Output.h"

namespace qx::tool {
namespace {

struct DiffOptions {
    CommonOptions common;
    ReadingOptions reading;
    std::string a, b, tolerance, picture;
    bool json = false;
};

const char* const kDiffFooter =
    R"(Compares size and straight values, whatever the formats and depths: 8 bits count as v / 255, 16
bits as v / 65535. Full scale is 1. Exit status 0: no value differs by more than the tolerance;
1: some do, or the sizes do; 2: a picture cannot be read.

Example:
  qx diff before.png after.png
  qx diff a.exr b.exr --tolerance 0.001 --picture heat.png --json)";

/// Two float worlds.
struct Pair {
    pictures::Picture a, b;
    bool same_size() const { return a.world->width == b.world->width && a.world->height == b.world->height; }
};

Pair read_pair(const DiffOptions& options) {
    Pair pair;
    NotesOnce once;
    options.reading.check({options.a, options.b});
    read_all({{&options.a, &pair.a}, {&options.b, &pair.b}}, once, options.reading.read_options());
    pictures::bring_to_depth(options.a, pair.a, 32);
    pictures::bring_to_depth(options.b, pair.b, 32);
    return pair;
}

std::string size_words(const QX_World& world) {
    return std::to_string(world.width) + " x " + std::to_string(world.height);
}

void tell_sizes(const DiffOptions& options, const Pair& pair) {
    if (options.json) {
        print_json({{"equal", false},
                    {"size", {pair.a.world->width, pair.a.world->height}},
                    {"other-size", {pair.b.world->width, pair.b.world->height}}});
    } else {
        std::printf("sizes differ: %s and %s\n", size_words(*pair.a.world).c_str(), size_words(*pair.b.world).c_str());
    }
}

nlohmann::ordered_json in_json(const Pair& pair, const Differences& found) {
    const auto number = [](double value) { return std::isfinite(value) ? nlohmann::json(value) : nlohmann::json(); };
    nlohmann::ordered_json json = {{"equal", found.differing == 0},
                                   {"size", {pair.a.world->width, pair.a.world->height}},
                                   {"differing", found.differing},
                                   {"pixels", found.pixels},
                                   {"largest", number(found.largest)},
                                   {"mean", number(found.mean)},
                                   {"psnr", found.psnr() ? number(*found.psnr()) : nlohmann::json()}};
    if (found.largest > 0) {
        json["at"] = {found.x, found.y};
        json["channel"] = kChannelWords[found.channel];
    }
    return json;
}

void tell(const Differences& found) {
    if (found.largest == 0) {
        std::printf("equal\n");
        return;
    }
    std::printf("largest    %s, %s at %d,%d\nmean       %s\ndiffering  %lld of %lld pixels\nPSNR       %.2f dB\n",
                scene::words(found.largest).c_str(), kChannelWords[found.channel], found.x, found.y,
                scene::words(found.mean).c_str(), static_cast<long long>(found.differing),
                static_cast<long long>(found.pixels), *found.psnr());
}

void write_heat(const DiffOptions& options, const Pair& pair, const Differences& found, double tolerance) {
    pictures::Picture picture;
    picture.world = heat(*pair.a.world, *pair.b.world, tolerance, found.largest);
    write_result(options.picture, picture, 8, {});
}

void run(const DiffOptions& options) {
    apply_common_options(options.common);
    const double tolerance = options.tolerance.empty() ? 0 : real_number("--tolerance", options.tolerance, 0, 1e9);
    if (!options.picture.empty()) check_output_option(options.picture);
    const Library library;
    const Pair pair = read_pair(options);
    if (!pair.same_size()) {
        tell_sizes(options, pair);
        finish_output();
        throw EndedWith{kWorkFailed};
    }
    const Differences found = differences(*pair.a.world, *pair.b.world, tolerance);
    if (!options.picture.empty()) write_heat(options, pair, found, tolerance);
    if (options.json) {
        print_json(in_json(pair, found));
    } else {
        tell(found);
    }
    finish_output();
    if (found.differing != 0) throw EndedWith{kWorkFailed};
}

/// Trouble must not pass for a difference: it has the status of wrong usage.
void run_or_tell_trouble(const DiffOptions& options) {
    try {
        run(options);
    } catch (const pictures::Stopped&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw WrongUsage("out of memory");
    } catch (const std::exception& fault) {
        throw WrongUsage(fault.what());
    }
}

}  // namespace

void add_diff(CLI::App& app) {
    auto* command = app.add_subcommand("diff", "Compare two pictures");
    const auto options = std::make_shared<DiffOptions>();
    command->add_option("A", options->a, "a picture")->required()->type_name("FILE");
    command->add_option("B", options->b, "the other one")->required()->type_name("FILE");
    command->add_option("--tolerance", options->tolerance, "differences up to this one do not count (default: 0)")
        ->type_name("PART");
    command
        ->add_option("--picture", options->picture,
                     "file to write: the differences in colours, from black for none to white for the largest")
        ->type_name("OUT");
    add_json_option(*command, options->json);
    add_reading_options(*command, options->reading);
    add_common_options(*command, options->common);
    set_usage(*command, "A B [options]");
    command->footer(kDiffFooter);
    command->callback([options] { run_or_tell_trouble(*options); });
}

}  // namespace qx::tool
