// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/KS_Cache.h"

/// How an item lies on disk: vectors/FORMAT.ENGINE.BANDS/xx/REST, where xx and REST are the identity in hexadecimal
/// digits, and in the file a head, in which every number has its low byte first, and what the item has flattened.
namespace standalone {

/// What an item is found by. Results of an engine change with its number and may change with the bands.
struct CacheKey {
    std::uint32_t engine, bands;
    std::array<std::uint8_t, 16> identity;

    auto operator<=>(const CacheKey&) const = default;
};
CacheKey KeyOf(const KS_Stuff& stuff);

inline constexpr const char* kCacheTop = "vectors";
inline constexpr std::uint32_t kCacheFormat = 1;

/// Where a file lies below the top folder.
struct CacheName {
    std::string numbers, first, rest;
};
CacheName NameOf(const CacheKey& key);
std::string NumbersOf(const CacheKey& key);
bool IsNumbersFolder(std::string_view name);
/// Whether it may be the name of a file of any format.
bool IsEntryName(const CacheName& name);
/// Of the name of a file; none if it has another format.
std::optional<CacheKey> KeyOf(const CacheName& name);

struct CacheHead {
    CacheKey key;
    std::uint64_t length, checksum;  ///< of what follows; XXH3 of 64 bits
};
inline constexpr std::size_t kCacheHeadBytes = 52;
using CacheHeadBytes = std::array<std::uint8_t, kCacheHeadBytes>;
CacheHeadBytes BytesOf(const CacheHead& head);
/// Whether this is the head of a file of that key and size; if so `*checksum` is set.
bool IsHeadOf(const CacheHeadBytes& bytes, const CacheKey& key, std::uint64_t file_size, std::uint64_t* checksum);

/// The name of a file that is being written: it tells the machine and the process, and no two are the same.
std::string NewUnfinishedName();
/// Whether it is the name of a file that nobody writes any more.
/// @param age  seconds since it was changed
bool IsAbandoned(std::string_view name, double age);
bool IsUnfinished(std::string_view name);

}  // namespace standalone
