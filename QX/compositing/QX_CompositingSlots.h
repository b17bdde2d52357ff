// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Levels.h"

namespace qx {

/// Fills the slots of this family: rectangles behind others, transfers, filters, alpha merges, row lookups and row
/// drivers.
void fill_compositing_slots(Level level);

}  // namespace qx
