// SPDX-License-Identifier: Apache-2.0
#include "platform/TK_Memory.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

constexpr std::size_t kMiB = 1u << 20;

struct Tracked : TK_MemTrackedObject {
    int value = 7;
};

void* Recycled(std::size_t bytes) { return TK_GetRecycledPtrBaseAddress(TK_AllocateRecycledPtr(0, "frame", bytes)); }

void* NewTracked() try { return new Tracked; } catch (const std::bad_alloc&) {
    return nullptr;
}

/// One way to get a block, whether its failure is reported, and the way to free it.
struct Allocator {
    const char* name;
    bool reports;
    std::function<void*()> get;
    std::function<void(void*)> free;
};

void FreeHandle(void* handle) { TK_FreeHandle(static_cast<TK_Handle>(handle)); }

const Allocator kAllocators[] = {
    {"fixed", true, [] { return TK_AllocatePtr(9, "$$$/QX/1=rows", 64); }, TK_FreePtr},
    {"fixed clear", true, [] { return TK_AllocatePtrClear(9, "rows", 64); }, TK_FreePtr},
    {"handle", true, [] { return static_cast<void*>(TK_AllocateHandle(9, "rows", 64)); }, FreeHandle},
    {"handle clear", true, [] { return static_cast<void*>(TK_AllocateHandleClear(9, "rows", 64)); }, FreeHandle},
    {"handle quiet", false, [] { return static_cast<void*>(TK_AllocateHandleQuiet(64)); }, FreeHandle},
    {"recycled", false, [] { return Recycled(64); }, [](void* p) { TK_FreeRecycledPtr(p, 64); }},
    {"runtime", false, [] { return TK_RuntimeMalloc(64); }, TK_RuntimeFree},
    {"tracked object", false, NewTracked, [](void* p) { delete static_cast<Tracked*>(p); }},
};

TEST(Memory, EveryAllocatorCountsOnceAndAligns) {
    for (const Allocator& a : kAllocators) {
        SCOPED_TRACE(a.name);
        standalone::PurgeRecycled();
        const auto before = standalone::Memory();
        void* block = a.get();
        ASSERT_NE(block, nullptr);
        const auto now = standalone::Memory();
        EXPECT_TRUE(now.allocations == before.allocations + 1 && now.blocks_in_use == before.blocks_in_use + 1);
        const bool is_handle = std::strncmp(a.name, "handle", 6) == 0;
        const void* address = is_handle ? *static_cast<TK_Handle>(block) : block;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(address) % 16, 0u);
        a.free(block);
        EXPECT_EQ(blocks_in_use(), before.blocks_in_use);
    }
}

