// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

#include "QX/compositing/QX_CompositeMode.h"
#include "QX/compositing/QX_LinearBlendingTables.h"

/// The transfer modes once more, one pixel at a time and without regard to speed: integers are exact 64-bit numbers
/// with floor divisions, floats are single operations in their written order. Nothing here calls the library.
namespace qx::test::model {

enum class Pivot { none, black, white, grey };  ///< of the filters around a row

/// A pixel of a transfer: everything that happens to it in the passes of its row.
template <class Pixel> struct RowCall {
    int xfer;
    QX_ChannelOf<Pixel> opacity;
    std::optional<QX_ChannelOf<Pixel>> mask;  ///< coverage
    bool rgb_only = false;
    const QX_LinearBlendingTables* tables = nullptr;
    std::uint32_t* seed = nullptr;  ///< of this pixel in, of the next one out; dissolve alone reads it
};
template <class Pixel> Pixel row_pixel(const RowCall<Pixel>& call, const Pixel& src, const Pixel& dst);

/// A function of one pixel, with none, one or two opacities.
template <class Pixel> struct PixelCall {
    int xfer;
    std::optional<QX_ChannelOf<Pixel>> opacity, opacity2;
    const QX_LinearBlendingTables* tables = nullptr;
};
template <class Pixel> Pixel one_pixel(const PixelCall<Pixel>& call, const Pixel& src, const Pixel& dst);

/// One filter of the rows: `forward` multiplies, the reverse divides.
template <class Pixel> Pixel filtered(Pivot pivot, bool forward, const Pixel& pixel);

/// The alpha merge. Without a mask its factor is skipped.
template <class Pixel>
Pixel merged(const Pixel& src, QX_ChannelOf<Pixel> opacity, std::optional<QX_ChannelOf<Pixel>> mask, const Pixel& dst);

}  // namespace qx::test::model
