// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

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

/// Tables of a pure power law: `to_linear` is (i / 255) ^ gamma. For hosts without a colour profile.
/// @param gamma  above 0
QX_EXPORT void QX_BuildGammaBlendingTables(float gamma, QX_LinearBlendingTables* tables);

/// Copies a whole world into another of the same size, changing depth. The float side is linear, 8 and 16 bits are
/// encoded; between these two, and where the depth stays, the tables are not used and may be null. Does nothing when
/// the sizes differ. Sequential. Throws 3 after a report for a depth that is none, and for missing tables.
QX_EXPORT void QX_DepthConvertWorld(const QX_LinearBlendingTables* tables, const QX_World* src, QX_World* dst);
