// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "pictures/Picture.h"
#include "pictures/Watch.h"
#include "scene/colour/Profiles.h"

namespace qx::scene {

struct Rendering {
    standalone::Intent intent = standalone::Intent::relative;
    bool black_point = false;  ///< whether blacks are brought onto each other too
};

/// Brings a picture's colours from one profile to another, in bands on all threads, and lets it say so. The result has
/// the depth asked for; one of inks becomes opaque. Alpha stays, and with it what is under an alpha of 0: its colours
/// go along. Where both profiles are one, no colour changes. Throws pictures::Failure in the name of `subject`,
/// WorkFault or pictures::Stopped.
/// @param depth  not below the picture's own
void convert(const std::string& subject, pictures::Picture& picture, const Profile& from, const Profile& to, int depth,
             const Rendering& rendering = {}, pictures::Watch& watch = pictures::unwatched());

}  // namespace qx::scene
