// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "scene/Clip.h"
#include "scene/Keyframes.h"
#include "scene/SceneNode.h"

namespace qx::scene {

/// A place in a clip: between the frame with this index and the one behind it.
struct ClipMoment {
    int frame = 0;
    double position = 0;  ///< from 0 to less than 1; 0 for the last frame
};

inline const Rational kLeastSpeed{1, 1000}, kMostSpeed{1000};
inline const Rational kLeastRate{1, 1000}, kMostRate{1000};
/// Throw BadText for what is no number or beyond these.
Rational speed_of_text(const std::string& text);
Rational rate_of_text(const std::string& text);

/// Which moment of a clip each numbered result shows.
class TimeMap {
public:
    struct Even {
        Rational speed = 1;
        std::optional<Rational> rate;  ///< of the results; without it that of the clip
        int start = 1;                 ///< number of the first result
    };
    /// Result k shows the time k * speed / rate after the clip's begin, for all that come before its end. Throws
    /// BadText for more results than numbers have room for.
    TimeMap(const Clip& clip, const Even& even);
    /// The track tells the source's number for that of each result, from its first key to its last one. Beyond the
    /// clip's ends its first or last frame is shown. Throws BadText where no result has a number between the keys.
    TimeMap(const Clip& clip, const Track<1>& map);

    const FrameRange& numbers() const { return numbers_; }  ///< of the results
    ClipMoment at(int number) const;

private:
    const Clip& clip_;
    std::optional<Track<1>> map_;
    Rational step_ = 0;
    FrameRange numbers_;
};

ClipMoment moment_of_time(const Clip& clip, const Rational& time);
/// @param number  as numbers of pictures or frames of a movie count; need not be whole
ClipMoment moment_of_number(const Clip& clip, double number);

/// {"keys": [{"frame": F, "value": SOURCE}, ...], "interpolation": ...}. Throws SceneFault.
Track<1> read_time_track(const SceneNode& node);
Track<1> read_time_track_file(const std::string& path);

}  // namespace qx::scene
