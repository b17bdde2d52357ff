// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scene/Composite.h"

namespace qx::tool {

/// Composites a layer through its matrices, of which there is at least one; see `composite`.
int transform(const Transfer& transfer, QX_World& background, Progress* progress);

}  // namespace qx::tool
