// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "platform/Platform_Export.h"

namespace tesselcore::utility {

/// Replaces every `what` in `text` by `by`.
PLATFORM_EXPORT void ReplaceInString(std::wstring& text, const std::wstring& what, const std::wstring& by);

PLATFORM_EXPORT std::wstring NumberToString(int number);
PLATFORM_EXPORT std::wstring NumberToString(double number, int digits_behind_point);

}  // namespace tesselcore::utility
