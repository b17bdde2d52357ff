// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

/// Lookups between encoded and linear light, on 0..32768. Immutable once built; any number of threads may read it.
struct QX_LinearBlendingTables {
    std::uint16_t to_linear[256];     ///< linear value of the 8-bit code i
    std::uint16_t from_linear[4097];  ///< encoded value of the linear value 8 * i
    std::uint16_t reserved;
    float to_linear_gamma;    ///< exponent for float channels
    float from_linear_gamma;  ///< its reciprocal
};
static_assert(sizeof(QX_LinearBlendingTables) == 8716);
static_assert(offsetof(QX_LinearBlendingTables, from_linear) == 512);
static_assert(offsetof(QX_LinearBlendingTables, to_linear_gamma) == 8708);
