// SPDX-License-Identifier: Apache-2.0
// Several processes at one folder.
#include <chrono>

#include "tests/platform/CacheKit.h"

namespace {

using namespace qx::test;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class CacheProcesses : public CacheTest {};

constexpr std::size_t kSize = 300'000;

bool is_unfinished(const fs::path& path) { return path.filename().string().starts_with(".tmp"); }

/// Stops a writer while a file of its is unfinished. @return whether one was, within 20 seconds
bool stop_at_work(pid_t writer, const std::function<bool()>& at_work) {
    for (const auto end = Clock::now() + 20s; Clock::now() < end;) {
        if (!at_work()) continue;
        ::kill(writer, SIGSTOP);
        int status = 0;
        if (::waitpid(writer, &status, WUNTRACED) != writer || !WIFSTOPPED(status)) return false;
        if (at_work()) return true;
        ::kill(writer, SIGCONT);  // it had just finished
    }
    return false;
}

/// Killed at any moment, also within a write, a writer loses nothing that it had said is there, and leaves nothing
/// behind.
TEST_F(CacheProcesses, KilledWritersLoseNothing) {
    const auto at_work = [&] { return std::ranges::any_of(files(), is_unfinished); };
    for (const auto seed : seeds(30)) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::minstd_rand random(static_cast<unsigned>(seed));
        standalone::ClearCache();
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t writer = process([&] {
            start();
            for (unsigned char i = 0; add(i, kSize) == 0;) {
                if (::write(ends[1], &i, 1) != 1) break;
                i = static_cast<unsigned char>((i + 1) % 8);
                standalone::PurgeCacheMemory();
            }
            return false;
        });
        ::close(ends[1]);
        unsigned char first = 0;
        ASSERT_EQ(::read(ends[0], &first, 1), 1);
        std::this_thread::sleep_for(random() % 4000 * 1us);
        const bool meets_work = seed % 5 == 0;
        EXPECT_TRUE(!meets_work || stop_at_work(writer, at_work));
        ::kill(writer, SIGKILL);
        EXPECT_TRUE(WIFSIGNALED(status_of(writer)));
        EXPECT_TRUE(!meets_work || at_work());
        std::set<unsigned> said{first};
        for (unsigned char i; ::read(ends[0], &i, 1) == 1;) said.insert(i);
        ::close(ends[0]);
        start();
        for (const unsigned i : said) EXPECT_TRUE(is_there(i, kSize)) << i;
        EXPECT_FALSE(Found(99));
        EXPECT_FALSE(at_work());
        const auto review = standalone::VerifyCache();
        EXPECT_TRUE(review.removed == 0 && review.entries >= said.size() && review.fault.empty());
        EXPECT_EQ(standalone::CacheStatistics().failures, 0u) << standalone::CacheNote();
    }
}

/// Two processes clear while two others read and write, and one keeps to a small limit: nobody sees anything wrong.
TEST_F(CacheProcesses, ClearWhileOthersReadAndWrite) {
    const auto end = Clock::now() + 700ms;
    const auto clear = [&] {
        for (start(); Clock::now() < end; std::this_thread::sleep_for(1ms)) {
            if (const auto review = standalone::ClearCache(); !review.fault.empty()) {
                return std::fprintf(stderr, "%s\n", review.fault.c_str()) < 0;
            }
        }
        return true;
    };
    const auto use = [&](std::uint64_t limit) {
        standalone::SetCacheDiskLimit(limit);
        std::minstd_rand random(static_cast<unsigned>(::getpid()));
        for (start(); Clock::now() < end; standalone::PurgeCacheMemory()) {
            const auto i = static_cast<unsigned>(random() % 6);
            if (!is_there(i, 1000 * i)) add(i, 1000 * i);
        }
        const auto counts = standalone::CacheStatistics();
        std::fputs(standalone::CacheNote().c_str(), stderr);
        return counts.damaged == 0 && counts.failures == 0 && counts.hits_on_disk > 0;
    };
    std::vector<pid_t> children;
    for (int i = 0; i < 2; ++i) children.push_back(process(clear));
    for (const std::uint64_t limit : {1'000'000, 1'000'000, 6000})
        children.push_back(process([&] { return use(limit); }));
    for (const pid_t child : children) EXPECT_EQ(status_of(child), 0);
    start();
    EXPECT_EQ(standalone::VerifyCache().removed, 0u);
    EXPECT_FALSE(Found(99));
    EXPECT_TRUE(std::ranges::none_of(files(), is_unfinished));
}

TEST_F(CacheProcesses, WritersOfOneItemWriteEqualBytes) {
    start(folder_ / "other");
    add(1, 1000);
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) {
        children.push_back(process([&] {
            start();
            return add(1, 1000) == 0 && standalone::CacheNote().empty();
        }));
    }
    for (const pid_t child : children) EXPECT_EQ(status_of(child), 0);
    ASSERT_EQ(files().size(), 1u);
    EXPECT_EQ(contents(files()[0]), contents(folder_ / "other" / fs::relative(files()[0], top())));
}

}  // namespace
