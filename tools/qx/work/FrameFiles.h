// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "pictures/Picture.h"

// What commands share that write many frames.
namespace qx::tool {

/// True when a file is there, can be read to its end, has this size and the mark of this job: what a frame's writer was
/// stopped in, or another job or program left, is made anew. An empty mark is any.
struct FrameSize {
    int width, height;
};
bool is_whole(const std::string& path, const FrameSize& size, const std::string& mark, pictures::Watch& watch);

/// `check_output_option` of commands that write movies too.
void check_frames_option(const std::string& path);

}  // namespace qx::tool
