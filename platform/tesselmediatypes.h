// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

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

/// Whether a format's samples are plain numbers.
constexpr bool IsPlain(PixelFormat format) { return (format.properties() >> 19 & 3) == 1; }
/// Bits that the precision of a format stands for, whatever its samples are.
constexpr int PrecisionBits(PixelFormat format) {
    constexpr int bits[8] = {8, 10, 16, 16, 24, 32, 0, 0};
    return bits[format.properties() >> 1 & 7];
}
/// Bits of a component of a format of plain samples, else 0.
constexpr int ComponentBits(PixelFormat format) { return IsPlain(format) ? PrecisionBits(format) : 0; }

/// Bytes of a pixel; 0 for a format without samples of whole pixels.
constexpr std::uint32_t BytesPerPixel(PixelFormat format) {
    const auto bits = static_cast<std::uint32_t>(PrecisionBits(format));
    const std::uint32_t layout = format.properties() >> 8 & 7, packing = format.properties() >> 11 & 3;
    if (IsPlain(format) && packing == 0 && layout != 0) return bits * 4 / 8;
    if (IsPlain(format) && packing == 1) return (bits == 10 ? 0 : bits) * 2 / 8;
    if (bits == 10) return 4;
    return IsPlain(format) && packing == 0 ? bits * 3 / 8 : 0;
}

/// Of a format that is none: samples of no known kind.
inline constexpr std::uint32_t kPixelFormatProperties_Invalid = 3u << 19;

inline constexpr PixelFormat kPixelFormat_ARGB_4444_8u = FourChannelFormat("ARGB", 0);
inline constexpr PixelFormat kPixelFormat_ARGB_4444_15u = FourChannelFormat("AR15", 2);
inline constexpr PixelFormat kPixelFormat_ARGB_4444_32f = FourChannelFormat("ARGf", 5);
inline constexpr PixelFormat kPixelFormat_None{std::uint64_t{kPixelFormatProperties_Invalid} << 32 | FourCC("badf")};

/// The width of a pixel beside its height.
class PixelAspectRatio {
public:
    constexpr PixelAspectRatio(std::uint32_t numerator, std::uint32_t denominator)
        : numerator_(numerator), denominator_(denominator) {}
    constexpr std::uint32_t GetNumerator() const { return numerator_; }
    constexpr std::uint32_t GetDenominator() const { return denominator_; }

private:
    std::uint32_t numerator_, denominator_;
};

namespace color {
/// What colours mean, by the host's name for it.
struct ColorSpace {
    std::string name;
};
inline bool operator==(const ColorSpace& a, const ColorSpace& b) { return a.name == b.name; }
}  // namespace color

/// Bytes that `height` rows of `width` pixels of a format take; 0 for a format without samples.
PLATFORM_EXPORT std::uint64_t PixelFormatSize(PixelFormat format, int width, int height);

}  // namespace tesselmediatypes

namespace GK {
inline constexpr tesselmediatypes::PixelFormat kPixelFormat_GPU_BGRA_4444_32f =
    tesselmediatypes::FourChannelFormat("@CDA", 5);
inline constexpr tesselmediatypes::PixelFormat kPixelFormat_GPU_BGRA_4444_16f =
    tesselmediatypes::FourChannelFormat("@CDa", 2);
}  // namespace GK
