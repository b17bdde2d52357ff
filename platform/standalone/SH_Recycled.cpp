// SPDX-License-Identifier: Apache-2.0
// The runtime's heap and the recycled pool. A caller chooses between the two by the size that it remembers, and may
// remember a wrong one: so every block of either has the same header, which alone tells its size and its home.
#include <cstdint>
#include <cstdlib>
#include <mutex>

#include "platform/TK_Memory.h"
#include "platform/standalone/Cache.h"
#include "platform/standalone/SH_Internal.h"
#include "platform/standalone/Standalone.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else  // a block that waits is out of bounds for all but the pool, which AddressSanitizer can be told
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(address)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(address)
#endif

struct alignas(16) TK_RecycledPtr {
    std::size_t bytes;
    bool recycled;
    TK_RecycledPtr* older;  ///< while it waits
};

namespace standalone {
namespace {

using Header = TK_RecycledPtr;

/// Bytes that may wait at most; the oldest blocks go first.
constexpr std::int64_t kWaitingLimit = std::int64_t{1} << 30;

struct Pool {
    std::mutex mutex;
    Header* newest = nullptr;
    std::int64_t waiting_bytes = 0;
    std::int64_t hits = 0;
};
Pool pool;

void* BaseOf(Header* header) { return header + 1; }
Header* HeaderOf(void* base) { return static_cast<Header*>(base) - 1; }

Header* NewBlock(std::size_t bytes, bool recycled) {
    if (bytes > PTRDIFF_MAX - sizeof(Header)) return nullptr;
    auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + bytes));
    if (header != nullptr) *header = {bytes, recycled, nullptr};
    return header;
}

/// Takes the newest waiting block of a size out of the pool, which is locked.
Header* TakeWaiting(std::size_t bytes) {
    for (Header** link = &pool.newest; *link != nullptr; link = &(*link)->older) {
        Header* found = *link;
        if (found->bytes != bytes) continue;
        *link = found->older;
        pool.waiting_bytes -= static_cast<std::int64_t>(bytes);
        ++pool.hits;
        ASAN_UNPOISON_MEMORY_REGION(BaseOf(found), found->bytes);
        return found;
    }
    return nullptr;
}

/// Frees all waiting blocks that are older than the newest `keep` bytes. The pool is locked.
std::int64_t DropWaiting(std::int64_t keep) {
    std::int64_t kept = 0, freed = 0;
    Header** link = &pool.newest;
    while (*link != nullptr && kept + static_cast<std::int64_t>((*link)->bytes) <= keep) {
        kept += static_cast<std::int64_t>((*link)->bytes);
        link = &(*link)->older;
    }
    Header* old = *link;
    *link = nullptr;
    while (old != nullptr) {
        Header* next = old->older;
        freed += static_cast<std::int64_t>(old->bytes);
        ASAN_UNPOISON_MEMORY_REGION(BaseOf(old), old->bytes);
        std::free(old);
        old = next;
    }
    pool.waiting_bytes = kept;
    return freed;
}

void GiveBack(void* block) {
    if (block == nullptr) return;
    CountBlock(-1);
    Header* header = HeaderOf(block);
    if (!header->recycled) return std::free(header);
    const std::lock_guard lock(pool.mutex);
    header->older = pool.newest;
    pool.newest = header;
    pool.waiting_bytes += static_cast<std::int64_t>(header->bytes);
    ASAN_POISON_MEMORY_REGION(block, header->bytes);
    if (pool.waiting_bytes > kWaitingLimit) DropWaiting(kWaitingLimit);
}

}  // namespace

void RecycledCounts(MemoryCounts* counts) {
    const std::lock_guard lock(pool.mutex);
    counts->recycled_bytes = pool.waiting_bytes;
    counts->recycled_hits = pool.hits;
}

std::int64_t PurgeRecycled() {
    const std::lock_guard lock(pool.mutex);
    return DropWaiting(0);
}

}  // namespace standalone

TK_RecycledPtr* TK_AllocateRecycledPtr(int, const char*, std::size_t bytes) {
    if (!standalone::AllocationMayGoOn()) return nullptr;
    standalone::Header* header = nullptr;
    {
        const std::lock_guard lock(standalone::pool.mutex);
        header = standalone::TakeWaiting(bytes);
    }
    if (header == nullptr) header = standalone::NewBlock(bytes, true);
    if (header != nullptr) standalone::CountBlock(1);
    return header;
}

void* TK_GetRecycledPtrBaseAddress(TK_RecycledPtr* recycled) {
    return recycled == nullptr ? nullptr : standalone::BaseOf(recycled);
}

void TK_FreeRecycledPtr(void* block, std::size_t) { standalone::GiveBack(block); }

void* TK_RuntimeMalloc(std::size_t bytes) {
    if (!standalone::AllocationMayGoOn()) return nullptr;
    standalone::Header* header = standalone::NewBlock(bytes, false);
    if (header == nullptr) return nullptr;
    standalone::CountBlock(1);
    return standalone::BaseOf(header);
}

void TK_RuntimeFree(void* block) { standalone::GiveBack(block); }

int TK_PurgeLoop(std::size_t, TK_PurgeAttempt attempt, void* context, int) {
    for (;;) {
        bool success = false;
        attempt(context, &success);
        if (success) return 0;
        if (standalone::PurgeRecycled() == 0 && standalone::PurgeCacheMemory() == 0) return 4;
    }
}
