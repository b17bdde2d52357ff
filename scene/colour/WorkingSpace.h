// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QX/color/QX_ColorSettings.h"
#include "pictures/Picture.h"
#include "pictures/Watch.h"
#include "scene/colour/Profiles.h"

namespace qx::scene {

/// What a job asks for of its colours.
struct ColourChoices {
    bool has_space = false;  ///< else values are taken as they are
    Profile space;           ///< null: that of the background
    bool linearize = false;  ///< works in the space's linear version
    Profile output;          ///< null: the space itself
};

/// The light that a layer is blended in.
struct LightChoice {
    float gamma = 0;          ///< by this power of the values; 0 blends the values
    bool by_profile = false;  ///< by the curve of the space
};

/// The one space that pictures of different profiles are brought into. Any thread.
class WorkingSpace {
public:
    /// Throws pictures::Failure for a space that has no linear version where one is asked for.
    WorkingSpace(const Profile& space, bool linearize);

    const Profile& profile() const { return profile_; }
    /// Of blending in linear light; null where values are light already. Throws pictures::Failure.
    const QX_LinearBlendingTables* tables() const;
    /// Brings a picture into the space, at the deeper of its depth and `depth`.
    /// @param own    its profile; null stands for what its file says
    /// @param notes  gets what is to be said of it, and kMeaningIsUsual
    void take(const std::string& subject, pictures::Picture& picture, const Profile& own, int depth,
              std::vector<std::string>& notes, pictures::Watch& watch) const;
    /// Brings a result from the space to another profile, at its own depth.
    void give(const std::string& subject, pictures::Picture& picture, const Profile& output,
              pictures::Watch& watch) const;

private:
    QX_ColorSettings settings_;
    Profile profile_;
};

using LightTables = std::shared_ptr<const QX_LinearBlendingTables>;
/// Null where values are blended as they are. @param space  must be there where the choice is by its profile
LightTables tables_of(const LightChoice& light, const WorkingSpace* space);

/// What is to be said of values that are no light in a file that is meant for light; empty where there is nothing.
std::string not_light(const std::string& path, const Profile& profile);

}  // namespace qx::scene
