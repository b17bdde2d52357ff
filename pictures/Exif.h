// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace qx::pictures {

/// What an Exif block says of the picture's orientation, 1 to 8; 1, as stored, when it says nothing.
int exif_orientation(const unsigned char* data, std::size_t bytes);

}  // namespace qx::pictures
