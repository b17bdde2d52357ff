// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Movie.h"
#include "scene/colour/Profiles.h"

namespace qx::scene {

/// What a movie says of values of this profile; that it does not know where movies have no number for it.
pictures::MovieColours movie_colours_of(const Profile& profile);
/// The profile of values of a movie that says this, or null; what it does not know of them counts as BT.709.
Profile profile_of_movie(const pictures::MovieColours& colours);

}  // namespace qx::scene
