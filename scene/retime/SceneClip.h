// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scene/retime/Retimer.h"

namespace qx::scene {

/// What a scene says of a clip.
struct ClipChoice {
    std::string path;  ///< of a movie, or with a place for the numbers of pictures
    int offset = 0;
    Rational speed = 1;
    std::optional<Track<1>> map;   ///< in place of a speed
    std::optional<Rational> rate;  ///< frames a second that the clip is taken to have
    BetweenMethod method = BetweenMethod::flow;
    FlowQuality quality = FlowQuality::good;
    CutSearch cuts = CutSearch::automatic;
    std::vector<int> begins;  ///< numbers of frames that begin a shot

    bool is_pictures() const;
    std::vector<std::string> files() const;  ///< those that are there
};

/// Throws SceneFault, also where no file is there.
std::shared_ptr<const ClipChoice> read_clip(const SceneNode& node, const std::string& folder);

/// A clip that is shown in frames of a scene. For any number of threads.
class SceneClip {
public:
    /// Throws pictures::Failure, and BadText where the clip has no frame that is to begin a shot.
    /// @param rate   the scene's
    /// @param depth  the scene's: pictures that are made have it if it is above 8
    /// @param orient  turns pictures as they are to be seen
    SceneClip(const ClipChoice& choice, const Rational& rate, int depth, bool orient);
    /// What a frame of the scene shows; before the clip's begin and behind its end its first or last frame.
    pictures::Picture frame(int number, pictures::Watch& watch);
    const std::vector<std::string>& notes() const { return notes_; }

private:
    ClipMoment moment(int number) const;
    const ClipChoice choice_;
    std::unique_ptr<Clip> clip_;
    Rational step_ = 0;  ///< seconds of the clip for a frame of the scene
    std::unique_ptr<Retimer> retimer_;
    std::vector<std::string> notes_;
};

}  // namespace qx::scene
