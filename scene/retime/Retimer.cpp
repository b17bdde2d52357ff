// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/Retimer.h"

namespace qx::scene {

Retimer::Retimer(Clip& clip, const RetimeOptions& options)
    : clip_(clip), options_(options), cut_search_(clip, options.cuts, options.begins) {}

SharedPicture Retimer::copy(int frame, pictures::Watch& watch) {
    return brought_to_depth(clip_.name_of(frame), clip_.frame(frame, watch), options_.between.depth_of_copies());
}

bool Retimer::is_cut(int frame, pictures::Watch& watch) {
    if (!cut_search_.behind(frame, watch)) return false;
    const std::lock_guard lock(mutex_);
    cuts_.insert(frame + 1);
    return true;
}

/// One for all that ask at a time, so that they share the vectors even where nothing is kept.
std::shared_ptr<FramePair> Retimer::between(int frame, BetweenMethod method, pictures::Watch& watch) {
    {
        const std::lock_guard lock(mutex_);
        if (auto shared = pairs_[frame].lock()) return shared;
    }
    BetweenOptions options = options_.between;
    options.method = method;
    auto made = std::make_shared<FramePair>(clip_.name_of(frame), clip_.frame(frame, watch),
                                            clip_.frame(frame + 1, watch), options);
    const std::lock_guard lock(mutex_);
    std::weak_ptr<FramePair>& known = pairs_[frame];
    if (auto shared = known.lock()) return shared;
    known = made;
    return made;
}

Retimer::Shown Retimer::at(const ClipMoment& moment, pictures::Watch& watch) {
    const auto [frame, position] = moment;
    if (position <= 0 || frame + 1 >= clip_.frames()) return {copy(frame, watch), false};
    BetweenMethod method = options_.between.method;
    if (method != BetweenMethod::nearest && is_cut(frame, watch))
        method = options_.on_cut == OnCut::hold ? BetweenMethod::nearest : BetweenMethod::blend;
    if (method == BetweenMethod::nearest) return {copy(position > 0.5 ? frame + 1 : frame, watch), false};
    const auto pair = between(frame, method, watch);
    const bool is_made = pair->kind(position) == FramePair::Kind::made;
    if (is_made && method == BetweenMethod::flow) {
        const std::lock_guard lock(mutex_);
        followed_.insert(frame);
    }
    return {pair->at(position, watch), is_made};
}

std::vector<int> Retimer::cuts() const {
    const std::lock_guard lock(mutex_);
    return {cuts_.begin(), cuts_.end()};
}

int Retimer::pairs() const {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(followed_.size());
}

}  // namespace qx::scene
