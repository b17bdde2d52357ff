// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "platform/Platform_Export.h"

/// The suite by which all others are found: a record of functions of C, for any thread. Each gives 0 or an error code,
/// save `IsEqual`, which gives whether two names are the same. A suite that is acquired is released as often.
struct QSBasicSuite {
    int (*AcquireSuite)(const char* name, int version, const void** suite);
    int (*ReleaseSuite)(const char* name, int version);
    int (*IsEqual)(const char* one, const char* other);
    int (*AllocateBlock)(std::size_t bytes, void** block);
    int (*FreeBlock)(void* block);
    int (*ReallocateBlock)(void* block, std::size_t bytes, void** resized);
    int (*Undefined)();
};

/// Gives the basic suite of the host's broker of suites. What it does not know gives 3, and the suite null, as
/// `Undefined` does and the release of what is not out; a null pointer gives 516. Blocks are memory like any other.
/// @return 0, or a code with `*suite` null
PLATFORM_EXPORT int TK_QS_GetQSBasicSuite(const QSBasicSuite** suite);

/// Hands a suite to the broker, which keeps `table` to the end of the process: `entries` pointers to functions.
/// @param owner  not read, as `flags` is
/// @return 0, also for what it has already; 3 where the name has another table under this version; 516 for a null name
///         or table; 4 after a report. May throw an int or a std::exception.
PLATFORM_EXPORT int TK_QS_AddQSSuite(void* owner, int flags, const char* name, int version, int internal_version,
                                     int entries, const void* table);
