// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/compositing/QX_Levels.h"

namespace qx {

/// Reports a number that is no mode. @return 5
int report_unimplemented_mode();

/// Chooses the levels that the lookups answer from: the best first, plain for what it lacks.
void choose_row_levels(const Level* best);

/// The lookups of a depth in the order of their slots: plain, linear, masked, masked and linear.
template <class Pixel> struct RowLookups { QX_RowLookup<Pixel> at[kRowLookups]; };
extern const PerDepth<RowLookups> row_lookups;

}  // namespace qx
