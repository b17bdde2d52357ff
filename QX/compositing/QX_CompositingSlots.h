// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx {

/// Fills the slots of this family: transfers, filters, alpha merges, row lookups and row drivers.
/// @param vector  the processor has the vector unit (SSE4.1)
/// @param faster  the faster rows are to be used (AVX2)
void fill_compositing_slots(bool vector, bool faster);

}  // namespace qx
