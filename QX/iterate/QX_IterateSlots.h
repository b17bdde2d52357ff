// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx {

/// Writes the family's single-thread routines into the table of slots.
void fill_iterate_slots();
/// Writes wrappers that run the kept routines in bands into a table of slots.
void add_iterate_bands(void** routines);

}  // namespace qx
