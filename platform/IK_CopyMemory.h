// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "platform/Platform_Export.h"

/// Block copy; the blocks may overlap.
PLATFORM_EXPORT void IK_CopyMemory(const void* from, void* to, std::size_t bytes);
