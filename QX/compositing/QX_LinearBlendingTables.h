// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_LinearTables.h"
#include "QX/indep/QX_Records.h"

/// Tables of a pure power, equal to those of a profile of that power. For hosts without a colour profile.
/// @param gamma  above 2^-17; rounded to 2^-16, as profiles hold it
QX_EXPORT void QX_BuildGammaBlendingTables(float gamma, QX_LinearBlendingTables* tables);

/// Copies a whole world into another of the same size, changing depth. The float side is linear, 8 and 16 bits are
/// encoded; between these two, and where the depth stays, the tables are not used and may be null. Does nothing when
/// the sizes differ. Sequential. Throws 3 after a report for a depth that is none, and for missing tables.
QX_EXPORT void QX_DepthConvertWorld(const QX_LinearBlendingTables* tables, const QX_World* src, QX_World* dst);
