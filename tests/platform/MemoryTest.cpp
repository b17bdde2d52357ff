// SPDX-License-Identifier: Apache-2.0
#include "platform/TK_Memory.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

constexpr std::int64_t kMiB = 1 << 20;

void* Recycled(std::size_t bytes) { return TK_GetRecycledPtrBaseAddress(TK_AllocateRecycledPtr(0, "frame", bytes)); }
std::int64_t waiting() { return standalone::Memory().recycled_bytes; }

/// A way to get a block and its address, whether its failure is reported, and the way to free it.
struct Allocator {
    const char* name;
    bool reports, is_handle;
    std::function<void*()> get;
    std::function<void(void*)> free;
};

void* new_tracked() try { return new TK_MemTrackedObject; } catch (const std::bad_alloc&) {
    return nullptr;
}
const auto free_handle = [](void* handle) { TK_FreeHandle(static_cast<TK_Handle>(handle)); };

const Allocator kAllocators[] = {
    {"fixed", true, false, [] { return TK_AllocatePtr(9, "$$$/QX/1=rows", 64); }, TK_FreePtr},
    {"fixed clear", true, false, [] { return TK_AllocatePtrClear(9, "rows", 64); }, TK_FreePtr},
    {"handle", true, true, [] { return TK_AllocateHandle(9, "rows", 64); }, free_handle},
    {"handle clear", true, true, [] { return TK_AllocateHandleClear(9, "rows", 64); }, free_handle},
    {"handle quiet", false, true, [] { return TK_AllocateHandleQuiet(64); }, free_handle},
    {"recycled", false, false, [] { return Recycled(64); }, [](void* p) { TK_FreeRecycledPtr(p, 64); }},
    {"runtime", false, false, [] { return TK_RuntimeMalloc(64); }, TK_RuntimeFree},
    {"tracked object", false, false, new_tracked, [](void* p) { delete static_cast<TK_MemTrackedObject*>(p); }},
};

TEST(Memory, EveryAllocatorCountsOnceAlignsAndFailsOnDemand) {
    for (const Allocator& a : kAllocators) {
        SCOPED_TRACE(a.name);
        standalone::PurgeRecycled();
        const Reports reports;
        const auto before = standalone::Memory();
        standalone::FailAllocation(2);
        void* const got[] = {a.get(), a.get(), a.get()};
        ASSERT_TRUE(got[0] != nullptr && got[1] == nullptr && got[2] != nullptr);
        EXPECT_EQ(standalone::Memory().allocations, before.allocations + 3);
        EXPECT_EQ(blocks_in_use(), before.blocks_in_use + 2);
        for (void* block : {got[0], got[2]}) {
            const void* address = a.is_handle ? *static_cast<TK_Handle>(block) : block;
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(address) % 16, 0u);
            a.free(block);
        }
        EXPECT_EQ(blocks_in_use(), before.blocks_in_use);
        ASSERT_EQ(reports.all().size(), a.reports ? 1u : 0u);
        if (!a.reports) continue;
        EXPECT_EQ(reports.last_text(), "out of memory: rows");
        EXPECT_TRUE(reports.all()[0].site == 9 && reports.all()[0].kind == standalone::ReportKind::error_string);
    }
}

TEST(Memory, CanFailFromOneAllocationOn) {
    const auto fails = [] {
        void* const block = TK_RuntimeMalloc(1);
        TK_RuntimeFree(block);
        return block == nullptr;
    };
    standalone::FailAllocationsFrom(3);
    EXPECT_TRUE(!fails() && !fails());
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(fails());
    standalone::FailAllocationsFrom(0);
    EXPECT_FALSE(fails());
}

TEST(Memory, HopelessSizesGiveNull) {
    const Reports quiet;
    constexpr std::size_t huge = SIZE_MAX - 4;
    EXPECT_TRUE(TK_AllocatePtr(0, "rows", huge) == nullptr && TK_AllocateHandleQuiet(huge) == nullptr);
    EXPECT_TRUE(TK_RuntimeMalloc(huge) == nullptr && TK_AllocateRecycledPtr(0, "frame", huge) == nullptr);
    TK_FreePtr(nullptr);
    TK_FreeHandle(nullptr);
    TK_RuntimeFree(nullptr);
    TK_FreeRecycledPtr(nullptr, 5);
    EXPECT_EQ(TK_GetRecycledPtrBaseAddress(nullptr), nullptr);
}

int resized(std::size_t bytes, TK_Handle* handle) { return TK_ResizeHandle(9, "rows", bytes, handle); }

TEST(Memory, HandlesKeepContentsWhenResized) {
    const Reports reports;
    TK_Handle handle = TK_AllocateHandleClear(0, "chunk", 4);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(std::memcmp(*handle, "\0\0\0\0", 4), 0);
    std::memcpy(*handle, "abcd", 4);
    ASSERT_EQ(resized(kMiB, &handle), 0);
    EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
    EXPECT_EQ(short_of_memory(1, [&] { return resized(2 * kMiB, &handle); }), 4);
    EXPECT_TRUE(reports.all().size() == 1 && reports.last_text() == "out of memory: rows");
    EXPECT_EQ(TK_GetHandleSize(handle), kMiB);
    EXPECT_EQ(resized(8, &handle), 0);
    EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
    TK_FreeHandle(handle);
}

