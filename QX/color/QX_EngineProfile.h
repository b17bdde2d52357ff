// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/HCL_CMX.h"

/// The engine's objects in the hands of owners. Errors are thrown.
namespace qx {

HCL_CMX_Profile profile_from_code(CMX_ProfileCode code);
HCL_CMX_Transform new_transform(const HCL_CMX_Profile& from, const HCL_CMX_Profile& to, std::int32_t intent,
                                const t_CMX_Options& options);

}  // namespace qx