TEST(Memory, ChosenAllocationFailsOnce) {
    for (const Allocator& a : kAllocators) {
        SCOPED_TRACE(a.name);
        Reports reports;
        const auto blocks = blocks_in_use();
        standalone::FailAllocation(2);
        void* const got[] = {a.get(), a.get(), a.get()};
        EXPECT_TRUE(got[0] != nullptr && got[1] == nullptr && got[2] != nullptr);
        a.free(got[0]), a.free(got[2]);
        EXPECT_EQ(blocks_in_use(), blocks);
        ASSERT_EQ(reports.all().size(), a.reports ? 1u : 0u);
        if (!a.reports) continue;
        EXPECT_EQ(reports.last_text(), "out of memory: rows");
        EXPECT_TRUE(reports.all()[0].site == 9 && reports.all()[0].kind == standalone::ReportKind::error_string);
    }
    standalone::FailAllocation(1);
    standalone::FailAllocation(0);
    void* block = TK_AllocatePtr(0, "rows", 1);
    EXPECT_NE(block, nullptr);
    TK_FreePtr(block);
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

TEST(Memory, HandlesKeepContentsWhenResized) {
    TK_Handle handle = TK_AllocateHandleClear(0, "chunk", 4);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(std::memcmp(*handle, "\0\0\0\0", 4), 0);
    std::memcpy(*handle, "abcd", 4);
    ASSERT_EQ(TK_ResizeHandle(kMiB, &handle), 0);
    EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
    EXPECT_EQ(TK_GetHandleSize(handle), kMiB);

    EXPECT_EQ(short_of_memory(1, [&] { return TK_ResizeHandle(2 * kMiB, &handle); }), 4);
    EXPECT_EQ(TK_GetHandleSize(handle), kMiB);

    const void* locked = TK_LockHandle(handle);
    TK_LockHandle(handle);
    TK_UnlockHandle(handle);
    EXPECT_EQ(TK_ResizeHandle(4 * kMiB, &handle), 4) << "locks nest";
    EXPECT_EQ(TK_ResizeHandle(2, &handle), 0);
    EXPECT_EQ(*handle, locked);
    TK_UnlockHandle(handle);
    EXPECT_EQ(TK_ResizeHandle(8, &handle), 0);
    EXPECT_EQ(std::memcmp(*handle, "ab", 2), 0);
    TK_FreeHandle(handle);
}

TEST(Recycled, WaitingBlockAnswersRequestOfItsSize) {
    standalone::PurgeRecycled();
    const auto hits = standalone::Memory().recycled_hits;
    void* first = Recycled(kMiB);
    void* other = Recycled(kMiB + 1);
    TK_FreeRecycledPtr(first, kMiB);
    TK_FreeRecycledPtr(other, kMiB + 1);
    EXPECT_EQ(standalone::Memory().recycled_bytes, static_cast<std::int64_t>(2 * kMiB + 1));
    EXPECT_EQ(Recycled(kMiB), first);
    EXPECT_EQ(standalone::Memory().recycled_hits, hits + 1);
    EXPECT_EQ(standalone::Memory().recycled_bytes, static_cast<std::int64_t>(kMiB + 1));
    void* fresh = Recycled(kMiB);
    EXPECT_NE(fresh, other) << "a block of another size is no answer";
    TK_FreeRecycledPtr(first, kMiB);
    TK_FreeRecycledPtr(fresh, kMiB);
    EXPECT_EQ(standalone::PurgeRecycled(), static_cast<std::int64_t>(3 * kMiB + 1));
    EXPECT_EQ(standalone::Memory().recycled_bytes, 0);
}

TEST(Recycled, TakesAnySizeBackAndBothPoolsTakeBothKinds) {
    standalone::PurgeRecycled();
    const auto blocks = blocks_in_use();
    for (const std::size_t said : {std::size_t{0}, std::size_t{1}, kMiB, 64 * kMiB, SIZE_MAX}) {
        void* block = Recycled(kMiB);
        std::memset(block, 0x5A, kMiB);
        TK_FreeRecycledPtr(block, said);
        EXPECT_EQ(standalone::Memory().recycled_bytes, static_cast<std::int64_t>(kMiB)) << said;
    }
    TK_RuntimeFree(Recycled(kMiB));
    EXPECT_EQ(standalone::Memory().recycled_bytes, static_cast<std::int64_t>(kMiB));
    TK_FreeRecycledPtr(TK_RuntimeMalloc(kMiB), kMiB);
    EXPECT_EQ(standalone::Memory().recycled_bytes, static_cast<std::int64_t>(kMiB)) << "heap blocks do not wait";
    EXPECT_EQ(blocks_in_use(), blocks);
    standalone::PurgeRecycled();
}

TEST(PurgeLoop, TriesAgainWhileThereIsSomethingToPurge) {
    // Columns: name, waiting, needed, code, made
    const Cases<Text, bool, int, int, int> cases = {{"at once", true, 1, 0, 1},
                                                    {"after a purge", true, 2, 0, 2},
                                                    {"nothing left", true, 3, 4, 2},
                                                    {"nothing to purge", false, 2, 4, 1}};
    for (const auto& [name, waiting, needed, code, made] : cases) {
        SCOPED_TRACE(name);
        standalone::PurgeRecycled();
        if (waiting) TK_FreeRecycledPtr(Recycled(kMiB), kMiB);
        std::pair attempts(0, needed);
        const auto attempt = [](void* context, bool* success) {
            auto& [tried, enough] = *static_cast<std::pair<int, int>*>(context);
            *success = ++tried >= enough;
        };
        EXPECT_EQ(TK_PurgeLoop(kMiB, attempt, &attempts, 1), code);
        EXPECT_EQ(attempts.first, made);
        EXPECT_EQ(standalone::Memory().recycled_bytes > 0, waiting && made == 1);
    }
    standalone::PurgeRecycled();
}

TEST(Memory, LocksOfHandlesAreCounted) {
    const auto locks = [before = standalone::Memory().handle_locks] {
        return standalone::Memory().handle_locks - before;
    };
    TK_Handle a = TK_AllocateHandleQuiet(4), b = TK_AllocateHandleQuiet(4);
    for (const TK_Handle handle : {a, b, a, TK_Handle{}}) TK_LockHandle(handle);
    EXPECT_EQ(locks(), 3);
    for (const TK_Handle handle : {b, b, TK_Handle{}}) TK_UnlockHandle(handle);  // one more than b has
    EXPECT_EQ(locks(), 2);
    for (const TK_Handle handle : {a, a}) TK_UnlockHandle(handle);
    EXPECT_EQ(locks(), 0);
    for (const TK_Handle handle : {a, b}) TK_FreeHandle(handle);
}

/// Each thread writes into blocks that another one may have had.
TEST(Recycled, ThreadsShareThePool) {
    const auto blocks = standalone::Memory().blocks_in_use;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            for (int n = 0; n < 2000; ++n) {
                const std::size_t bytes = 64 + static_cast<std::size_t>(n % 3);
                auto* block = static_cast<char*>(Recycled(bytes));
                std::memset(block, i, bytes);
                ASSERT_EQ(std::count(block, block + bytes, i), static_cast<std::ptrdiff_t>(bytes));
                TK_FreeRecycledPtr(block, bytes);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(standalone::Memory().blocks_in_use, blocks);
    standalone::PurgeRecycled();
}

}  // namespace
