// SPDX-License-Identifier: Apache-2.0
// Localised strings; the stand-alone host speaks English, which every key brings along.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/TK_Strings.h"
#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

/// Length of the sequence that a first byte announces; 0 for one that begins none.
int SequenceLength(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

/// Reads a code point and moves on; a broken sequence counts as one byte.
std::uint32_t NextCodePoint(const char*& text) {
    const auto first = static_cast<unsigned char>(*text++);
    const int length = SequenceLength(first);
    if (length == 1) return first;
    if (length == 0) return kReplacement;
    std::uint32_t code = first & (0xFFu >> (length + 1));
    for (int i = 0; i < length - 1; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return kReplacement;
        code = code << 6 | (next & 0x3Fu);
    }
    const bool too_long = length > 2 && code < (length == 3 ? 0x800u : 0x10000u);
    if (too_long || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return kReplacement;
    text += length - 1;
    return code;
}

void Append(std::string& out, std::uint32_t code) {
    const auto put = [&](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
    const auto tail = [&](int shift) { put(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) return put(code);
    if (code < 0x800) return put(0xC0 | code >> 6), tail(0);
    if (code < 0x10000) return put(0xE0 | code >> 12), tail(6), tail(0);
    put(0xF0 | code >> 18), tail(12), tail(6), tail(0);
}

}  // namespace

std::string ToUtf8(const std::wstring& text) {
    std::string out;
    for (const wchar_t c : text) {
        const auto code = static_cast<std::uint32_t>(static_cast<char32_t>(c));
        Append(out, code > 0x10FFFF || (code >= 0xD800 && code < 0xE000) ? kReplacement : code);
    }
    return out;
}

std::wstring FromUtf8(const char* text) {
    std::wstring out;
    while (*text != '\0') out.push_back(static_cast<wchar_t>(NextCodePoint(text)));
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
