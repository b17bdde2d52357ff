// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Processor.h"

namespace qx {
/// Puts the samplers and the copies of rectangles into the table of slots: the plain forms, then those of the levels.
void fill_sampling_slots(const Processor& processor);
}  // namespace qx
