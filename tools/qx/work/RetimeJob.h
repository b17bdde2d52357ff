// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "scene/Clip.h"
#include "scene/retime/Retimer.h"
#include "tools/qx/options/RetimeOptions.h"
#include "tools/qx/work/LongWork.h"

// The results of qx retime, made and written.
namespace qx::tool {

/// What is told at the end.
struct RetimeCounts {
    int copied = 0, made = 0, skipped = 0;
    std::vector<int> failed;  ///< numbers of results
};

struct RetimeJob {
    const RetimeCommandOptions& options;
    scene::Clip& clip;
    const scene::TimeMap& map;
    const scene::RetimeOptions& retime;
    const scene::FrameRange range;
    scene::Retimer& retimer;
    pictures::Watch& watch;
    RetimeCounts counts{};
    Stages stages{};

    int depth() const { return retime.between.depth != 0 ? retime.between.depth : clip.facts().depth; }
    int at_once() const;  ///< pairs of frames
};

/// Make all results, in their order. Throw what scene::Retimer throws.
void retime_to_pictures(RetimeJob& job, const scene::FramePattern& names);
void retime_to_movie(RetimeJob& job);

}  // namespace qx::tool
