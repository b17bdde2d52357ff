// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "pictures/Files.h"
#include "pictures/Watch.h"

namespace qx::pictures {

/// Floats that are no picture.
struct FloatChannel {
    std::string name;
    const float* values;  ///< of the first pixel; row by row, without gaps
    std::size_t step;     ///< floats from one pixel to the next
};

/// Writes them as OpenEXR. The file is not committed. Throws Failure or Stopped.
void write_exr_channels(OutputFile& file, int width, int height, const std::vector<FloatChannel>& channels,
                        Watch& watch);

}  // namespace qx::pictures
