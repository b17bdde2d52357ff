// SPDX-License-Identifier: Apache-2.0
// Small services: texts of numbers, which no locale changes, the order of bytes and the block copy.
#include <charconv>
#include <cstring>

#include "platform/IK_CopyMemory.h"
#include "platform/tesselcore_Utility.h"

namespace tesselcore::utility {

void ReplaceInString(std::wstring& text, const std::wstring& what, const std::wstring& by) {
    if (what.empty()) return;
    for (std::size_t at = 0; (at = text.find(what, at)) != std::wstring::npos; at += by.size()) {
        text.replace(at, what.size(), by);
    }
}

std::wstring NumberToString(int number) { return std::to_wstring(number); }

std::wstring NumberToString(double number, int digits_behind_point) {
    char digits[512];  // the longest double has 309 digits before the point
    const auto end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed,
                                   digits_behind_point < 100 ? digits_behind_point : 100);
    return {digits, end.ptr};
}

}  // namespace tesselcore::utility

std::uint32_t TK_LongSwap(std::uint32_t number) { return __builtin_bswap32(number); }

void IK_CopyMemory(const void* from, void* to, std::size_t bytes) {
    if (bytes > 0) std::memmove(to, from, bytes);
}
