// SPDX-License-Identifier: Apache-2.0
// Localised strings; the stand-alone host speaks English, which every key brings along.
#include <algorithm>
#include <boost/locale/utf.hpp>
#include <cstring>
#include <iterator>

#include "platform/TK_Strings.h"
#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

namespace utf = boost::locale::utf;
using Utf8 = utf::utf_traits<char>;

constexpr utf::code_point kReplacement = 0xFFFD;

}  // namespace

std::string ToUtf8(const std::wstring& text) {
    std::string out;
    for (const wchar_t c : text) {
        const auto code = static_cast<utf::code_point>(static_cast<char32_t>(c));
        Utf8::encode(utf::is_valid_codepoint(code) ? code : kReplacement, std::back_inserter(out));
    }
    return out;
}

/// A broken sequence counts as one byte.
std::wstring FromUtf8(const char* text) {
    std::wstring out;
    for (const char *at = text, *const end = text + std::strlen(text); at != end;) {
        const char* const begin = at;
        const utf::code_point code = Utf8::decode(at, end);
        const bool valid = utf::is_valid_codepoint(code);
        out.push_back(static_cast<wchar_t>(valid ? code : kReplacement));
        if (!valid) at = begin + 1;
    }
    return out;
}

}  // namespace standalone

const char* TK_ZString(const char* key) {
    if (std::strncmp(key, "$$$/", 4) != 0) return key;
    const char* equals = std::strchr(key, '=');
    return equals == nullptr ? key : equals + 1;
}

const char* TK_ZLookupLStrCache(const TK_ZRef& table, int number) {
    if (number < 0 || number >= table.count || table.keys[number] == nullptr) return nullptr;
    return TK_ZString(table.keys[number]);
}

std::wstring TK_ZStringToUTF16String(const char* key) { return standalone::FromUtf8(TK_ZString(key)); }

std::string TK_ZStringToMBString(const char* key) { return TK_ZString(key); }

int TK_SubString(char* buffer, std::size_t size, const char* placeholder, const char* text) {
    const std::size_t from = std::strlen(placeholder), to = std::strlen(text);
    char* place = from == 0 ? nullptr : std::strstr(buffer, placeholder);
    if (place == nullptr) return 3;
    const std::size_t length = std::strlen(buffer);
    if (length - from + to + 1 > size) return 3;
    const auto behind = length - static_cast<std::size_t>(place - buffer) - from;
    std::memmove(place + to, place + from, behind + 1);
    std::copy(text, text + to, place);
    return 0;
}
