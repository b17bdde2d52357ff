// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_Levels.h"
#include "QX/compositing/QX_Rows.h"

namespace qx {

/// Reports a number that is no mode. @return 5
int report_unimplemented_mode();

/// Chooses the level that the lookups answer from, plain for what it lacks.
void choose_compositing_kernels(Level level);

/// The library's own row of a mode, without tables.
template <class Pixel> QX_RowFunc<Pixel> own_row(bool masked, int xfer);

/// All passes of a descriptor in one row. @return null where there is no such row, or where a pass is not the library's
/// own
template <class Pixel> QX_RowFunc<Pixel> one_pass_row(const QX_BlendModeDescriptor<Pixel>& descriptor, bool masked);

template <class Pixel> struct LinearSteps;
/// The chosen level's ways into linear light and back.
template <class Pixel> const LinearSteps<Pixel>& linear_steps_now();

/// The lookups of a depth in the order of their slots: plain, linear, masked, masked and linear.
template <class Pixel> struct RowLookups { QX_RowLookup<Pixel> at[kRowLookups]; };
extern const PerDepth<RowLookups> row_lookups;

}  // namespace qx
