// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Picture.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// Options of the files that are read.
struct ReadingOptions {
    bool as_stored = false;
    /// @param cmyk  takes CMYK too
    pictures::ReadOptions read_options(bool cmyk = false) const { return {.orient = !as_stored, .cmyk = cmyk}; }
};
void add_reading_options(CLI::App& command, ReadingOptions& options);

}  // namespace qx::tool
