// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "platform/Platform_Export.h"

namespace tesselcore::utility {

/// Replaces every `what` in `text` by `by`.
PLATFORM_EXPORT void ReplaceInString(std::wstring& text, const std::wstring& what, const std::wstring& by);

PLATFORM_EXPORT std::wstring NumberToString(int number);
PLATFORM_EXPORT std::wstring NumberToString(double number, int digits_behind_point);

}  // namespace tesselcore::utility

/// A number between the processor's order of bytes and the order that begins with the highest one.
PLATFORM_EXPORT std::uint32_t TK_LongSwap(std::uint32_t number);
