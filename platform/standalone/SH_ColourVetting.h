// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace standalone {

/// What the header and the tags of an ICC file promise.
struct VettedICC {
    std::size_t size;             ///< by the header; padding behind it is none of the profile's
    std::uint32_t class_code;     ///< of the header
    std::uint32_t space;          ///< 'RGB ', 'GRAY' or 'CMYK'
    bool has_matrix;              ///< three curves and colorants that have an inverse
    bool to_colour, from_colour;  ///< tables both ways
};

inline constexpr std::size_t kICC_MostBytes = std::size_t{64} << 20;

/// Looks at an ICC file before the colour library does: its sizes, its table of tags, and of the tags that conversions
/// read the types, sizes and counts. Throws ColourFault for one that is damaged or of no use here.
VettedICC VetICC(const std::uint8_t* bytes, std::size_t count);

}  // namespace standalone
