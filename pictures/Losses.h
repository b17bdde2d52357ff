// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "pictures/Picture.h"

// What is lost on the way from files through a depth into another file, as notes behind a file's name.
namespace qx::pictures {

inline constexpr const char* kOutsideIsLost = "what lies outside its display window is left out";

/// What holds all values of both.
Precision together(Precision a, Precision b);

/// A layer is laid onto the picture. Half floats stay what they are where no layer tells more.
void add_precision(Picture& onto, const Picture& layer);

/// What of an input is lost at this depth. Before `bring_to_depth`.
std::vector<std::string> lost_at_depth(const Picture& picture, int depth);

/// What a result loses that is not of the picture's size, or has it as a layer or a mask.
std::vector<std::string> lost_beside(const Picture& picture);

/// What a file of this name will not hold of the picture, or of the file that it came from. After the work on the
/// pixels.
std::vector<std::string> left_out(const std::string& path, const Picture& picture, int depth,
                                  const WriteOptions& options = {});

}  // namespace qx::pictures
