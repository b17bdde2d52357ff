// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/world/QX_World.h"
#include "platform/tesselcore_Guid.h"

namespace qx::scene {

/// What tells a frame from any other, of its width, height, depth and pixels; not of its name. Equal on every machine.
Guid frame_id(const QX_World& frame);

}  // namespace qx::scene
