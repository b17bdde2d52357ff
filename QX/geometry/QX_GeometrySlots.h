// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace qx {

/// Writes the room's single-thread routines, copies and transforms, into the table of slots.
void fill_geometry_slots();
/// Writes wrappers that run the kept routines in bands into a table of slots.
void add_transform_bands(void** routines);

}  // namespace qx
