// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <type_traits>

#include "QX/indep/QX_Pixel.h"

namespace qx {

/// A record of each pixel type, asked for by type.
template <template <class> class T> struct PerDepth {
    T<QX_Pixel8> of8;
    T<QX_Pixel16> of16;
    T<QX_PixelFloat> of_float;

    template <class Pixel> constexpr const T<Pixel>& of() const {
        if constexpr (std::is_same_v<Pixel, QX_Pixel8>) {
            return of8;
        } else if constexpr (std::is_same_v<Pixel, QX_Pixel16>) {
            return of16;
        } else {
            return of_float;
        }
    }
};

/// Calls `body.operator()<Pixel>()` for each pixel type.
template <class Body> void for_each_pixel_type(const Body& body) {
    body.template operator()<QX_Pixel8>();
    body.template operator()<QX_Pixel16>();
    body.template operator()<QX_PixelFloat>();
}

}  // namespace qx
