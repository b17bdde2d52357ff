// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"

/// Pixels are interleaved, alpha first, and straight (not multiplied by alpha) unless a routine says otherwise.

/// Full scale 255.
struct QX_EXPORT QX_Pixel8 {
    std::uint8_t alpha, red, green, blue;
};

/// Full scale 32768, which is legal and means 1.0; larger values do not occur in well-formed pixels.
struct QX_EXPORT QX_Pixel16 {
    std::uint16_t alpha, red, green, blue;
};

/// Nominal range 0 to 1; values outside it are legal and are kept.
struct QX_EXPORT QX_PixelFloat {
    float alpha, red, green, blue;
};

/// An accumulator, never the pixel of a world.
struct QX_EXPORT QX_PixelDouble {
    double alpha, red, green, blue;
};

/// The type of a pixel's channels: unsigned 8, unsigned 16 or 32-bit float.
template <class Pixel> using QX_ChannelOf = decltype(Pixel::alpha);

static_assert(sizeof(QX_Pixel8) == 4 && offsetof(QX_Pixel8, red) == 1 && offsetof(QX_Pixel8, blue) == 3);
static_assert(sizeof(QX_Pixel16) == 8 && offsetof(QX_Pixel16, red) == 2 && offsetof(QX_Pixel16, blue) == 6);
static_assert(sizeof(QX_PixelFloat) == 16 && offsetof(QX_PixelFloat, red) == 4 && offsetof(QX_PixelFloat, blue) == 12);
static_assert(sizeof(QX_PixelDouble) == 32 && offsetof(QX_PixelDouble, red) == 8);
