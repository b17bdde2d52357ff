// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_PerDepth.h"
#include "QX/indep/QX_Records.h"
#include "lanes/Levels.h"

namespace qx {

/// Two rows of sums, not yet divided, of one cell more than a world is wide; that before its first column is zero.
/// Rows that are made read one and write the other by turns.
struct SumRows {
    QX_PixelDouble *above, *made;
};

/// Fills a table from a world. `rows.above` is zero. Rows one below another are made at once, too many streams to be
/// stored past the caches: that was measured to be slower.
template <class Pixel, class Cell> using SumWorld = void(const QX_LayerDef& world, SumRows rows, Cell* table);

template <class Pixel> struct SummedAreas {
    SumWorld<Pixel, QX_PixelFloat>* in_floats;  ///< none for float worlds
    SumWorld<Pixel, QX_PixelDouble>* in_doubles;
};
using SummedAreaKernels = PerDepth<SummedAreas>;
QX_DECLARE_LEVELS(SummedAreaKernels, summed_area_kernels)

/// What pixels of 8 bits are multiplied by: for each alpha 1, and its share of full three times.
struct alignas(32) SharesOf8 {
    double of[256][4];
};
extern const SharesOf8 shares_of_8;

/// Chooses the kernels that tables are built by, at the library's start. Until then they are the plain ones.
void choose_summed_area_kernels(Level level);

}  // namespace qx
