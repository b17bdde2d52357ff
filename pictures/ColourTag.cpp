// SPDX-License-Identifier: Apache-2.0
#include "pictures/ColourTag.h"

#include <cstddef>

namespace qx::pictures {
namespace {

constexpr double kUnit = 100000;

bool is_near(std::uint32_t value, std::uint32_t other, std::uint32_t distance) {
    return value + distance >= other && value <= other + distance;
}

Primaries primaries_of(const PngColours& png) {
    if (!png.primaries) return kRec709Primaries;
    Primaries primaries;
    for (std::size_t i = 0; i < primaries.size(); ++i) {
        primaries[(i + 6) % 8] = static_cast<float>((*png.primaries)[i] / kUnit);  // white goes behind
    }
    return primaries;
}

}  // namespace

bool PngColours::is_near_srgb() const {
    constexpr std::uint32_t usual_gamma = 45455, usual[] = {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
    constexpr std::uint32_t gamma_distance = 50, distance = 100;  // writers round each in their own way
    if (gamma && !is_near(*gamma, usual_gamma, gamma_distance)) return false;
    for (std::size_t i = 0; primaries && i < primaries->size(); ++i) {
        if (!is_near((*primaries)[i], usual[i], distance)) return false;
    }
    return true;
}

ColourMeaning meaning_of(const ColourTags& tags, bool linear) {
    using Kind = ColourMeaning::Kind;
    if (!tags.icc.bytes.empty()) return {Kind::icc};
    if (tags.png.intent) return {Kind::srgb};
    if (tags.png.gamma) return {Kind::gamma, kUnit / *tags.png.gamma, primaries_of(tags.png)};
    if (tags.movie) return {.kind = Kind::movie, .movie = *tags.movie};
    if (linear) return {Kind::light, 1, tags.primaries.value_or(kRec709Primaries)};
    return {};
}

}  // namespace qx::pictures
