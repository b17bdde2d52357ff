// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "pictures/Picture.h"

namespace qx::tool {

/// 32 hexadecimal digits that tell a picture by its size, its depth and its straight values as the file holds them: the
/// same for every format that holds the same ones. They are XXH128 over width, height and depth (8, 16 or 32) as 32-bit
/// numbers, then red, green, blue and alpha of each pixel, row by row; 16 bits from 0 to 65535, floats as their bits,
/// all with the low byte first. Alpha is full in a file without.
std::string fingerprint(const std::string& path, const pictures::Picture& picture);

/// The same of a text.
std::string fingerprint(const std::string& text);

}  // namespace qx::tool
