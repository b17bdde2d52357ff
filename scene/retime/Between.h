// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "scene/Clip.h"
#include "scene/retime/Quality.h"

namespace qx::scene {

struct BetweenOptions {
    BetweenMethod method = BetweenMethod::flow;
    QX_Solvan_AlgoParams flow = flow_params({});
    /// To work with and of the results. 0: that of the deeper frame, and frames of 8 bits are worked on at 16, since at
    /// 8 bits still pixels lose a level at some positions.
    int depth = 0;
    bool keeps_copies = false;  ///< frames that are shown as they are stay at their own depth
    int depth_of_copies() const { return keeps_copies ? 0 : depth; }
};

/// Pictures between two frames of one size. Any number of threads may ask at once; their vectors are made once.
class FramePair {
public:
    /// @param subject  what messages are about
    FramePair(std::string subject, SharedPicture first, SharedPicture second, const BetweenOptions& options);

    /// What is to be shown at a position, from 0 for the first frame to 1 for the second one.
    enum class Kind { first, second, made };
    Kind kind(double position) const;
    /// Copies are the very frames. Throws pictures::Failure, WorkFault or pictures::Stopped.
    SharedPicture at(double position, pictures::Watch& watch);

private:
    using World = std::unique_ptr<QX_World>;
    /// A frame as it is worked on, its colours times its alpha.
    struct Ready {
        World world;
        Guid id{};
        bool is_transparent = false;
    };
    Ready ready(const pictures::Picture& frame) const;
    void get_ready();
    void render(QX_SolvanMode mode, double position, QX_World& first, QX_World& second, QX_World& output,
                pictures::Watch& watch) const;
    World tweened(double position, pictures::Watch& watch);
    World opaque_copy(const QX_World& frame) const;
    World like(const QX_World& frame) const;
    SharedPicture result(World world) const;
    bool is_transparent() const { return first_ready_.is_transparent || second_ready_.is_transparent; }

    const std::string subject_;
    const SharedPicture first_, second_;
    const BetweenOptions options_;
    const int depth_, work_depth_;
    const QX_Solvan_AlgoParams percentages_;
    bool are_equal_;
    std::mutex mutex_;  // of making what follows
    bool is_ready_ = false;
    Ready first_ready_, second_ready_;
    std::mutex vectors_;  // of making the vectors, by the first picture
    bool have_vectors_ = false;
};

/// The position as pictures by motion take it: in steps of 0.005.
double flow_position(double position);

/// The picture at another depth, or itself for its own or 0.
SharedPicture brought_to_depth(const std::string& subject, const SharedPicture& picture, int depth);

/// True where both have the same pixels at the same depth.
bool equal_pictures(const pictures::Picture& a, const pictures::Picture& b);

}  // namespace qx::scene
