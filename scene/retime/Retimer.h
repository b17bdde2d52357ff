// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "scene/retime/Between.h"
#include "scene/retime/Cuts.h"
#include "scene/retime/TimeMap.h"

namespace qx::scene {

enum class OnCut { hold, blend };
inline constexpr const char* kOnCutWords[] = {"hold", "blend"};

struct RetimeOptions {
    BetweenOptions between;
    CutSearch cuts = CutSearch::automatic;
    std::vector<int> begins;  ///< of a list of cuts: indices of frames that begin a shot
    OnCut on_cut = OnCut::hold;
};

/// The pictures of a clip at any moments. For any number of threads.
class Retimer {
public:
    Retimer(Clip& clip, const RetimeOptions& options);

    struct Shown {
        SharedPicture picture;
        bool is_made;  ///< else it is a frame of the clip
    };
    /// Throws pictures::Failure, WorkFault or pictures::Stopped.
    Shown at(const ClipMoment& moment, pictures::Watch& watch);

    /// The frames before which a cut was met so far, in order.
    std::vector<int> cuts() const;
    /// Pairs whose motion was followed so far.
    int pairs() const;

private:
    SharedPicture copy(int frame, pictures::Watch& watch);
    bool is_cut(int frame, pictures::Watch& watch);
    std::shared_ptr<FramePair> between(int frame, BetweenMethod method, pictures::Watch& watch);

    Clip& clip_;
    const RetimeOptions options_;
    Cuts cut_search_;
    mutable std::mutex mutex_;  // of what follows
    std::map<int, std::weak_ptr<FramePair>> pairs_;
    std::set<int> cuts_, followed_;
};

}  // namespace qx::scene
