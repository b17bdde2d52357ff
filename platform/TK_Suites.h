// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "platform/Platform_Export.h"

/// The suite by which all others are found. Each operation gives 0 or an error code, save `IsEqual`, which gives
/// whether two names are the same.
struct QSBasicSuite {
    int (*AcquireSuite)(const char* name, int version, const void** suite);
    int (*ReleaseSuite)(const char* name, int version);
    int (*IsEqual)(const char* one, const char* other);
    int (*AllocateBlock)(std::size_t bytes, void** block);
    int (*FreeBlock)(void* block);
    int (*ReallocateBlock)(void* block, std::size_t bytes, void** resized);
    int (*Undefined)();
};

/// Gives the basic suite of the host's broker of suites. A host without one has a suite that finds no other: acquiring
/// and `Undefined` give 3, and the suite null; blocks are memory like any other.
/// @return 0, or a code with `*suite` null
PLATFORM_EXPORT int TK_QS_GetQSBasicSuite(const QSBasicSuite** suite);
