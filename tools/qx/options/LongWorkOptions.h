// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "scene/Frames.h"
#include "tools/qx/terminal/Progress.h"

namespace CLI {
class App;
}

namespace qx::tool {

/// Options of commands that make many frames.
struct LongWorkOptions {
    std::string progress, shard;
    bool resume = false, keep_going = false, stats = false;

    FrameProgress::Style style() const;  ///< throws WrongUsage, as what follows does
    /// The part of the frames that --shard I/N names: every Nth from the Ith on. One without frames ends the command.
    scene::FrameList part_of(const scene::FrameList& frames) const;
    /// The same, of frames in a row, for work where neighbours share what is costly.
    scene::FrameRange row_of(const scene::FrameRange& frames) const;
    /// Refuses what a movie cannot do, which is made as a whole.
    void check_for_movie() const;

private:
    struct Share {
        int part, parts;  ///< from 1
    };
    Share share_of(int frames) const;
};
void add_long_work_options(CLI::App& command, LongWorkOptions& options);

}  // namespace qx::tool
