// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "scene/Clip.h"

namespace qx::scene {

/// Luma of a frame, from 0 to 1, at about 64 pixels of width.
struct SmallLuma {
    int width = 0, height = 0;
    double shrunk = 1;  ///< pixels of the frame for one of these
    std::vector<float> values;
};
SmallLuma small_luma(const QX_World& frame);

/// What is left between two frames when the second one is moved to where it fits best, and beside that how much they
/// hold.
struct Difference {
    double left = 0, contrast = 0;
};
Difference difference(const SmallLuma& a, const SmallLuma& b);

/// True when the second frame of a pair begins a shot.
/// @param before  of the pair before it; null where there is none
/// @param after  of the pair behind it; null where there is none
bool is_cut(const Difference& pair, const Difference* before, const Difference* after);

enum class CutSearch { automatic, none, listed };

/// Where a clip's shots begin. For any number of threads.
class Cuts {
public:
    /// @param begins  of a list: the indices of frames that begin a shot
    Cuts(Clip& clip, CutSearch search, std::vector<int> begins = {});
    /// True when the frame behind this one begins a shot.
    bool behind(int frame, pictures::Watch& watch);

private:
    const SmallLuma& luma(int frame, pictures::Watch& watch);
    const Difference* difference_behind(int frame, pictures::Watch& watch);

    Clip& clip_;
    const CutSearch search_;
    const std::vector<int> begins_;
    std::mutex mutex_;  // of what follows
    std::map<int, std::unique_ptr<const SmallLuma>> lumas_;
    std::map<int, Difference> differences_;
};

}  // namespace qx::scene
