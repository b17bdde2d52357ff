// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Pixel.h"
#include "QX/world/QX_World.h"

/// Means of a world's pixels, from which that of any rectangle comes in constant time. The cell of a pixel holds the
/// mean of the rectangle from the world's corner to it, both inside: numbers on the world's own scale, so that floats
/// lose nothing as worlds grow. Colours are multiplied by alpha. Cells lie row by row without padding. Hosts know the
/// layout.
class QX_EXPORT QX_SummedAreaTable {
public:
    QX_PixelFloat* float_table;    ///< null where the table is in doubles
    QX_PixelDouble* double_table;  ///< null where it is in floats
    std::int32_t width, height;    ///< of the world
    bool use_double;

    /// Builds the table on the calling thread: in doubles for a float world, and for others where that is asked. Throws
    /// 3 after a report for a GPU world, one that is missing or has no pixels, and an unknown depth; 4 when memory is
    /// short.
    QX_SummedAreaTable(const QX_World* src, bool use_double);
    ~QX_SummedAreaTable();
    QX_SummedAreaTable(const QX_SummedAreaTable&) = delete;
    QX_SummedAreaTable& operator=(const QX_SummedAreaTable&) = delete;
};
static_assert(sizeof(QX_SummedAreaTable) == 32 && offsetof(QX_SummedAreaTable, width) == 16 &&
              offsetof(QX_SummedAreaTable, use_double) == 24);

/// The mean of a rectangle, as a straight pixel: alpha of the whole rectangle, what lies outside of the world being
/// clear, and the colours' mean by alpha. Any edges are legal; an empty rectangle is clear. `table` has the cells of a
/// world of `width` by `height`, which are not checked. Any number of threads may read a table.
///
/// Edges lie where pixels are half way apart: a pixel reaches from its number minus a half to its number plus a half.
/// Reads 16 cells at most. In worlds that are not wider than some hundreds of pixels the last hundred-thousandth of a
/// pixel before the right and bottom ends is left out.
template <class Pixel, class Accum>
QX_EXPORT void QX_SummedAreaTable_SampleAA(int width, int height, const Accum* table, float left, float top,
                                           float right, float bottom, Pixel* out);
/// Edges are pixels' numbers; right and bottom are not inside. Reads 4 cells at most.
template <class Pixel, class Accum>
QX_EXPORT void QX_SummedAreaTable_SampleDraft(int width, int height, const Accum* table, int left, int top, int right,
                                              int bottom, Pixel* out);

#define QX_SUMMED_AREA_SAMPLERS(Extern, Pixel, Accum)                                                             \
    Extern template void QX_SummedAreaTable_SampleAA(int, int, const Accum*, float, float, float, float, Pixel*); \
    Extern template void QX_SummedAreaTable_SampleDraft(int, int, const Accum*, int, int, int, int, Pixel*);
#define QX_ALL_SUMMED_AREA_SAMPLERS(Extern)                       \
    QX_SUMMED_AREA_SAMPLERS(Extern, QX_Pixel8, QX_PixelFloat)     \
    QX_SUMMED_AREA_SAMPLERS(Extern, QX_Pixel8, QX_PixelDouble)    \
    QX_SUMMED_AREA_SAMPLERS(Extern, QX_Pixel16, QX_PixelFloat)    \
    QX_SUMMED_AREA_SAMPLERS(Extern, QX_Pixel16, QX_PixelDouble)   \
    QX_SUMMED_AREA_SAMPLERS(Extern, QX_PixelFloat, QX_PixelFloat) \
    QX_SUMMED_AREA_SAMPLERS(Extern, QX_PixelFloat, QX_PixelDouble)
QX_ALL_SUMMED_AREA_SAMPLERS(extern)
