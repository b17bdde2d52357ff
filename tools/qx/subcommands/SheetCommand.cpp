// SPDX-License-Identifier: Apache-2.0
// qx sheet: a contact sheet of pictures, of numbered ones and of movies.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>

#include "pictures/Movie.h"
#include "platform/standalone/Host.h"
#include "scene/Clip.h"
#include "scene/Composite.h"
#include "scene/Faults.h"
#include "scene/InOrder.h"
#include "scene/NumberedFiles.h"
#include "tools/qx/Commands.h"
#include "tools/qx/Library.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/sheet/Font.h"
#include "tools/qx/sheet/Thumbnail.h"
#include "tools/qx/terminal/Progress.h"
#include "tools/qx/work/Files.h"

namespace qx::tool {
namespace {

constexpr int kSheetGap = 12;
constexpr int kUsualSide = 240, kUsualFrames = 12;

struct SheetOptions {
    CommonOptions common;
    ReadingOptions reading;
    std::vector<std::string> inputs;
    std::string output, columns, size, frames;
    bool label = false;
};

const char* const kSheetFooter =
    R"(FRAMES are pictures, names with a place for a number (frame.####.png: all that are there), and movies,
of which --frames are shown, evenly from the first to the last. Transparency shows as checkers.

Example:
  qx sheet out/*.png --label -o sheet.png
  qx sheet clip.mp4 --frames 20 --columns 5 -o sheet.jpg)";

/// One picture of the sheet.
struct Cell {
    std::string label;
    std::function<scene::SharedPicture(pictures::Watch&)> picture;
};

std::string name_of(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

Cell cell_of_file(const std::string& path, const pictures::ReadOptions& options) {
    return {name_of(path), [path, options](pictures::Watch& watch) {
                return std::make_shared<const pictures::Picture>(pictures::read_picture(path, watch, options));
            }};
}

void add_movie(const std::string& path, int most, std::vector<Cell>& cells) {
    const std::shared_ptr<scene::Clip> clip = scene::open_movie_clip(path);
    const int shown = std::min(most, clip->frames());
    for (int i = 0; i < shown; ++i) {
        const int index = shown == 1 ? 0 : static_cast<int>(std::int64_t{i} * (clip->frames() - 1) / (shown - 1));
        cells.push_back({name_of(path) + " " + std::to_string(index),
                         [clip, index](pictures::Watch& watch) { return clip->frame(index, watch); }});
    }
}

std::vector<Cell> cells_of(const SheetOptions& options) {
    const int frames = options.frames.empty() ? kUsualFrames : whole_number("--frames", options.frames, 1, 10'000);
    const pictures::ReadOptions reading = options.reading.read_options();
    std::vector<Cell> cells;
    for (const std::string& input : options.inputs) {
        const auto pattern = value_of("FRAMES", [&] { return scene::FramePattern(input); });
        if (pattern.has_place()) {
            const auto numbers = scene::numbers_there(pattern);
            if (numbers.empty()) throw pictures::Failure(input, "no frame is there");
            for (const int number : numbers) cells.push_back(cell_of_file(pattern.name(number), reading));
        } else if (pictures::is_read_as_movie(input)) {
            add_movie(input, frames, cells);
        } else {
            cells.push_back(cell_of_file(input, reading));
        }
    }
    return cells;
}

/// The size of cells and how they lie.
struct Grid {
    int columns, rows, width, height;
    int step_x() const { return width + kSheetGap; }
    int step_y() const { return height + kSheetGap; }
};

Grid grid_of(const SheetOptions& options, int cells, bool label) {
    const int side = options.size.empty() ? kUsualSide : whole_number("--size", options.size, 16, 4096);
    const int usual = static_cast<int>(std::ceil(std::sqrt(cells)));
    const int columns = options.columns.empty() ? usual : whole_number("--columns", options.columns, 1, 1000);
    return {std::min(columns, cells), (cells + columns - 1) / columns, side, side + (label ? kCaptionHeight : 0)};
}

/// The picture on checkers, as large as fits.
std::unique_ptr<QX_World> thumbnail(const std::string& name, const QX_World& picture, int side,
                                    pictures::Watch& watch) {
    const auto eight = pictures::at_depth(name, picture, 8);
    int width = 0, height = 0;
    fit(*eight, side, &width, &height);
    auto cell = pictures::new_world(name, width, height, 8);
    draw_checkers(*cell);
    const auto small = scaled(*eight, width, height);
    scene::Transfer over;
    over.layer = small.get();
    scene::must(scene::composite(over, *cell, watch), name);
    return cell;
}

/// In the middle of its cell.
void paste(const QX_World& picture, const Grid& grid, int side, int index, const std::string& label, QX_World& sheet) {
    const int left = kSheetGap + index % grid.columns * grid.step_x(),
              top = kSheetGap + index / grid.columns * grid.step_y();
    scene::Transfer copy;
    copy.layer = &picture;
    copy.x = left + (side - picture.width) / 2;
    copy.y = top + (side - picture.height) / 2;
    scene::must(scene::composite(copy, sheet), "sheet");
    if (label.empty()) return;
    const auto room = static_cast<std::size_t>(grid.width / (kGlyphAdvance * kCaptionScale));
    const std::string shown = label.size() > room ? label.substr(label.size() - room) : label;  // numbers stand last
    draw_text(sheet, left, top + side + 5, kCaptionScale, kInk, shown);
}

pictures::Picture draw_sheet(const std::vector<Cell>& cells, const SheetOptions& options) {
    const int count = static_cast<int>(cells.size());
    const Grid grid = grid_of(options, count, options.label);
    const int side = grid.width;
    pictures::Picture sheet;
    sheet.world = pictures::new_world(options.output, kSheetGap + std::int64_t{grid.columns} * grid.step_x(),
                                      kSheetGap + std::int64_t{grid.rows} * grid.step_y(), 8);
    pictures::each_pixel<QX_Pixel8>(*sheet.world, [](QX_Pixel8& p, int, int) { p = kPaper; });
    Progress progress("reading", PartWatch::kSteps * count);
    SignalWatch signals;
    scene::in_order(count, standalone::PoolThreads(), signals, [&](int i, pictures::Watch& watch) -> scene::InTurn {
        const Cell& cell = cells[static_cast<std::size_t>(i)];
        PartWatch part(progress, watch);
        const scene::SharedPicture picture = cell.picture(part);
        const std::shared_ptr<QX_World> small = thumbnail(cell.label, *picture->world, side, watch);
        return [&, small, i] { paste(*small, grid, side, i, options.label ? cell.label : "", *sheet.world); };
    });
    return sheet;
}

void run(const SheetOptions& options) {
    apply_common_options(options.common);
    check_output_option(options.output);
    const Library library;
    const pictures::Picture sheet = draw_sheet(cells_of(options), options);
    write_result(options.output, sheet, 8, {});
}

}  // namespace

void add_sheet(CLI::App& app) {
    auto* command = app.add_subcommand("sheet", "Draw a contact sheet of pictures or of a movie's frames");
    const auto options = std::make_shared<SheetOptions>();
    command->add_option("FRAMES", options->inputs, "pictures, numbered pictures, movies")
        ->required()
        ->type_name("FILE");
    command->add_option("-o,--output", options->output, "file to write: " + pictures::known_endings())
        ->required()
        ->type_name("OUT");
    command->add_option("--columns", options->columns, "pictures in a row (default: as many as rows)")->type_name("N");
    command->add_option("--size", options->size, "longest side of a picture on the sheet, in pixels (default: 240)")
        ->type_name("N");
    command->add_option("--frames", options->frames, "of each movie (default: 12)")->type_name("N");
    command->add_flag("--label", options->label, "the name below each picture")->disable_flag_override();
    add_reading_options(*command, options->reading);
    add_common_options(*command, options->common);
    set_usage(*command, "FRAMES... [options] -o OUT");
    command->footer(kSheetFooter);
    command->callback([options] { run(*options); });
}

}  // namespace qx::tool
