// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/compositing/QX_Modes.h"
#include "QX/indep/QX_PerDepth.h"
#include "QX/indep/QX_SlotsOf.h"

/// The levels that the compositing kernels are built for, each in its own namespace from the same text. A level has
/// null where it brings no form of its own; a lower one serves then. Plain has everything.
namespace qx {

/// Row routines without tables, by mask state and place of the mode.
template <class Pixel> struct RowSet { QX_RowFunc<Pixel> at[2][modes::kPlaces]; };

/// Filters in the order of their slots: black, white, grey, each forward and reverse; and the alpha merge.
template <class Pixel> struct FilterSet {
    QX_FilterFunc<Pixel> filter[kFilters];
    QX_MergeFunc<Pixel> merge;
};

struct Level {
    PerDepth<RowSet> rows;
    PerDepth<FilterSet> filters;
};

namespace plain {
extern const Level level;
}
namespace sse4 {
extern const Level level;
}
namespace avx2 {
extern const Level level;
}

}  // namespace qx
