// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "QX/indep/QX_Export.h"
#include "platform/HCL_CMX.h"

class QX_ColorSettings;

/// Profiles of the host's colour engine and what they are. Its errors are thrown, as an `int`. Any thread.

/// The exponents that come nearest to a profile's curves. @param profile  null stands for that of gamma 2.2
QX_EXPORT void QX_GetCalRGBGammas(const HCL_CMX_ProfilePtr& profile, float* red, float* green, float* blue);

/// From a profile's values to light, or from light to them, relative to the white: with `to_linear` from `from` to the
/// linear version of `to`, else from the linear version of `from` to `to`. A null profile is the host's for the gamma.
QX_EXPORT HCL_CMX_Transform QX_GetLinearizeTransform(const HCL_CMX_ProfilePtr& from, const HCL_CMX_ProfilePtr& to,
                                                     HCL_CMX_WorkingGamma working_gamma, bool to_linear);

/// @param handle  the platform's name of a display; null is the main one
QX_EXPORT HCL_CMX_Profile QX_GetPlatformDisplayProfile(void* handle);

enum QX_Rec709_VARIANT : std::int32_t {
    kQX_Rec709_Camera = 0,  ///< the curve of cameras
    kQX_Rec709_Gamma24 = 1  ///< a power of 2.4, as displays have it
};
/// Other numbers are as that of cameras. @param pool  keeps the profile of displays; may be null
QX_EXPORT HCL_CMX_ProfilePtr QX_GetRec709Profile(QX_Rec709_VARIANT variant, const HCL_CMX_ProfilePoolPtr& pool);

/// "Working Space - " and the name of the profile that is worked in, or "None" where settings are null or have none.
QX_EXPORT std::wstring QX_GetWorkingSpaceProfileName(const boost::shared_ptr<QX_ColorSettings>& settings);

/// From `source` to a monitor. With `output` the picture goes by that device's profile, and with `simulation` it shows
/// first what another device would make of it; `keep_simulation_out` leaves out the step from the one to the other.
/// Values above 1 go on where a source has such, unless the host's preference limits them.
/// @param optimize  for speed
QX_EXPORT HCL_CMX_Transform QX_NewDisplayTransform(const HCL_CMX_Profile& source, const HCL_CMX_Profile& monitor,
                                                   const HCL_CMX_Profile* simulation, const HCL_CMX_Profile* output,
                                                   bool keep_simulation_out, bool optimize);
