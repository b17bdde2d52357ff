// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Platform_Export.h"

/// Fixed memory, aligned to 16 bytes. A failure is reported with the name (a plain or a localised
/// "$$$/...=text" string), unless the thread is in a quiet section, and gives null. Any thread.
PLATFORM_EXPORT void* TK_AllocatePtr(int site, const char* name, std::size_t bytes);
PLATFORM_EXPORT void* TK_AllocatePtrClear(int site, const char* name, std::size_t bytes);
PLATFORM_EXPORT void TK_FreePtr(void* block);  ///< Null is allowed.
/// Makes a block of fixed memory longer or shorter and keeps its contents. A null block is allocated. Quiet.
/// @return 0, or 4 with the block as it was
PLATFORM_EXPORT int TK_ResizePtr(std::size_t bytes, void** block);
/// Enters memory of some purpose in the host's books: what is taken counts up, what is given back is negative. Any
/// thread.
PLATFORM_EXPORT void TK_AccountAllocationEx(const char* name, std::int64_t bytes);
/// Sets `count` numbers of 16 bits.
PLATFORM_EXPORT void TKp_Memset16(std::uint16_t* where, std::uint16_t value, std::size_t count);

/// Movable memory: `*handle` is the block's address. Locks nest; a resize keeps the contents.
using TK_Handle = void**;
PLATFORM_EXPORT TK_Handle TK_AllocateHandle(int site, const char* name, std::size_t bytes);
PLATFORM_EXPORT TK_Handle TK_AllocateHandleClear(int site, const char* name, std::size_t bytes);
PLATFORM_EXPORT TK_Handle TK_AllocateHandleQuiet(std::size_t bytes);
PLATFORM_EXPORT void TK_FreeHandle(TK_Handle handle);  ///< Null is allowed.
PLATFORM_EXPORT void* TK_LockHandle(TK_Handle handle);
PLATFORM_EXPORT void TK_UnlockHandle(TK_Handle handle);
PLATFORM_EXPORT std::size_t TK_GetHandleSize(TK_Handle handle);
/// A failure is reported as above. @return 0, or 4 with nothing changed
PLATFORM_EXPORT int TK_ResizeHandle(int site, const char* name, std::size_t bytes, TK_Handle* handle);

/// Memory for frames that come and go: freed blocks wait in a pool for the next request of their
/// size. Quiet: a failure gives null without a report. Any thread.
struct TK_RecycledPtr;
PLATFORM_EXPORT TK_RecycledPtr* TK_AllocateRecycledPtr(int site, const char* tag, std::size_t bytes);
PLATFORM_EXPORT void* TK_GetRecycledPtrBaseAddress(TK_RecycledPtr* recycled);  ///< Null for null.
/// Takes back a block by its base address. `bytes` is a hint: the pool keeps each block's true size.
PLATFORM_EXPORT void TK_FreeRecycledPtr(void* block, std::size_t bytes);

/// The runtime's heap, as a seam so that a test can count and refuse. `free` takes any block of it.
PLATFORM_EXPORT void* TK_RuntimeMalloc(std::size_t bytes);
PLATFORM_EXPORT void TK_RuntimeFree(void* block);

/// One attempt to get memory; sets `*success`.
using TK_PurgeAttempt = void (*)(void* context, bool* success);
/// Calls `attempt` and, while it fails, empties host caches and tries again.
/// @return 0 once an attempt succeeded, 4 when nothing is left to purge.
PLATFORM_EXPORT int TK_PurgeLoop(std::size_t bytes, TK_PurgeAttempt attempt, void* context, int flags);

/// Empty base that routes `new` and `delete` of long-lived objects to the host's tracked memory.
/// `new` throws std::bad_alloc when memory is short.
class PLATFORM_EXPORT TK_MemTrackedObject {
public:
    static void* operator new(std::size_t bytes);
    static void operator delete(void* block) noexcept;
    static void* operator new(std::size_t, void* where) noexcept { return where; }
    static void operator delete(void*, void*) noexcept {}
};
