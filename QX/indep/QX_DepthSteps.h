// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Depth.h"

namespace qx {

/// Integer steps between 8 and 16 bits, exact both ways for all 256 codes. The product passes a signed
/// 32-bit number at 255.
/// Its low 16 bits count, when lanes have a sign.
template <class V> QX_INLINE constexpr V widened_8_to_16(V v) { return (v * 0x808080 + 33200) >> 16; }
QX_INLINE constexpr std::uint16_t widen_8_to_16(std::uint32_t v) {
    return static_cast<std::uint16_t>(widened_8_to_16(v));
}
template <class V> QX_INLINE constexpr V narrowed_16_to_8(V v) { return (v * 255 + 16384) >> 15; }
QX_INLINE constexpr std::uint8_t narrow_16_to_8(std::uint32_t v) {
    return static_cast<std::uint8_t>(narrowed_16_to_8(v));
}

/// Factors of rows to float, in 32-bit float. Single colours and arguments use the double factor, which differs in
/// the last bit for half of the 8-bit codes.
inline constexpr float kRow8ToFloat = 0.003921569f;
inline constexpr float kRow16ToFloat = 3.0517578e-5f;
inline constexpr double kColour8ToFloat = 1.0 / 255;
inline constexpr double kColour16ToFloat = 1.0 / 32768;

/// Float to an integer channel of a pixel, in float: rows, single colours and arguments meet in one value. Colours are
/// clamped; alpha is not, and keeps its low bits.
template <class To> inline QX_ChannelOf<To> alpha_from_float(float c) {
    constexpr auto full = static_cast<float>(DepthOf<To>::full);
    return static_cast<QX_ChannelOf<To>>(truncate_to_int(c * full + 0.5f));
}
template <class To> inline QX_ChannelOf<To> colour_from_float(float c) {
    constexpr auto full = static_cast<float>(DepthOf<To>::full);
    const float v = c * full;
    if (v < 0) return 0;
    if (v > full) return static_cast<QX_ChannelOf<To>>(DepthOf<To>::full);
    return static_cast<QX_ChannelOf<To>>(truncate_to_int(v + 0.5f));
}

/// One channel between depths, where all four channels go by one rule (all pairs but those from float). `T` is float in
/// rows and double for single colours and arguments.
template <class To, class T, class From> constexpr QX_ChannelOf<To> convert_channel(QX_ChannelOf<From> c) {
    constexpr bool from8 = std::is_same_v<From, QX_Pixel8>;
    if constexpr (std::is_same_v<To, QX_Pixel8>) {
        return narrow_16_to_8(c);
    } else if constexpr (std::is_same_v<To, QX_Pixel16>) {
        return widen_8_to_16(c);
    } else if constexpr (std::is_same_v<T, float>) {
        return static_cast<float>(c) * (from8 ? kRow8ToFloat : kRow16ToFloat);
    } else {
        return static_cast<float>(c * (from8 ? kColour8ToFloat : kColour16ToFloat));
    }
}

/// One pixel from one depth to another; `T` as above.
template <class To, class T, class From> inline To convert_pixel(const From& p) {
    if constexpr (std::is_same_v<To, From>) {
        return p;
    } else if constexpr (std::is_same_v<From, QX_PixelFloat>) {
        return {alpha_from_float<To>(p.alpha), colour_from_float<To>(p.red), colour_from_float<To>(p.green),
                colour_from_float<To>(p.blue)};
    } else {
        return {convert_channel<To, T, From>(p.alpha), convert_channel<To, T, From>(p.red),
                convert_channel<To, T, From>(p.green), convert_channel<To, T, From>(p.blue)};
    }
}

/// A colour argument at the depth of `To`; null is transparent black.
template <class To, class From> inline To colour_argument(const From* colour) {
    return colour == nullptr ? To{} : convert_pixel<To, double>(*colour);
}

}  // namespace qx
