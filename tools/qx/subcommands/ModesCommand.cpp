// SPDX-License-Identifier: Apache-2.0
// qx modes: the list of all modes, or a contact sheet of them on two pictures.
#include <CLI/CLI.hpp>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "pictures/Picture.h"
#include "scene/Composite.h"
#include "scene/Faults.h"
#include "scene/Modes.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/sheet/Font.h"
#include "tools/qx/sheet/Thumbnail.h"
#include "tools/qx/terminal/Interrupt.h"
#include "tools/qx/terminal/Messages.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"

namespace qx::tool {
namespace {

constexpr int kThumbnail = 368;  // wide enough for the longest name at twice the size of the font
constexpr int kColumns = 7;
constexpr int kGap = 16;

struct ModesOptions {
    CommonOptions common;
    std::string background, layer, output;
    bool list = false, json = false;
};

/// The two pictures as thumbnails, and the mask of the mode that has no meaning without one.
struct Pictures {
    std::unique_ptr<QX_World> background, layer, mask;
    int layer_x, layer_y;
};

std::unique_ptr<QX_World> thumbnail(const std::string& file, int side_x, int side_y, bool* has_alpha) {
    FileProgress progress("reading");
    const pictures::Picture picture = pictures::read_picture(file, progress);
    *has_alpha = picture.has_alpha && pictures::any_transparency(*picture.world);
    const auto world = pictures::at_depth(file, *picture.world, 8);
    int width = 0, height = 0;
    fit(*world, side_x, &width, &height);
    if (height > side_y) fit(*world, side_y, &width, &height);
    return scaled(*world, width, height);
}

Pictures read_pair(const ModesOptions& options) {
    bool has_alpha = false;
    Pictures pair{};
    pair.background = thumbnail(options.background, kThumbnail, kThumbnail, &has_alpha);
    const QX_World& background = *pair.background;
    pair.layer = thumbnail(options.layer, background.width, background.height, &has_alpha);
    if (!has_alpha) soften_edges(*pair.layer);
    pair.layer_x = (background.width - pair.layer->width) / 2;
    pair.layer_y = (background.height - pair.layer->height) / 2;
    pair.mask = ramp(background.width, background.height);
    return pair;
}

/// One mode's result, laid over checkers on the sheet.
void draw_cell(const Pictures& pair, const scene::Mode& mode, int x, int y, QX_World& sheet) {
    const auto result = pictures::at_depth("sheet", *pair.background, 8);
    scene::Transfer transfer;
    transfer.layer = pair.layer.get();
    transfer.x = pair.layer_x;
    transfer.y = pair.layer_y;
    transfer.mode = mode.number;
    transfer.mask = mode.number == xfer_mask_crossfade ? pair.mask.get() : nullptr;
    SignalWatch watch;
    scene::must(scene::composite(transfer, *result, watch), mode.name);

    const auto cell = pictures::new_world("sheet", result->width, result->height, 8);
    draw_checkers(*cell);
    scene::Transfer onto;
    onto.layer = result.get();
    scene::must(scene::composite(onto, *cell, watch), mode.name);
    onto.layer = cell.get();
    onto.x = x;
    onto.y = y;
    scene::must(scene::composite(onto, sheet, watch), mode.name);
    const std::string caption = std::to_string(mode.number) + " " + mode.name;
    draw_text(sheet, x, y + result->height + 5, kCaptionScale, kInk, caption);
}

pictures::Picture draw_sheet(const Pictures& pair) {
    const auto& modes = scene::all_modes();
    const int rows = (static_cast<int>(modes.size()) + kColumns - 1) / kColumns;
    const int step_x = kThumbnail + kGap, step_y = pair.background->height + kCaptionHeight + kGap;
    pictures::Picture sheet;
    sheet.world = pictures::new_world("sheet", kGap + kColumns * step_x, kGap + rows * step_y, 8);
    pictures::each_pixel<QX_Pixel8>(*sheet.world, [](QX_Pixel8& p, int, int) { p = kPaper; });
    Progress progress("modes", static_cast<std::int64_t>(modes.size()));
    for (int i = 0; i < static_cast<int>(modes.size()); ++i) {
        const scene::Mode& mode = modes[static_cast<std::size_t>(i)];
        draw_cell(pair, mode, kGap + i % kColumns * step_x, kGap + i / kColumns * step_y, *sheet.world);
        progress.reach(i + 1);
    }
    return sheet;
}

std::string kebab(std::string name) {
    std::replace(name.begin(), name.end(), '_', '-');
    return name;
}

std::string list_as_json() {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const scene::Mode& mode : scene::all_modes()) {
        list.push_back({{"number", mode.number},
                        {"name", kebab(mode.name)},
                        {"aliases", mode.aliases},
                        {"kind", scene::kModeKindWords[static_cast<int>(mode.kind)]},
                        {"words", mode.words}});
        if (mode.formula != nullptr) list.back()["formula"] = mode.formula;
    }
    return list.dump(2) + "\n";
}

std::string list_as_text() {
    std::ostringstream list;
    for (const scene::Mode& mode : scene::all_modes()) {
        list << std::setw(3) << mode.number << "  " << std::left << std::setw(29) << kebab(mode.name) << std::right
             << mode.words;
        for (const char* alias : mode.aliases) list << (alias == mode.aliases.front() ? "; also " : ", ") << alias;
        list << '\n';
    }
    return list.str();
}

void check(const ModesOptions& options) {
    if (options.list) {
        if (!options.background.empty()) throw WrongUsage("--list takes no pictures");
        if (!options.output.empty()) throw WrongUsage("--list writes to standard output, not to -o");
        return;
    }
    if (options.json) throw WrongUsage("--json needs --list");
    if (options.background.empty()) throw WrongUsage("A is required, or --list");
    if (options.layer.empty()) throw WrongUsage("B is required");
    if (options.output.empty()) throw WrongUsage("--output is required");
}

void run(const ModesOptions& options) {
    check(options);
    if (options.list) {
        std::cout << (options.json ? list_as_json() : list_as_text()) << std::flush;
        if (!std::cout) throw WorkFailed(kNoStandardOutput);
        return;
    }
    apply_common_options(options.common);
    check_output_option(options.output);
    const Library library;
    const Pictures pair = read_pair(options);
    write_result(options.output, draw_sheet(pair), 8, {});
}

}  // namespace

void add_modes(CLI::App& app) {
    auto* command = app.add_subcommand("modes", "List the 43 modes, or draw a contact sheet of them on two pictures");
    const auto options = std::make_shared<ModesOptions>();
    command->add_option("A", options->background, "background")->type_name("FILE");
    command->add_option("B", options->layer, "layer, at full opacity; without alpha of its own it gets soft edges")
        ->type_name("FILE");
    command->add_option("-o,--output", options->output, "file to write: " + pictures::known_endings())
        ->type_name("FILE");
    command->add_flag("--list", options->list, "number, name, what it does and other names of each mode")
        ->disable_flag_override();
    command->add_flag("--json", options->json, "the list for programs, with kinds and formulas")
        ->disable_flag_override();
    add_common_options(*command, options->common);
    set_usage(*command, "--list [--json] | A B [options] -o OUT");
    command->footer(
        "Transparency of a result shows as checkers. Mode -2 gets a horizontal ramp as its mask.\n\n"
        "Example:\n  qx modes --list\n  qx modes photo.jpg logo.png -o sheet.png");
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
