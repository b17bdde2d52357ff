// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx {
/// Fills the cleared table of routines with the single-thread forms.
/// @param vector  the processor has the vector unit
/// @param faster  the faster rows are to be used
void fill_slots(bool vector, bool faster);
}  // namespace qx
