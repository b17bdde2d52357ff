// SPDX-License-Identifier: Apache-2.0
#pragma once

/// A displacement in pixels. x is stored negated: scaled by k it leads from the middle of pixel (x, y) to
/// (x + 0.5 - k * v.x, y + 0.5 + k * v.y).
struct HvVec2 {
    float x, y;
};
static_assert(sizeof(HvVec2) == 8 && alignof(HvVec2) == 4);

/// The x of a vector that is none.
inline constexpr float INVALID_VECTOR = 3.4028235e38f;
