// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "platform/standalone/SH_CacheFiles.h"

/// The cache's folder as a whole. There is no index: what lies there is it. Others may write, read and remove all the
/// while. All throw DiskFault and std::bad_alloc.
namespace standalone {

struct CacheSums {
    std::uint64_t entries = 0, bytes = 0;
};

/// Removes what processes left unfinished that are gone, and sums up whole files.
void SweepFiles(const std::string& top, CacheSums* left);
/// While there are more than `limit` bytes, removes the oldest files until 90 % of it is left; those of other numbers
/// than `numbers` go before all others. @return what is left
CacheSums ShrinkFiles(const std::string& top, std::uint64_t limit, const std::string& numbers);
/// Removes all whole files, and folders that are empty then.
void RemoveFiles(const std::string& top, CacheSums* removed);
/// Reads all files and removes those that cannot be believed; other formats' files stay. The first fault is thrown
/// after the last file.
/// @param stops  is asked before each file whether the rest is to be left out; null: never
void VerifyFiles(const std::string& top, bool (*stops)(), CacheSums* left, CacheSums* removed);

}  // namespace standalone
