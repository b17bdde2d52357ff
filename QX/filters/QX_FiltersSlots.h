// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lanes/Levels.h"

namespace qx {

/// Writes the filters' routines into the table of routines, and chooses their kernels.
void fill_filters_slots(Level level);

}  // namespace qx
