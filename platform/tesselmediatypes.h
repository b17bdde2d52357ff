// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "platform/Platform_Export.h"

namespace tesselmediatypes {

/// A pixel format: four characters in the lower half, a word of properties in the upper.
/// Properties: bits 1 to 3 the precision, 8 to 12 the channel layout, 19 and 20 the sample kind.
struct PixelFormat {
    std::uint64_t value;
    constexpr std::uint32_t low_word() const { return static_cast<std::uint32_t>(value); }
    constexpr std::uint32_t properties() const { return static_cast<std::uint32_t>(value >> 32); }
    friend constexpr bool operator==(PixelFormat a, PixelFormat b) { return a.value == b.value; }
};

/// Four characters as they lie in memory, as a 32-bit value.
constexpr std::uint32_t FourCC(const char (&text)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

/// @param precision  code of the component precision: 0 is 8 bits, 2 is 16, 5 is 32
constexpr PixelFormat FourChannelFormat(const char (&text)[5], std::uint32_t precision) {
    const std::uint32_t properties = 1u << 19 | 1u << 8 | precision << 1;
    return {std::uint64_t{properties} << 32 | FourCC(text)};
}

/// Bits of a component of a format of plain samples, else 0.
constexpr int ComponentBits(PixelFormat format) {
    constexpr int bits[8] = {8, 10, 16, 16, 24, 32, 0, 0};
    const bool plain = (format.properties() >> 19 & 3) == 1;
    return plain ? bits[format.properties() >> 1 & 7] : 0;
}

inline constexpr PixelFormat kPixelFormat_ARGB_4444_8u = FourChannelFormat("ARGB", 0);
inline constexpr PixelFormat kPixelFormat_ARGB_4444_15u = FourChannelFormat("AR15", 2);
inline constexpr PixelFormat kPixelFormat_ARGB_4444_32f = FourChannelFormat("ARGf", 5);

/// Bytes that `height` rows of `width` pixels of a format take; 0 for a format without samples.
PLATFORM_EXPORT std::uint64_t PixelFormatSize(PixelFormat format, int width, int height);

}  // namespace tesselmediatypes

namespace GK {
inline constexpr tesselmediatypes::PixelFormat kPixelFormat_GPU_BGRA_4444_32f =
    tesselmediatypes::FourChannelFormat("@CDA", 5);
inline constexpr tesselmediatypes::PixelFormat kPixelFormat_GPU_BGRA_4444_16f =
    tesselmediatypes::FourChannelFormat("@CDa", 2);
}  // namespace GK
