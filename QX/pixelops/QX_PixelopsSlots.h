// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Levels.h"

namespace qx {

/// Writes the room's single-thread routines into the table of slots, and chooses the rows behind others.
void fill_pixelops_slots(Level level);
/// Writes wrappers that run the kept routines in bands into a table of slots.
void add_premul_bands(void** routines);

}  // namespace qx
