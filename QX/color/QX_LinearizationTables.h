// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_LinearTables.h"
#include "platform/HCL_CMX.h"

/// Tables of a profile's curve: `to_linear` is what the engine makes of a grey ramp on the way to the linear version of
/// the profile (of red), `from_linear` the inverse of it, and the exponents those of green. Where the curve is no power
/// the tables of integers follow it, and the exponent comes near.
/// @param profile  null stands for sRGB
/// Throws the engine's error, and 4 after a report when memory is short. Any thread.
QX_EXPORT boost::shared_ptr<QX_LinearBlendingTables> QX_MakeLinearizationTables(HCL_CMX_ProfilePtr profile,
                                                                                HCL_CMX_WorkingGamma working_gamma);
