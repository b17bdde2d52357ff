// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"

namespace standalone {

/// The engine's procedures as the registry has them, by label and name. @return null for one that there is not
PLATFORM_EXPORT void* FindColourProcedure(const char* label, const char* name);

}  // namespace standalone
