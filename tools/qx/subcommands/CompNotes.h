// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/M_Matrix.h"
#include "scene/LayerPlace.h"

namespace qx::tool {

/// A layer of which nothing can be seen is hardly meant: says so. @param matrix  from its pixels to the background's
void note_unseen(const std::string& file, const scene::Extent& layer, const M_Matrix3& matrix,
                 const scene::Extent& background);

}  // namespace qx::tool
