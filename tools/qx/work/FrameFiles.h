// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "pictures/Picture.h"

// What commands share that write many frames.
namespace qx::tool {

/// What a result is to be that is left alone.
struct WantedFrame {
    int width, height;
    std::string mark;                 ///< of this job
    std::int64_t inputs_changed = 0;  ///< when what it shows was last written
};
/// True when a file is there, is no older than what it shows, can be read to its end, and has this size and this mark:
/// what a frame's writer was stopped in, or another job or program left, is made anew.
bool is_whole(const std::string& path, const WantedFrame& wanted, pictures::Watch& watch);

/// `check_output_option` of commands that write movies too.
void check_frames_option(const std::string& path);

}  // namespace qx::tool
