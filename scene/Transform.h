// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "pictures/Watch.h"
#include "scene/Transfer.h"

namespace qx::scene {

/// Composites a layer through its matrices, of which there is at least one; see `composite`.
int transform(const Transfer& transfer, QX_World& background, pictures::Watch& watch);

}  // namespace qx::scene
