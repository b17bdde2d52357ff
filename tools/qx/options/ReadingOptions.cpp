// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/ReadingOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "pictures/Movie.h"
#include "tools/qx/terminal/Messages.h"

namespace qx::tool {

void add_reading_options(CLI::App& command, ReadingOptions& options) {
    command
        .add_flag("--no-orient", options.as_stored,
                  "pixels as JPEG and TIFF files and movies store them, not turned as these say they are to be seen")
        ->disable_flag_override();
    command
        .add_option("--raw", options.raw,
                    "what standard input (-) has, where it has no head: its size and its pixels, as FFmpeg names them, "
                    "such as 1920x1080:rgba")
        ->type_name("WxH:FORMAT");
}

bool ReadingOptions::reads_movie(const std::string& input) const {
    const bool is_raw = !raw.empty() && pictures::is_standard_input(input);
    return !is_raw && pictures::is_read_as_movie(input);
}

void ReadingOptions::check(const std::vector<std::string>& inputs) const {
    if (!raw.empty() && std::ranges::none_of(inputs, pictures::is_standard_input))
        throw WrongUsage("--raw is for standard input, of which no input is (-)");
}

pictures::ReadOptions ReadingOptions::read_options(bool cmyk) const {
    pictures::ReadOptions read{.orient = !as_stored, .cmyk = cmyk};
    if (raw.empty()) return read;
    int width = 0, height = 0, end = 0;
    const bool has_size = std::sscanf(raw.c_str(), "%5dx%5d:%n", &width, &height, &end) == 2 && end > 0;
    if (!has_size || width < 1 || height < 1) throw WrongUsage("--raw " + raw + ": not a size and pixels WxH:FORMAT");
    const std::string format = raw.substr(static_cast<std::size_t>(end));
    if (!pictures::is_raw_format(format))
        throw WrongUsage("--raw " + raw + ": " + format + " is none of " + pictures::raw_formats());
    read.raw = {width, height, format};
    return read;
}

}  // namespace qx::tool