TEST(Memory, BlocksKeepContentsWhenResized) {
    const auto before = standalone::Memory().blocks_in_use;
    void* block = nullptr;
    ASSERT_EQ(TK_ResizePtr(4, &block), 0);
    TKp_Memset16(static_cast<std::uint16_t*>(block), 0x6261, 2);
    ASSERT_EQ(TK_ResizePtr(kMiB, &block), 0);
    const void* const same = block;
    EXPECT_EQ(short_of_memory(1, [&] { return TK_ResizePtr(2 * kMiB, &block); }), 4);
    EXPECT_TRUE(block == same && std::memcmp(block, "abab", 4) == 0);
    EXPECT_EQ(standalone::Memory().blocks_in_use, before + 1);
    TK_FreePtr(block);
    EXPECT_EQ(standalone::Memory().blocks_in_use, before);
}

TEST(Memory, LocksOfHandlesNestAndAreCounted) {
    const auto before = standalone::Memory().handle_locks;
    const auto locks = [&] { return standalone::Memory().handle_locks - before; };
    TK_Handle a = TK_AllocateHandleQuiet(4), b = TK_AllocateHandleQuiet(4);
    const void* locked = *a;
    for (const TK_Handle handle : {a, b, a, TK_Handle{}}) EXPECT_EQ(TK_LockHandle(handle), handle ? *handle : nullptr);
    EXPECT_EQ(locks(), 3);
    for (const TK_Handle handle : {a, b, b, TK_Handle{}}) TK_UnlockHandle(handle);  // one more than b has
    EXPECT_EQ(locks(), 1);
    const Reports quiet;
    EXPECT_EQ(resized(kMiB, &a), 4) << "still locked";
    EXPECT_EQ(resized(2, &a), 0);
    EXPECT_EQ(*a, locked);
    TK_UnlockHandle(a);
    EXPECT_EQ(locks(), 0);
    EXPECT_EQ(resized(kMiB, &a), 0);
    for (const TK_Handle handle : {a, b}) TK_FreeHandle(handle);
}

TEST(Recycled, WaitingBlockAnswersRequestOfItsSize) {
    standalone::PurgeRecycled();
    void *small = Recycled(kMiB), *large = Recycled(kMiB + 1);
    TK_FreeRecycledPtr(small, kMiB);
    TK_FreeRecycledPtr(large, kMiB + 1);
    EXPECT_EQ(waiting(), 2 * kMiB + 1);
    EXPECT_EQ(Recycled(kMiB), small);
    void* fresh = Recycled(kMiB);
    EXPECT_NE(fresh, large) << "a block of another size is no answer";
    EXPECT_EQ(standalone::PurgeRecycled(), kMiB + 1);
    TK_FreeRecycledPtr(small, kMiB);
    TK_FreeRecycledPtr(fresh, kMiB);
    EXPECT_EQ(standalone::PurgeRecycled(), 2 * kMiB);
    EXPECT_EQ(waiting(), 0);
}

TEST(Recycled, TakesAnySizeBackAndBothPoolsTakeBothKinds) {
    standalone::PurgeRecycled();
    const auto blocks = blocks_in_use();
    for (const std::size_t said : {0ul, 1ul, 64ul << 20, SIZE_MAX}) {
        void* block = Recycled(kMiB);
        std::memset(block, 0x5A, kMiB);
        TK_FreeRecycledPtr(block, said);
        EXPECT_EQ(waiting(), kMiB) << said;
    }
    TK_RuntimeFree(Recycled(kMiB));
    EXPECT_EQ(waiting(), kMiB);
    TK_FreeRecycledPtr(TK_RuntimeMalloc(kMiB), kMiB);
    EXPECT_EQ(waiting(), kMiB) << "heap blocks do not wait";
    EXPECT_EQ(blocks_in_use(), blocks);
    standalone::PurgeRecycled();
}

/// Each thread writes into blocks that another one may have had.
TEST(Recycled, ThreadsShareThePool) {
    const auto blocks = blocks_in_use();
    in_threads(4, [](int i) {
        for (int n = 0; n < 2000; ++n) {
            const int bytes = 64 + n % 3;
            auto* block = static_cast<char*>(Recycled(static_cast<std::size_t>(bytes)));
            std::memset(block, i, static_cast<std::size_t>(bytes));
            ASSERT_EQ(std::count(block, block + bytes, i), bytes);
            TK_FreeRecycledPtr(block, 0);
        }
    });
    EXPECT_EQ(blocks_in_use(), blocks);
    standalone::PurgeRecycled();
}

}  // namespace
