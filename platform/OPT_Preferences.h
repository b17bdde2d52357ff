// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/Platform_Export.h"

/// A preference of the host, as a text.
/// @param standard  what holds where none is set
/// @return 0 with the text in `*value`, or an error code
PLATFORM_EXPORT int OPT_GetTextPrefData(const char* section, const char* key, const char* standard, std::string* value);
