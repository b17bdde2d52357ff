// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_LinearTables.h"
#include "QX/indep/QX_Pixel.h"
#include "QX/world/QX_WorldX.h"

class QX_ColorSettings;
namespace boost {
template <class T> class shared_ptr;  // who hands one over includes its header
}

/// Running sums along the rows of a world, from which the sum of any stretch of a row comes in constant time: of rows
/// of discs, say, for what is out of focus. A row's first cell holds its first pixel. Channels are on 0..1, colours
/// multiplied by alpha; sums are floats, added from the left.
///
/// Padding repeats the pixels at the edges. It is as wide as half the box around a square of twice the radius,
/// stretched by `aspect` along x and then turned by `rotation` radians.
///
/// Highlights may be made brighter: what a pixel's luma, of multiplied colours, has above `threshold` adds 5 times
/// `gain` of itself to each colour, and by `saturation` more to a colour that lies above the luma.
template <class Pixel> class QX_EXPORT QX_HorizontalSumTable {
public:
    /// `a` and `b` are kept for the caller. With `linear` the sums are of linear light, by the tables of `settings`, if
    /// there are any. Throws what QX_ColorSettings::GetLinearBlendingTables throws; 3 after a report for a GPU world
    /// and one that is missing or has no pixels; 4 where the table can't be had, a padding that is not finite too.
    QX_HorizontalSumTable(const QX_WorldX<Pixel>* src, int a, int b, double radius, double gain, double threshold,
                          double saturation, double aspect, double rotation, bool padded,
                          boost::shared_ptr<QX_ColorSettings> settings, bool linear);
    /// The same in linear light, by the exponent of these tables; null leaves the light as it is.
    QX_HorizontalSumTable(const QX_WorldX<Pixel>* src, int a, int b, double radius, double gain, double threshold,
                          double saturation, double aspect, double rotation, bool padded,
                          const QX_LinearBlendingTables* tables);

    /// First cell of a row. `y` lies in the table.
    const QX_PixelFloat* Row(std::int32_t y) const { return cells_.data() + std::int64_t{y} * width_; }
    const QX_PixelFloat* Cells() const { return cells_.data(); }  ///< row by row, without gaps
    std::int32_t Width() const { return width_; }                 ///< with the padding on both sides
    std::int32_t Height() const { return height_; }
    std::int32_t PadX() const { return pad_x_; }
    std::int32_t PadY() const { return pad_y_; }
    int A() const { return a_; }
    int B() const { return b_; }
    bool Padded() const { return padded_; }

private:
    int a_, b_;
    bool padded_;
    std::int32_t pad_x_ = 0, pad_y_ = 0, width_ = 0, height_ = 0;
    std::vector<QX_PixelFloat> cells_{};
};

extern template class QX_HorizontalSumTable<QX_Pixel8>;
extern template class QX_HorizontalSumTable<QX_Pixel16>;
extern template class QX_HorizontalSumTable<QX_PixelFloat>;
