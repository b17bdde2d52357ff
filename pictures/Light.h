// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Picture.h"

// Associated alpha can hold colour under an alpha of 0: light that is added and covers nothing, such as a flame.
// Straight alpha has no place for it, since there colour under alpha 0 means nothing. So a reader of associated
// alpha marks such pixels, a writer of associated alpha writes them as they were if they have stayed clear, and
// whatever else becomes of them is told to the user.
namespace qx::pictures {

inline constexpr const char* kLightIsMixed =
    "OpenEXR is meant for linear light, the other formats are not; values are taken as they are";
inline constexpr const char* kLightIsLost = "light under an alpha of 0 is lost, straight alpha has no place for it";

/// Marks the pixels of a picture with associated alpha that have alpha 0 and a colour.
void mark_light(Picture& picture);

/// True where pixel (x, y) was light and is still clear.
inline bool is_light(const Picture& picture, int x, int y) {
    if (picture.light.empty()) return false;
    return picture.light[static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.world->width) +
                         static_cast<std::size_t>(x)];
}

/// True when some pixel that was light has alpha now.
bool covers_light(const Picture& picture);

}  // namespace qx::pictures
