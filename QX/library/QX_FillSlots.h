// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Processor.h"

namespace qx {
/// Fills the cleared table of routines with the single-thread forms for a processor.
void fill_slots(const Processor& processor);
}  // namespace qx
