// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "platform/Platform_Export.h"

/// A library's table of localised keys, each "$$$/path/number=English text".
struct TK_ZRef {
    int count;
    const char* const* keys;
};

/// Text of key `number` in the user's language; null for a number outside the table.
PLATFORM_EXPORT const char* TK_ZLookupLStrCache(const TK_ZRef& table, int number);

/// Text of one key: what stands behind the equals sign where no translation is at hand.
PLATFORM_EXPORT const char* TK_ZString(const char* key);
PLATFORM_EXPORT std::wstring TK_ZStringToUTF16String(const char* key);
/// The same in the bytes that the user's system takes for text: UTF-8 here.
PLATFORM_EXPORT std::string TK_ZStringToMBString(const char* key);

/// Replaces the first `placeholder` in the NUL-ended `buffer` of `size` bytes.
/// @return 0, or 3 when the placeholder is missing or the result does not fit (the buffer is unchanged).
PLATFORM_EXPORT int TK_SubString(char* buffer, std::size_t size, const char* placeholder, const char* text);
