// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "pictures/IccHeader.h"

// What a file says of its colours, as it says it. Nothing is converted here.
namespace qx::pictures {

/// x and y of red, green, blue, white.
using Primaries = std::array<float, 8>;
inline constexpr Primaries kRec709Primaries{0.64f, 0.33f, 0.3f, 0.6f, 0.15f, 0.06f, 0.3127f, 0.329f};  ///< and sRGB's

struct IccProfile {
    std::vector<std::uint8_t> bytes;  ///< empty when there is none
    IccSpace space = IccSpace::rgb;   ///< one of grey comes with grey pixels, one of CMYK with pixels of that
};

/// Chunks of a PNG. A unit is 100,000.
struct PngColours {
    std::optional<std::uint8_t> intent;                     ///< sRGB: an ICC's number of an intent, 0 to 3
    std::optional<std::uint32_t> gamma;                     ///< gAMA: exponent from light to values, 45455 for 1 / 2.2
    std::optional<std::array<std::uint32_t, 8>> primaries;  ///< cHRM: x and y of white, red, green, blue

    /// True for a gamma and primaries that are written for sRGB, or none.
    bool is_near_srgb() const;
};

/// What a movie says of its values, in the numbers of ITU-T H.273; 1 is BT.709, 2 is unknown.
struct MovieColours {
    int primaries = 1, transfer = 1;
    int matrix = 1;
    int range = 1;  ///< 0 unknown, 1 limited, 2 full
    bool operator==(const MovieColours&) const = default;
};

/// All that a file says, which is written to another that can hold it. Whoever brings pixels to other colours puts
/// what they are then in place of it; a profile and primaries that stand together say the same.
struct ColourTags {
    IccProfile icc;
    PngColours png;
    std::optional<Primaries> primaries;      ///< of OpenEXR
    std::optional<MovieColours> movie = {};  ///< of a frame
};

/// What pixels mean, by that of the tags which counts.
struct ColourMeaning {
    enum class Kind {
        unknown,  ///< nothing is said
        icc,      ///< what the profile says
        srgb,
        gamma,  ///< light is a value to the power of `exponent`, in `primaries`
        light,  ///< values are light, in `primaries`
        movie,  ///< what the codes of primaries and curve say
    };
    Kind kind = Kind::unknown;
    double exponent = 1;
    Primaries primaries = kRec709Primaries;
    MovieColours movie = {};
};

/// The first of: the profile; of a PNG the chunk sRGB, or gAMA; the codes of a movie; light, where the format is meant
/// for it.
/// @param linear  a format whose values are light
ColourMeaning meaning_of(const ColourTags& tags, bool linear);

}  // namespace qx::pictures
