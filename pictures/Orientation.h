// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Picture.h"

namespace qx::pictures {

/// How pixels as they are to be seen lie in what is stored, by an orientation of 1 to 8, as EXIF numbers them: where
/// the sides are exchanged, the column that is seen is a stored row; then each may run backwards.
struct Turn {
    bool exchanged, columns_back, rows_back;
};
Turn turn_of(int orientation);

/// Turns the pixels of a picture, and what lies beside them, as `in_file` says.
void turn(const std::string& path, Picture& picture);

}  // namespace qx::pictures
