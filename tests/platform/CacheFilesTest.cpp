// SPDX-License-Identifier: Apache-2.0
// The cache's files: what they are, what is believed of them, and which go.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "tests/platform/CacheKit.h"

namespace {

using namespace qx::test;
using namespace std::chrono_literals;

class CacheFiles : public CacheTest {
protected:
    /// The one file of an empty cache with this item.
    fs::path file_of(unsigned identity, std::size_t count) {
        EXPECT_EQ(add(identity, count), 0);
        EXPECT_EQ(files().size(), 1u);
        return files().at(0);
    }
    /// A file of these bytes is missed, counted and removed.
    void expect_unbelieved(const fs::path& path, const Bytes& bytes, unsigned identity) {
        put_contents(path, bytes);
        standalone::PurgeCacheMemory();
        standalone::ForgetCacheCounts();
        EXPECT_FALSE(Found(identity));
        EXPECT_FALSE(fs::exists(path));
        EXPECT_EQ(standalone::CacheStatistics().damaged, 1u);
    }
};

/// Numbers with their low byte first.
void put(Bytes& bytes, std::uint64_t number, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> 8 * i));
}

TEST_F(CacheFiles, AreWhatTheFormatSays) {
    const fs::path path = file_of(3, 5);
    const std::string identity =
        "daa66d2b12345678"
        "0102030405060703";  // 3 * 0x9e3779b9 comes first
    EXPECT_EQ(path, top() / "vectors" / "1.7.32" / identity.substr(0, 2) / identity.substr(2));
    Bytes body{5, 0, 0, 0}, head{'Q', 'X', 'c', 'a', 'c', 'h', 'e', '\n'};
    for (const std::uint8_t byte : bytes_of(3, 5)) body.push_back(byte);
    put(head, 1, 4), put(head, 7, 4), put(head, 32, 4);
    for (std::size_t i = 0; i < 32; i += 2) put(head, std::stoul(identity.substr(i, 2), nullptr, 16), 1);
    put(head, body.size(), 8), put(head, XXH3_64bits(body.data(), body.size()), 8);
    head.insert(head.end(), body.begin(), body.end());
    EXPECT_EQ(contents(path), head);
    struct stat facts;
    for (fs::path part = path; part != top().parent_path(); part = part.parent_path()) {
        ASSERT_EQ(::lstat(part.c_str(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 07777, part == path ? 0600u : 0700u) << part;
    }
}

TEST_F(CacheFiles, AreFoundByTheNextRun) {
    for (const std::size_t size : {0, 1, 1000, 5'000'000}) add(static_cast<unsigned>(size), size);
    start();
    for (const std::size_t size : {0, 1, 1000, 5'000'000}) EXPECT_TRUE(is_there(static_cast<unsigned>(size), size));
    EXPECT_TRUE(is_there(1000, 1000));
    EXPECT_FALSE(is_there(7, 1));
    standalone::SetBandCount(31);
    EXPECT_FALSE(is_there(1000, 1000));
    standalone::SetBandCount(32);
    EXPECT_FALSE(is_there(1000, 1000, 8));
    const auto counts = standalone::CacheStatistics();
    EXPECT_TRUE(counts.hits_on_disk == 4 && counts.hits_in_memory == 1 && counts.misses == 3 && counts.adds == 4);
    EXPECT_TRUE(counts.damaged == 0 && counts.failures == 0);
    const auto review = standalone::VerifyCache();
    EXPECT_TRUE(review.entries == 4 && review.removed == 0 && review.fault.empty());
    EXPECT_EQ(review.bytes, 5'001'001u + 4 * 56);
}

TEST_F(CacheFiles, NoBitCanTurnAndNoLengthBeCut) {
    const fs::path path = file_of(3, 12);
    const Bytes whole = contents(path);
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
        SCOPED_TRACE(testing::Message() << "bit " << bit);
        Bytes bytes = whole;
        bytes[bit / 8] ^= static_cast<std::uint8_t>(1 << bit % 8);
        expect_unbelieved(path, bytes, 3);
    }
    for (std::size_t length = 0; length <= whole.size() + 1; ++length) {
        SCOPED_TRACE(testing::Message() << length << " bytes");
        Bytes bytes = whole;
        bytes.resize(length);
        if (length != whole.size()) expect_unbelieved(path, bytes, 3);
    }
    put_contents(path, whole);
    EXPECT_TRUE(is_there(3, 12));
}

TEST_F(CacheFiles, OtherNamesAndWrongSizesUnderARightChecksumAreNotBelieved) {
    const fs::path path = file_of(3, 12);
    const Bytes whole = contents(path);
    const ItemOwner liar(new Item(4, bytes_of(4, 12)));
    liar->lie = 1;
    add(liar);
    const fs::path lie = files().at(files().at(0) == path ? 1 : 0);
    expect_unbelieved(lie, contents(lie), 4);
    liar->lie = ~0u;  // one less than there is
    add(liar);
    expect_unbelieved(lie, contents(lie), 4);
    expect_unbelieved(lie, whole, 4);
    const fs::path other_engine = top() / "vectors" / "1.8.32" / path.parent_path().filename() / path.filename();
    fs::create_directories(other_engine.parent_path());
    put_contents(other_engine, whole);
    EXPECT_FALSE(Found(3, 8));
    EXPECT_FALSE(fs::exists(other_engine));
    EXPECT_TRUE(is_there(3, 12));
}

TEST_F(CacheFiles, VerifyRemovesWhatIsDamagedAndClearAll) {
    for (unsigned i = 0; i < 5; ++i) add(i, 100);
    Bytes bytes = contents(files().at(2));
    bytes.back() ^= 1;
    put_contents(files().at(2), bytes);
    fs::create_directories(top() / "vectors" / "2.7.32" / "ab");
    put_contents(top() / "vectors" / "2.7.32" / "ab" / std::string(30, 'c'), {1, 2, 3});  // a format yet to come
    put_contents(top() / "vectors" / "mine", {1});
    auto review = standalone::LookAtCache();
    EXPECT_TRUE(review.entries == 6 && review.bytes == 5 * 156 + 3 && review.removed == 0);
    review = standalone::VerifyCache();
    EXPECT_TRUE(review.entries == 5 && review.bytes == 4 * 156 + 3);
    EXPECT_TRUE(review.removed == 1 && review.removed_bytes == 156);
    review = standalone::ClearCache();
    EXPECT_TRUE(review.entries == 0 && review.bytes == 0 && review.removed == 5 && review.removed_bytes == 4 * 156 + 3);
    EXPECT_EQ(files(), std::vector{top() / "vectors" / "mine"});  // what is not the cache's stays
    EXPECT_FALSE(fs::exists(top() / "vectors" / "1.7.32"));
    start();
    EXPECT_EQ(add(1, 100), 0);
    start();
    EXPECT_TRUE(is_there(1, 100));
}

/// Sets the time of an item's file, in hours before now.
void make_older(const fs::path& path, int hours) {
    fs::last_write_time(path, fs::file_time_type::clock::now() - hours * 1h);
}

TEST_F(CacheFiles, BeyondTheLimitTheOldestGoAndOtherNumbersFirst) {
    for (const unsigned i : {1u, 2u, 3u}) {
        const auto before = files();
        add(i, 944);  // 1000 bytes with the head
        for (const auto& path : files()) {
            if (std::ranges::find(before, path) == before.end()) make_older(path, 9 - static_cast<int>(i));
        }
    }
    standalone::SetCacheDiskLimit(3000);
    start();
    EXPECT_TRUE(is_there(1, 944));  // and is the youngest now
    add(4, 944);
    start();
    EXPECT_TRUE(is_there(1, 944) && !is_there(2, 944) && !is_there(3, 944) && is_there(4, 944));
    EXPECT_EQ(standalone::LookAtCache().bytes, 2000u);
    for (const auto& path : files()) make_older(path, 5);
    add(5, 244, kTestEngine + 1);  // 300 bytes, of which there is room
    EXPECT_EQ(standalone::LookAtCache().bytes, 2300u);
    start();
    add(6, 744);  // 800 bytes; without the other engine's file 2800 are left, and another one has to go
    EXPECT_EQ(standalone::LookAtCache().bytes, 1800u);
    start();
    EXPECT_FALSE(is_there(5, 244, kTestEngine + 1));
    EXPECT_TRUE(is_there(6, 744));
}

TEST_F(CacheFiles, NamesOfUnfinishedFilesTellWhichAreAbandoned) {
    const fs::path folder = file_of(3, 12).parent_path();
    const pid_t ended = process([] { return true; });
    status_of(ended);
    // The machine's name is what the host itself calls it.
    fs::path own;
    {
        struct Peeking : Item {
            Peeking(const fs::path& in, fs::path* name) : Item(3, bytes_of(3, 12)), in_(in), name_(name) {}
            int Flatten(KS_Stream& stream) const override {
                for (const auto& one : fs::directory_iterator(in_)) {
                    if (one.path().filename().string().starts_with(".tmp-")) *name_ = one.path();
                }
                return Item::Flatten(stream);
            }
            const fs::path in_;
            fs::path* const name_;
        };
        standalone::PurgeCacheMemory();
        add(ItemOwner(new Peeking(folder, &own)));
    }
    const std::string name = own.filename().string(), pid = '-' + std::to_string(::getpid()) + '-';
    ASSERT_NE(name.find(pid), std::string::npos) << name;
    const auto named = [&](const std::string& machine_end, pid_t process) {
        return folder / (name.substr(0, name.find(pid)) + machine_end + "-" + std::to_string(process) + "-1");
    };
    const fs::path dead = named("", ended), alive = named("", ::getppid()), elsewhere = named("x", ended),
                   old = named("y", ended), foreign = folder / ".tmp";
    for (const auto& path : {dead, alive, elsewhere, old, foreign}) put_contents(path, {1});
    make_older(elsewhere, 23), make_older(old, 25), make_older(foreign, 25);
    start();
    EXPECT_TRUE(is_there(3, 12));  // the first use of the folder
    EXPECT_FALSE(fs::exists(dead) || fs::exists(old));
    EXPECT_TRUE(fs::exists(alive) && fs::exists(elsewhere) && fs::exists(foreign));
}

TEST_F(CacheFiles, LinksAreNotFollowed) {
    const fs::path path = file_of(3, 12), outside = folder_ / "outside";
    const Bytes whole = contents(path);
    fs::remove(path);
    put_contents(outside, whole);
    fs::create_symlink(outside, path);
    start();
    EXPECT_FALSE(Found(3));
    EXPECT_TRUE(!fs::exists(fs::symlink_status(path)) && contents(outside) == whole);
    fs::remove(path.parent_path());
    fs::remove(outside);
    fs::create_directory(outside);
    put_contents(outside / path.filename(), whole);
    fs::create_symlink(outside, path.parent_path());
    EXPECT_FALSE(Found(3));
    EXPECT_EQ(standalone::ClearCache().removed, 0u);
    EXPECT_EQ(add(3, 12), 0);
    EXPECT_EQ(contents(outside / path.filename()), whole);
    EXPECT_NE(standalone::CacheNote(), "");
    for (const bool pipe : {false, true}) {  // nor is waited for a pipe, nor a folder read
        fs::remove(path.parent_path());
        fs::create_directory(path.parent_path());
        EXPECT_TRUE(pipe ? ::mkfifo(path.c_str(), 0600) == 0 : fs::create_directory(path));
        start();
        EXPECT_FALSE(Found(3));
        fs::remove(path);
    }
}

TEST_F(CacheFiles, AFolderInTheWayOfAnEntryHarmsNoOther) {
    const fs::path path = file_of(3, 12);
    fs::remove(path);
    fs::create_directories(path / "something");
    start();
    EXPECT_FALSE(Found(3));
    for (const unsigned i : {3u, 4u}) EXPECT_TRUE(add(i, 12) == 0 && is_there(i, 12));
    EXPECT_NE(standalone::CacheNote().find("cannot be used whole: Is a directory"), std::string::npos);
    EXPECT_EQ(files().size(), 1u);  // that of the other one
    EXPECT_NE(standalone::VerifyCache().fault.find("Is a directory"), std::string::npos);
    auto cleared = standalone::ClearCache();
    EXPECT_NE(cleared.fault.find("Is a directory"), std::string::npos);
    EXPECT_EQ(cleared.removed, 1u);
    EXPECT_TRUE(fs::exists(path / "something"));
    fs::remove(path / "something");
    EXPECT_EQ(standalone::ClearCache().fault, "");
    EXPECT_TRUE(fs::is_empty(top()));
    fs::create_directories(path);
    start();
    EXPECT_FALSE(Found(3));
    EXPECT_TRUE(add(3, 12) == 0 && fs::is_regular_file(path) && standalone::CacheNote().empty());
}

/// A fault of the disk is told once, and everything goes on in memory.
TEST_F(CacheFiles, WhatCannotBeWrittenIsNotedAndDone) {
    std::vector<std::string> lines;
    const auto log = [&](int, const std::string& line) { lines.push_back(line); };
    const auto expect_noted = [&](const std::string& words) {
        lines.clear();
        standalone::SetLogSink(log);
        for (const unsigned i : {1u, 2u}) EXPECT_TRUE(add(i, 2000) == 0 && is_there(i, 2000));
        standalone::SetLogSink({});
        EXPECT_NE(standalone::CacheNote().find(words), std::string::npos) << standalone::CacheNote();
        EXPECT_FALSE(lines.empty());
    };
    put_contents(folder_ / "file", {1});
    start(folder_ / "file");
    expect_noted("Not a directory");
    start(folder_ / "file" / "below");
    expect_noted("Not a directory");
    start("/proc/qx/cache");
    expect_noted("No such file or directory");
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    start();
    ::setrlimit(RLIMIT_FSIZE, &small);
    expect_noted("cannot be written: File too large");
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(lines.size(), 1u);
    EXPECT_EQ(standalone::CacheStatistics().failures, 1u);
    EXPECT_TRUE(files().empty());
    start();
    EXPECT_EQ(standalone::CacheNote(), "");
}

TEST_F(CacheFiles, AReadOnlyFolderIsRead) {
    add(1, 100);
    const auto read_only = [&](bool is) {
        std::vector<fs::path> all{folder_, top()};
        for (const auto& one : fs::recursive_directory_iterator(top())) all.push_back(one.path());
        for (const auto& path : all) fs::permissions(path, fs::perms(is ? 0555 : 0700));
    };
    read_only(true);
    const pid_t child = process([&] {
        if (::geteuid() == 0 && ::setuid(65534) != 0) return false;
        start();
        const bool read = is_there(1, 100) && standalone::CacheNote().empty();
        return read && add(2, 100) == 0 && !standalone::CacheNote().empty() && is_there(2, 100);
    });
    EXPECT_EQ(status_of(child), 0);
    read_only(false);
}

/// Each allocation fails once: the item is found or missed, its file stays, nothing is lost.
TEST_F(CacheFiles, WithoutMemoryItemsAreMissedAndStay) {
    add(1, 100);
    const auto in_use = blocks_in_use();
    for (const bool by_host : {false, true}) {
        bool was_hit = false;
        for (int n = 1; !was_hit && n < 500; ++n) {
            start();
            const ItemOwner probe(new Item(1, {}));
            KS_ScCheckout checkout;
            by_host ? standalone::FailAllocation(n) : NewCounter::fail(n);
            checkout.FindAndCheckout(probe.get(), 1);
            standalone::FailAllocation(0);
            NewCounter::fail(0);
            EXPECT_EQ(files().size(), 1u) << n;
            was_hit = checkout.DidCheckout() && standalone::CacheStatistics().failures == 0;
            EXPECT_TRUE(!was_hit || n > 1);
        }
        EXPECT_TRUE(was_hit);
    }
    for (int n = 1; n < 60; ++n) {
        start();
        const ItemOwner item(new Item(2, bytes_of(2, 100)));
        NewCounter::fail(n);
        const int code = add(item);
        NewCounter::fail(0);
        EXPECT_TRUE(code == 0 || code == 4);
        EXPECT_LE(files().size(), 2u);
    }
    EXPECT_EQ(standalone::VerifyCache().removed, 0u);
    EXPECT_EQ(blocks_in_use(), in_use);
}

}  // namespace
