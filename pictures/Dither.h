// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "pictures/Picture.h"

namespace qx::pictures {

/// Brings a deeper picture to 8 bits with noise in place of rounding. The noise begins at its start and one picture
/// takes it at a time, on one thread, so that the same picture gives the same pixels every time.
void dither_to_8(const std::string& path, Picture& picture);

}  // namespace qx::pictures
