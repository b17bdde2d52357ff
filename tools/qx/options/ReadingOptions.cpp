// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/options/ReadingOptions.h"

#include <CLI/CLI.hpp>

namespace qx::tool {

void add_reading_options(CLI::App& command, ReadingOptions& options) {
    command
        .add_flag("--no-orient", options.as_stored,
                  "pixels as JPEG and TIFF files store them, not turned as these say they are to be seen")
        ->disable_flag_override();
}

}  // namespace qx::tool
