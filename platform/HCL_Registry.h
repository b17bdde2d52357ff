// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"

/// Finds a procedure in the cross-module registry by the label of its interface and its name.
/// @return its address, or null when no module has registered it
using HCL_XIFAddressProc = void* (*)(const char* label, const char* name);

/// @return 0 with the registry's procedure in `*proc`, or an error code.
PLATFORM_EXPORT int HCL_GetXIFAddressProc(HCL_XIFAddressProc* proc);
