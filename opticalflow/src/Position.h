// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstdint>

namespace solvan_of {

/// A position's integer part, the lower one for negatives too, and what is above it.
struct Place {
    std::int32_t whole;
    float fraction;
};

inline constexpr float kFarAway = 1e9f;  ///< what lies farther off, and what is no number, counts as this

[[gnu::always_inline]] inline Place place_of(float position) {
    if (!(position >= -kFarAway)) return {-1'000'000'000, 0.0f};
    if (position >= kFarAway) return {1'000'000'000, 0.0f};
    const float below = std::floor(position);
    return {static_cast<std::int32_t>(below), position - below};
}

[[gnu::always_inline]] inline float lerp(float a, float b, float f) { return a + (b - a) * f; }

}  // namespace solvan_of
