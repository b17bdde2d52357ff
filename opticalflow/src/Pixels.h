// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <type_traits>

#include "opticalflow/src/Position.h"

namespace solvan_of {

/// What a channel's full value is. A 16-bit world's is 32768.
template <class T> inline constexpr float kRange = 1.0f;
template <> inline constexpr float kRange<std::uint8_t> = 255.0f;
template <> inline constexpr float kRange<std::uint16_t> = 32768.0f;

/// Layouts of pixels in memory.
template <class T> struct FnARGBBase {
    using Channel = T;
    T alpha, red, green, blue;
};
template <class T> struct FnRGBABase {
    using Channel = T;
    T red, green, blue, alpha;
};
template <class T> struct FnBGRBase {
    using Channel = T;
    T blue, green, red;
};
template <class T> struct FnRGBBase {
    using Channel = T;
    T red, green, blue;
};

/// A colour over a layout. What is done to a pixel is done to each of its channels alike.
template <class Base> struct FnRGBCol : Base {
    /// The pixel whose channels are f of the others' channels.
    template <class F, class... Others> static FnRGBCol of(const F& f, const Others&... others) {
        FnRGBCol made;
        made.red = f(others.red...);
        made.green = f(others.green...);
        made.blue = f(others.blue...);
        return made;
    }
};
template <class Base> struct FnRGBACol : Base {
    template <class F, class... Others> static FnRGBACol of(const F& f, const Others&... others) {
        FnRGBACol made;
        made.alpha = f(others.alpha...);
        made.red = f(others.red...);
        made.green = f(others.green...);
        made.blue = f(others.blue...);
        return made;
    }
};

template <class T> using Argb = FnRGBACol<FnARGBBase<T>>;
template <class T> using Bgr = FnRGBCol<FnBGRBase<T>>;
using FloatPixel = Argb<float>;                    ///< what samples of pixels are
using Accumulator = FnRGBACol<FnRGBABase<float>>;  ///< what passes are added up in

/// A value as a channel: integers are limited and truncated, floats stay as they are.
template <class T> [[gnu::always_inline]] inline T as_channel(float value) {
    if constexpr (std::is_floating_point_v<T>) {
        return value;
    } else {
        const float least = value > 0.0f ? value : 0.0f;
        return static_cast<T>(least < kRange<T> ? least : kRange<T>);
    }
}

}  // namespace solvan_of
