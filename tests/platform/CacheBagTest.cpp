// SPDX-License-Identifier: Apache-2.0
// The cache in memory.
#include "platform/TK_Memory.h"
#include "tests/platform/CacheKit.h"

namespace {

using namespace qx::test;

class CacheBag : public CacheTest {
protected:
    CacheBag() { start(""); }
};

TEST_F(CacheBag, FindsByIdentityEngineAndBands) {
    ASSERT_EQ(add(1, 10), 0);
    EXPECT_TRUE(is_there(1, 10));
    EXPECT_FALSE(is_there(2, 10));
    EXPECT_FALSE(is_there(1, 10, kTestEngine + 1));
    standalone::SetBandCount(7);
    EXPECT_FALSE(is_there(1, 10));
    ASSERT_EQ(add(1, 10), 0);
    standalone::SetBandCount(32);
    const auto counts = standalone::CacheStatistics();
    EXPECT_TRUE(counts.items == 2 && counts.bytes == 20 && counts.adds == 2);
    EXPECT_TRUE(counts.hits_in_memory == 1 && counts.hits_on_disk == 0 && counts.misses == 3);
    EXPECT_TRUE(files().empty());
}

TEST_F(CacheBag, TheFirstOfAnIdentityStays) {
    const ItemOwner first(new Item(1, bytes_of(1, 10))), second(new Item(1, bytes_of(1, 10)));
    EXPECT_TRUE(add(first) == 0 && add(second) == 0);
    EXPECT_EQ(&Found(1).item(), first.get());
    KS_ScCheckout checkout;
    EXPECT_FALSE(checkout.EnsureInMemory());
    checkout.Checkout(second.get(), 1);
    EXPECT_TRUE(checkout.DidCheckout() && checkout.EnsureInMemory() && checkout.GetStuff() == second.get());
    EXPECT_EQ(standalone::CacheStatistics().items, 1u);
}

TEST_F(CacheBag, WhatWasNotUsedForLongestGoesAndWhatIsInUseStays) {
    standalone::SetCacheMemoryLimit(35);
    for (const unsigned i : {1u, 2u, 3u}) add(i, 10);
    EXPECT_TRUE(is_there(1, 10));
    add(4, 10);  // 2 goes
    EXPECT_TRUE(is_there(1, 10) && !is_there(2, 10) && is_there(3, 10) && is_there(4, 10));
    {
        const Found oldest(1);
        for (const unsigned i : {3u, 4u}) EXPECT_TRUE(is_there(i, 10));
        add(5, 10), add(6, 10);  // 3 and 4 go
        EXPECT_TRUE(!is_there(3, 10) && !is_there(4, 10));
        standalone::SetCacheMemoryLimit(5);
        EXPECT_EQ(standalone::CacheStatistics().items, 1u);
        EXPECT_TRUE(is_there(1, 10));
        EXPECT_EQ(standalone::CacheStatistics().bytes, 10u);  // it counts
    }
    EXPECT_EQ(standalone::CacheStatistics().items, 0u);
    EXPECT_EQ(standalone::CacheStatistics().evictions, 6u);
    EXPECT_EQ(Item::living, 0);
    add(7, 6);  // more than the limit by itself
    EXPECT_EQ(standalone::CacheStatistics().items, 0u);
}

TEST_F(CacheBag, IsEmptiedWhereMemoryIsShort) {
    add(1, 10), add(2, 10);
    const Found used(2);
    int attempts = 0;
    const auto fails = [](void* count, bool*) { ++*static_cast<int*>(count); };
    EXPECT_EQ(TK_PurgeLoop(1, fails, &attempts, 0), 4);
    EXPECT_GE(attempts, 2);
    EXPECT_TRUE(!is_there(1, 10) && is_there(2, 10));
}

TEST_F(CacheBag, WithoutMemoryItIsAsItWas) {
    const ItemOwner item(new Item(1, bytes_of(1, 10)));
    int code = 4;
    for (int n = 1; code != 0 && n < 9; ++n) {
        NewCounter::fail(n);
        code = add(item);
        NewCounter::fail(0);
        EXPECT_EQ(standalone::CacheStatistics().items, code == 0 ? 1u : 0u) << n;
        EXPECT_TRUE(n > 1 || code == 4);
    }
    EXPECT_EQ(code, 0);
}

/// With the disk behind it and without. What they share beside its locks shows under ThreadSanitizer.
class SharedCache : public CacheTest, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Cache, SharedCache, testing::Bool());

TEST_P(SharedCache, SixteenThreadsSeeNothingWrong) {
    start(GetParam() ? top() : "");
    standalone::SetCacheMemoryLimit(500);
    standalone::SetCacheDiskLimit(1500);
    const int rounds = GetParam() ? 60 : 600;
    in_threads(16, [&](int thread) {
        std::minstd_rand random(static_cast<unsigned>(thread) + 1);
        for (int round = 0; round < rounds; ++round) {
            const auto identity = static_cast<unsigned>(random() % 20);
            const Found found(identity);
            if (found) {
                EXPECT_EQ(found.item().bytes(), bytes_of(identity, 10 * identity));
            } else {
                const ItemOwner item(new Item(identity, bytes_of(identity, 10 * identity)));
                add(item);
                KS_ScCheckout checkout;
                checkout.Checkout(item.get(), 1);
            }
            if (round % 20 == 19) standalone::PurgeCacheMemory();
        }
    });
    const auto counts = standalone::CacheStatistics();
    EXPECT_LE(counts.bytes, 500u);
    EXPECT_EQ(counts.hits_in_memory + counts.hits_on_disk + counts.misses, 16u * static_cast<unsigned>(rounds));
    EXPECT_EQ(counts.hits_on_disk > 0, GetParam());
    EXPECT_TRUE(counts.damaged == 0 && counts.failures == 0) << standalone::CacheNote();
    EXPECT_EQ(static_cast<std::uint64_t>(Item::living), counts.items);
}

}  // namespace
