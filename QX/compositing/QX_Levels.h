// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_LinearBlendingTables.h"
#include "QX/compositing/QX_Modes.h"
#include "QX/indep/QX_PerDepth.h"
#include "QX/indep/QX_SlotsOf.h"
#include "lanes/Levels.h"

/// The compositing kernels of a level.
namespace qx {

/// Row routines without tables, by mask state and place of the mode; null for a number that is no mode.
template <class Pixel> struct RowSet { QX_RowFunc<Pixel> at[2][modes::kPlaces]; };

/// Filters in the order of their slots: black, white, grey, each forward and reverse; and the alpha merge.
template <class Pixel> struct FilterSet {
    QX_FilterFunc<Pixel> filter[kFilters];
    QX_MergeFunc<Pixel> merge;
};

struct CompositingKernels {
    PerDepth<RowSet> rows;
    /// Filters, row and merge, or the row of xfer_behind and the mode's own, in one pass; null for modes without these.
    PerDepth<RowSet> one_pass;
    PerDepth<FilterSet> filters;
};

QX_DECLARE_LEVELS(CompositingKernels, compositing_kernels)

}  // namespace qx
