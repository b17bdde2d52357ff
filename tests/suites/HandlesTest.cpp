// SPDX-License-Identifier: Apache-2.0
#include "QX/suites/QX_Handles.h"
#include "tests/support/Test.h"

namespace {

using namespace qx::test;

/// The routines of the block, as an effect has them.
struct Handles {
    Born born;
    QX_CallbackBlock block;
    Handles() { QX_GetCallbackBlock(1, 1, &block); }
    template <class Fn> Fn* at(int field) const { return reinterpret_cast<Fn*>(block.fields[field]); }

    TK_Handle make(std::uint64_t bytes) const { return at<decltype(qx::new_handle)>(kQX_CB_host_new_handle)(bytes); }
    void* lock(TK_Handle handle) const { return at<decltype(qx::lock_handle)>(kQX_CB_host_lock_handle)(handle); }
    void unlock(TK_Handle handle) const { at<decltype(qx::unlock_handle)>(kQX_CB_host_unlock_handle)(handle); }
    void dispose(TK_Handle handle) const { at<decltype(qx::dispose_handle)>(kQX_CB_host_dispose_handle)(handle); }
    std::uint64_t size(TK_Handle handle) const {
        return at<decltype(qx::handle_size)>(kQX_CB_host_get_handle_size)(handle);
    }
    int resize(std::uint64_t bytes, TK_Handle* handle) const {
        return at<decltype(qx::resize_handle)>(kQX_CB_host_resize_handle)(bytes, handle);
    }
};

TEST(Handles, NullIsAnsweredAndSaysNothing) {
    const Handles handles;
    const Reports reports;
    EXPECT_EQ(handles.lock(nullptr), nullptr);
    EXPECT_EQ(handles.size(nullptr), 0u);
    handles.unlock(nullptr);
    handles.dispose(nullptr);
    TK_Handle none = nullptr;
    EXPECT_EQ(handles.resize(5, nullptr), 516);
    EXPECT_EQ(handles.resize(5, &none), 516);
    EXPECT_TRUE(reports.all().empty() && none == nullptr);
}

TEST(Handles, AResizeKeepsContentsAlsoOfALockedBlock) {
    const Handles handles;
    const auto before = standalone::Memory();
    TK_Handle handle = handles.make(4);
    ASSERT_NE(handle, nullptr);
    std::memcpy(handles.lock(handle), "abcd", 4);
    EXPECT_EQ(standalone::Memory().handle_locks, before.handle_locks) << "a lock counts nothing";
    for (const std::uint64_t bytes : {std::uint64_t{1} << 20, std::uint64_t{4}}) {
        EXPECT_EQ(handles.resize(bytes, &handle), 0);
        EXPECT_EQ(handles.size(handle), bytes);
        EXPECT_EQ(handles.lock(handle), *handle);
        EXPECT_EQ(std::memcmp(*handle, "abcd", 4), 0);
    }
    handles.unlock(handle);
    handles.dispose(handle);
    EXPECT_EQ(blocks_in_use(), before.blocks_in_use);
}

TEST(Handles, ShortMemoryIsQuietAndChangesNothing) {
    const Handles handles;
    const Reports reports;
    const auto before = blocks_in_use();
    EXPECT_EQ(short_of_memory(1, [&] { return handles.make(64); }), nullptr);
    EXPECT_EQ(handles.make(UINT64_MAX), nullptr) << "sizes have 64 bits";
    EXPECT_EQ(handles.make((std::uint64_t{1} << 63) + 8), nullptr);
    TK_Handle handle = handles.make(8);
    void* const block = *handle;
    EXPECT_EQ(short_of_memory(1, [&] { return handles.resize(1 << 20, &handle); }), 4);
    EXPECT_EQ(handles.resize(UINT64_MAX, &handle), 4);
    EXPECT_TRUE(*handle == block && handles.size(handle) == 8);
    EXPECT_TRUE(reports.all().empty());
    TKp_ReportErrString(1, 8, "the quiet section is closed");
    EXPECT_EQ(reports.all().size(), 1u);

    standalone::SetQuietEndCode(77);
    EXPECT_EQ(handles.resize(16, &handle), 77);
    EXPECT_EQ(handles.size(handle), 16u);
    EXPECT_EQ(short_of_memory(1, [&] { return handles.resize(1 << 20, &handle); }), 4) << "the first code counts";
    standalone::SetQuietEndCode(0);
    handles.dispose(handle);
    EXPECT_EQ(blocks_in_use(), before);
}

/// Calls in any order, some of them with failing memory: each handle holds what was put into it, and nothing is left.
TEST(Handles, TenThousandRandomCalls) {
    const Handles handles;
    const Reports reports;
    for (const std::uint64_t seed : seeds(2)) {
        SCOPED_TRACE(testing::Message() << "QX_SEEDS=" << seed);
        const auto before = standalone::Memory();
        std::mt19937_64 random(seed);
        std::array<TK_Handle, 12> live{};
        std::array<std::vector<std::uint8_t>, 12> held;
        for (int call = 0; call < 10000; ++call) {
            const std::size_t i = random() % live.size();
            const std::size_t bytes = random() % 3000;
            const bool fails = random() % 8 == 0;
            standalone::FailAllocation(fails ? 1 : 0);
            if (live[i] == nullptr) {
                live[i] = handles.make(bytes);
                ASSERT_EQ(live[i] == nullptr, fails);
            } else if (random() % 3 == 0) {
                handles.dispose(std::exchange(live[i], nullptr));
                held[i].clear();
            } else {
                ASSERT_EQ(handles.resize(bytes, &live[i]), fails ? 4 : 0);
                if (!fails) held[i].resize(std::min(held[i].size(), bytes));
            }
            standalone::FailAllocation(0);
            ASSERT_TRUE(held[i].empty() || std::memcmp(handles.lock(live[i]), held[i].data(), held[i].size()) == 0);
            if (live[i] == nullptr) continue;
            held[i].resize(handles.size(live[i]));
            for (auto& byte : held[i]) byte = static_cast<std::uint8_t>(random());
            std::copy(held[i].begin(), held[i].end(), static_cast<std::uint8_t*>(handles.lock(live[i])));
            handles.unlock(live[i]);
        }
        for (const TK_Handle handle : live) handles.dispose(handle);
        EXPECT_EQ(blocks_in_use(), before.blocks_in_use);
    }
    EXPECT_TRUE(reports.all().empty());
}

}  // namespace
