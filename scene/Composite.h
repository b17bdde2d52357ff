// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Watch.h"
#include "scene/Transfer.h"

namespace qx::scene {

/// Composites a layer of the background's depth, in bands on all threads where the mode allows; through its matrices
/// where it has some. The watch hears of rows as the work counts them.
/// @return 0 or the first code of a band; kQX_Interrupted when the watch stops it
int composite(const Transfer& transfer, QX_World& background, pictures::Watch& watch = pictures::unwatched());

}  // namespace qx::scene
