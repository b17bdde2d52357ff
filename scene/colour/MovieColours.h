// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Movie.h"
#include "scene/colour/Profiles.h"

namespace qx::scene {

/// What a movie says of values of this profile; that it does not know where movies have no number for it.
pictures::MovieColours movie_colours_of(const Profile& profile);

}  // namespace qx::scene
