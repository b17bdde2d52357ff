// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <compare>
#include <cstdint>

#include "platform/KS_Cache.h"

namespace standalone {

/// What an item is found by. Results of an engine change with its number and may change with the bands.
struct CacheKey {
    std::uint32_t engine, bands;
    std::array<std::uint8_t, 16> identity;

    auto operator<=>(const CacheKey&) const = default;
};

CacheKey KeyOf(const KS_Stuff& stuff);

}  // namespace standalone
