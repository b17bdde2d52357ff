// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "pictures/Picture.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// Options of the files that are read.
struct ReadingOptions {
    bool as_stored = false;
    std::string raw;
    /// Throws WrongUsage. @param cmyk  takes CMYK too
    pictures::ReadOptions read_options(bool cmyk = false) const;
    /// Whether an input is read as a movie, which pixels without a head never are. Throws pictures::Failure.
    bool reads_movie(const std::string& input) const;
    /// Throws WrongUsage where --raw is for none of the inputs.
    void check(const std::vector<std::string>& inputs) const;
};
void add_reading_options(CLI::App& command, ReadingOptions& options);

}  // namespace qx::tool
