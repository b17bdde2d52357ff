// SPDX-License-Identifier: Apache-2.0
// Fixed and movable memory, and tracked objects. Blocks come from the C runtime, whose alignment is 16 bytes.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

#include "platform/TK_Memory.h"
#include "platform/TK_Report.h"
#include "platform/TK_Strings.h"
#include "platform/standalone/SH_Internal.h"
#include "platform/standalone/Standalone.h"

static_assert(alignof(std::max_align_t) >= 16);

namespace standalone {
namespace {
std::atomic<std::int64_t> allocation_count{0};
std::atomic<std::int64_t> block_count{0};
std::atomic<std::int64_t> lock_count{0};
std::atomic<std::int64_t> fail_in{0}, fail_from{0};
std::atomic<std::int64_t> accounted{0};

/// Counts down to `last`. @return false for the count 1, which with `last` 1 is there to stay
bool CountDown(std::atomic<std::int64_t>& count, std::int64_t last) {
    std::int64_t left = count.load(std::memory_order_relaxed);
    while (left > last && !count.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
    }
    return left != 1;
}

}  // namespace

bool AllocationMayGoOn() {
    allocation_count.fetch_add(1, std::memory_order_relaxed);
    const bool this_one = CountDown(fail_in, 0), from_here = CountDown(fail_from, 1);
    return this_one && from_here;
}

void CountBlock(int difference) { block_count.fetch_add(difference, std::memory_order_relaxed); }

void FailAllocation(std::int64_t nth) { fail_in.store(nth, std::memory_order_relaxed); }
void FailAllocationsFrom(std::int64_t nth) { fail_from.store(nth, std::memory_order_relaxed); }

std::int64_t AccountedBytes() { return accounted.load(std::memory_order_relaxed); }

MemoryCounts Memory() {
    MemoryCounts counts{};
    counts.allocations = allocation_count.load(std::memory_order_relaxed);
    counts.blocks_in_use = block_count.load(std::memory_order_relaxed);
    counts.handle_locks = lock_count.load(std::memory_order_relaxed);
    RecycledCounts(&counts);
    return counts;
}

}  // namespace standalone

namespace {

/// A handle is the address of `data`, so that `*handle` is the block.
struct Movable {
    void* data;
    std::size_t bytes;
    int locks;
};
Movable* MovableOf(TK_Handle handle) { return reinterpret_cast<Movable*>(handle); }

void CountLock(Movable* movable, int difference) {
    movable->locks += difference;
    standalone::lock_count.fetch_add(difference, std::memory_order_relaxed);
}

std::size_t AtLeastOne(std::size_t bytes) { return std::max<std::size_t>(bytes, 1); }

void* CountedBlock(std::size_t bytes, bool clear) {
    if (!standalone::AllocationMayGoOn() || bytes > PTRDIFF_MAX) return nullptr;
    void* block = clear ? std::calloc(AtLeastOne(bytes), 1) : std::malloc(AtLeastOne(bytes));
    if (block != nullptr) standalone::CountBlock(1);
    return block;
}

/// A block of another length with the same contents, or null with the old one left alone.
void* ResizedBlock(void* block, std::size_t bytes) {
    if (block == nullptr) return CountedBlock(bytes, false);
    if (!standalone::AllocationMayGoOn() || bytes > PTRDIFF_MAX) return nullptr;
    return std::realloc(block, AtLeastOne(bytes));
}

TK_Handle NewHandle(std::size_t bytes, bool clear) {
    auto* movable = static_cast<Movable*>(std::malloc(sizeof(Movable)));
    if (movable == nullptr) return nullptr;
    *movable = {CountedBlock(bytes, clear), bytes, 0};
    if (movable->data != nullptr) return &movable->data;
    std::free(movable);
    return nullptr;
}

/// The block of a handle at another length, or null with everything as it was. A locked block stays where it is, so
/// that it can shrink only.
void* ResizedData(Movable& movable, std::size_t bytes) {
    if (movable.locks > 0) {
        if (bytes > movable.bytes) return nullptr;
        return movable.data;
    }
    void* const block = ResizedBlock(movable.data, bytes);
    if (block != nullptr) movable.data = block;
    return block;
}

void ReportShortage(int site, const char* name) {
    try {
        const std::string text = std::string("out of memory: ") + (name == nullptr ? "" : TK_ZString(name));
        TKp_ReportErrString(site, 8, text.c_str());
    } catch (const std::bad_alloc&) {
        TKp_ReportErrString(site, 8, "out of memory");
    }
}

template <class Block> Block OrReport(Block block, int site, const char* name) {
    if (block == nullptr) ReportShortage(site, name);
    return block;
}

}  // namespace

void* TK_AllocatePtr(int site, const char* name, std::size_t bytes) {
    return OrReport(CountedBlock(bytes, false), site, name);
}

void* TK_AllocatePtrClear(int site, const char* name, std::size_t bytes) {
    return OrReport(CountedBlock(bytes, true), site, name);
}

void TK_FreePtr(void* block) {
    if (block == nullptr) return;
    standalone::CountBlock(-1);
    std::free(block);
}

int TK_ResizePtr(std::size_t bytes, void** block) {
    void* const resized = ResizedBlock(*block, bytes);
    if (resized == nullptr) return 4;
    *block = resized;
    return 0;
}

void TK_AccountAllocationEx(const char*, std::int64_t bytes) {
    standalone::accounted.fetch_add(bytes, std::memory_order_relaxed);
}

void TKp_Memset16(std::uint16_t* where, std::uint16_t value, std::size_t count) { std::fill_n(where, count, value); }

TK_Handle TK_AllocateHandle(int site, const char* name, std::size_t bytes) {
    return OrReport(NewHandle(bytes, false), site, name);
}

TK_Handle TK_AllocateHandleClear(int site, const char* name, std::size_t bytes) {
    return OrReport(NewHandle(bytes, true), site, name);
}

TK_Handle TK_AllocateHandleQuiet(std::size_t bytes) { return NewHandle(bytes, false); }

void TK_FreeHandle(TK_Handle handle) {
    if (handle == nullptr) return;
    TK_FreePtr(*handle);
    std::free(MovableOf(handle));
}

void* TK_LockHandle(TK_Handle handle) {
    if (handle == nullptr) return nullptr;
    CountLock(MovableOf(handle), 1);
    return *handle;
}

void TK_UnlockHandle(TK_Handle handle) {
    if (handle != nullptr && MovableOf(handle)->locks > 0) CountLock(MovableOf(handle), -1);
}

std::size_t TK_GetHandleSize(TK_Handle handle) { return handle == nullptr ? 0 : MovableOf(handle)->bytes; }

int TK_ResizeHandle(int site, const char* name, std::size_t bytes, TK_Handle* handle) {
    Movable* movable = MovableOf(*handle);
    if (OrReport(ResizedData(*movable, bytes), site, name) == nullptr) return 4;
    movable->bytes = bytes;
    return 0;
}

void* TK_MemTrackedObject::operator new(std::size_t bytes) {
    void* block = CountedBlock(bytes, false);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void TK_MemTrackedObject::operator delete(void* block) noexcept { TK_FreePtr(block); }
