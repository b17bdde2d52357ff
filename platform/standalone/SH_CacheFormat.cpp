// SPDX-License-Identifier: Apache-2.0
// Names and heads of the cache's files.
#include "platform/standalone/SH_CacheFormat.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>

namespace standalone {
namespace {

constexpr char kMagic[8] = {'Q', 'X', 'c', 'a', 'c', 'h', 'e', '\n'};
constexpr char kDigits[] = "0123456789abcdef";
constexpr std::string_view kUnfinished = ".tmp-";
constexpr double kDay = 24 * 60 * 60;

/// The text's number; it is nothing else, and begins with no zero but for 0 itself.
template <class Number> std::optional<Number> number_of(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return std::to_string(number) == text ? std::optional(number) : std::nullopt;
}

/// What stands before the next `separator`, which it takes away with it; all where there is none.
std::string_view cut(std::string_view* text, char separator) {
    const std::size_t at = text->find(separator);
    const std::string_view part = text->substr(0, at);
    text->remove_prefix(at == std::string_view::npos ? text->size() : at + 1);
    return part;
}

class Packer {
public:
    explicit Packer(std::uint8_t* to) : to_(to) {}
    void bytes(const void* from, std::size_t count) {
        std::memcpy(to_, from, count);
        to_ += count;
    }
    template <class Number> void number(Number v) {
        for (std::size_t i = 0; i < sizeof v; ++i) *to_++ = static_cast<std::uint8_t>(v >> (8 * i));
    }

private:
    std::uint8_t* to_;
};

template <class Number> Number number_at(const std::uint8_t* bytes) {
    Number v = 0;
    for (std::size_t i = sizeof v; i-- > 0;) v = static_cast<Number>(v << 8 | bytes[i]);
    return v;
}

constexpr std::size_t kLengthAt = kCacheHeadBytes - 16, kChecksumAt = kCacheHeadBytes - 8;

/// This machine's name in letters, digits and underscores. Processes that do not see each other do not share it, though
/// they may run on one machine: their numbers mean nothing to each other.
std::string machine() {
    char name[256] = "", space[64] = "";
    if (::gethostname(name, sizeof name - 1) != 0) name[0] = 0;
    if (::readlink("/proc/self/ns/pid", space, sizeof space - 1) < 0) space[0] = 0;
    std::string text = std::string(name) + "_" + space;
    for (char& c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
    }
    return text;
}

}  // namespace

std::string NumbersOf(const CacheKey& key) {
    return std::to_string(kCacheFormat) + "." + std::to_string(key.engine) + "." + std::to_string(key.bands);
}

CacheName NameOf(const CacheKey& key) {
    std::string hex;
    for (const unsigned byte : key.identity) hex += {kDigits[byte >> 4], kDigits[byte & 15]};
    return {NumbersOf(key), hex.substr(0, 2), hex.substr(2)};
}

bool IsNumbersFolder(std::string_view name) {
    for (int i = 0; i < 3; ++i) {
        if (!number_of<std::uint32_t>(i < 2 ? cut(&name, '.') : name)) return false;
    }
    return true;
}

bool IsEntryName(const CacheName& name) {
    const std::string hex = name.first + name.rest;
    return IsNumbersFolder(name.numbers) && name.first.size() == 2 && hex.size() == 2 * sizeof(CacheKey::identity) &&
           hex.find_first_not_of(kDigits) == std::string::npos;
}

std::optional<CacheKey> KeyOf(const CacheName& name) {
    std::string_view numbers = name.numbers;
    cut(&numbers, '.');
    const auto engine = number_of<std::uint32_t>(cut(&numbers, '.'));
    CacheKey key{engine.value_or(0), number_of<std::uint32_t>(numbers).value_or(0), {}};
    const std::string hex = name.first + name.rest;
    for (std::size_t i = 0; i < key.identity.size(); ++i) {
        std::from_chars(&hex[2 * i], &hex[2 * i] + 2, key.identity[i], 16);
    }
    return NumbersOf(key) == name.numbers ? std::optional(key) : std::nullopt;
}

CacheHeadBytes BytesOf(const CacheHead& head) {
    CacheHeadBytes bytes;
    Packer pack(bytes.data());
    pack.bytes(kMagic, sizeof kMagic);
    pack.number(kCacheFormat);
    pack.number(head.key.engine);
    pack.number(head.key.bands);
    pack.bytes(head.key.identity.data(), head.key.identity.size());
    pack.number(head.length);
    pack.number(head.checksum);
    return bytes;
}

bool IsHeadOf(const CacheHeadBytes& bytes, const CacheKey& key, std::uint64_t file_size, std::uint64_t* checksum) {
    const CacheHead head{key, number_at<std::uint64_t>(&bytes[kLengthAt]),
                         number_at<std::uint64_t>(&bytes[kChecksumAt])};
    *checksum = head.checksum;
    return BytesOf(head) == bytes && file_size >= kCacheHeadBytes && head.length == file_size - kCacheHeadBytes;
}

std::string NewUnfinishedName() {
    // A process that was killed may have had this one's number.
    static std::atomic<std::int64_t> last{std::chrono::system_clock::now().time_since_epoch().count()};
    return std::string(kUnfinished) + machine() + "-" + std::to_string(::getpid()) + "-" + std::to_string(++last);
}

bool IsUnfinished(std::string_view name) { return name.substr(0, kUnfinished.size()) == kUnfinished; }

bool IsAbandoned(std::string_view name, double age) {
    if (!IsUnfinished(name)) return false;
    if (age > kDay) return true;
    name.remove_prefix(kUnfinished.size());
    const bool is_here = cut(&name, '-') == machine();
    const auto process = number_of<pid_t>(cut(&name, '-'));
    return is_here && process && *process > 0 && ::kill(*process, 0) != 0 && errno == ESRCH;
}

}  // namespace standalone
