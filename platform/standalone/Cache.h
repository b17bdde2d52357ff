// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "platform/Platform_Export.h"

/// The stand-alone host's cache behind KS_Cache.h: a bag in memory, and behind it a folder of files, one an item, which
/// any number of processes and machines may share.
namespace standalone {

/// Where items are kept on disk; made when the first one is written. Empty, as from the start: in memory alone. Set it
/// while nothing runs.
PLATFORM_EXPORT void SetCacheFolder(const std::string& folder);
PLATFORM_EXPORT std::string CacheFolder();
/// Bytes of the files (10 GiB from the start). Beyond it the oldest go, until 90 % is left.
PLATFORM_EXPORT void SetCacheDiskLimit(std::uint64_t bytes);
PLATFORM_EXPORT std::uint64_t CacheDiskLimit();
/// Bytes of the items in memory (1 GiB from the start). Beyond it those go that were not used for longest; items in use
/// count, and stay.
PLATFORM_EXPORT void SetCacheMemoryLimit(std::uint64_t bytes);
PLATFORM_EXPORT std::uint64_t CacheMemoryLimit();

/// The first fault of the disk since the folder was set, for people; empty without one. All go to the log.
PLATFORM_EXPORT std::string CacheNote();

struct CacheCounts {
    std::uint64_t hits_in_memory, hits_on_disk, misses;
    std::uint64_t adds;          ///< items that came to the bag new, from whoever made them
    std::uint64_t evictions;     ///< items that left the bag for others or for want of memory
    std::uint64_t damaged;       ///< files that were removed since they could not be believed
    std::uint64_t failures;      ///< of reading, writing and removing files
    std::uint64_t items, bytes;  ///< in the bag now
};
PLATFORM_EXPORT CacheCounts CacheStatistics();
/// Sets what counts from the start to 0.
PLATFORM_EXPORT void ForgetCacheCounts();
/// Empties the bag, but for items in use. @return bytes given back
PLATFORM_EXPORT std::uint64_t PurgeCacheMemory();

/// What lies in the folder, or lies there after `ClearCache` and `VerifyCache`; none where there is no folder. Files
/// that processes left unfinished which are gone go every time.
struct CacheReview {
    std::uint64_t entries = 0, bytes = 0;
    std::uint64_t removed = 0, removed_bytes = 0;
    std::string fault;  ///< what could not be looked at or removed, for people; empty without one
};
PLATFORM_EXPORT CacheReview LookAtCache();
/// Removes all files.
PLATFORM_EXPORT CacheReview ClearCache();
/// Reads all files and removes those that cannot be believed.
/// @param stops  is asked before each file whether the rest is to be left out; null: never
PLATFORM_EXPORT CacheReview VerifyCache(bool (*stops)() = nullptr);

}  // namespace standalone
