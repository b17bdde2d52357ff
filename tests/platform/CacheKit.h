// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>

#include "platform/KS_Cache.h"
#include "tests/support/Test.h"

namespace qx::test {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint32_t kTestEngine = 7;

/// An item of bytes. Flattened it is their number, in four bytes, and they themselves.
class Item : public KS_Stuff {
public:
    Item(unsigned identity, std::optional<Bytes> bytes, std::uint32_t engine = kTestEngine)
        : bytes_(std::move(bytes)), engine_(engine) {
        SetGuid({identity * 0x9e3779b9, 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, static_cast<std::uint8_t>(identity)}});
        ++living;
    }
    ~Item() override { --living; }
    std::uint32_t GetEngineNumber() const override { return engine_; }
    std::size_t GetSizeInBytes() const override { return bytes_ ? bytes_->size() : 0; }
    bool PurgeFromMemory() override {
        const bool had = HasData();
        bytes_.reset();
        return had;
    }
    bool HasData() const override { return bytes_.has_value(); }
    int Flatten(KS_Stream& stream) const override {
        const auto count = static_cast<std::uint32_t>(bytes_->size() + lie);
        const int code = stream.Write(&count, sizeof count);
        return code != 0 ? code : stream.Write(bytes_->data(), bytes_->size());
    }
    int Unflatten(KS_Stream& stream) override {
        std::uint32_t count = 0;
        if (const int code = stream.Read(&count, sizeof count); code != 0) return code;
        if (count > stream.BytesLeft()) return 3;
        bytes_.emplace(count);
        return stream.Read(bytes_->data(), count);
    }
    const Bytes& bytes() const { return *bytes_; }

    std::uint32_t lie = 0;  ///< by which the number that is flattened is too large
    static inline std::atomic<int> living{0};

private:
    std::optional<Bytes> bytes_;
    const std::uint32_t engine_;
};
using ItemOwner = boost::intrusive_ptr<Item>;

/// What an item of this identity holds.
inline Bytes bytes_of(unsigned identity, std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(identity * 31 + i * i);
    return bytes;
}
inline int add(const ItemOwner& item) { return item->AddToBagAndSortDir(KS_GlobalBag(), 0.5); }
inline int add(unsigned identity, std::size_t count, std::uint32_t engine = kTestEngine) {
    return add(ItemOwner(new Item(identity, bytes_of(identity, count), engine)));
}
/// A look for an item, which it keeps.
struct Found {
    explicit Found(unsigned identity, std::uint32_t engine = kTestEngine) {
        const ItemOwner probe(new Item(identity, {}, engine));
        checkout.FindAndCheckout(probe.get(), 1);
    }
    explicit operator bool() const { return checkout.DidCheckout(); }
    const Item& item() const { return static_cast<const Item&>(*checkout.GetStuff()); }
    KS_ScCheckout checkout;
};
/// Whether an item is found and is what it was.
inline bool is_there(unsigned identity, std::size_t count, std::uint32_t engine = kTestEngine) {
    const Found found(identity, engine);
    EXPECT_TRUE(!found || found.item().bytes() == bytes_of(identity, count)) << identity;
    return static_cast<bool>(found);
}

/// An empty cache in a folder of the test's own; the host's settings come back after.
class CacheTest : public testing::Test {
protected:
    CacheTest() {
        std::string path = (fs::temp_directory_path() / "qx-cache-XXXXXX").string();
        if (::mkdtemp(path.data()) != nullptr) folder_ = path;
        start();
    }
    ~CacheTest() override {
        standalone::PurgeCacheMemory();
        standalone::SetCacheFolder("");
        standalone::SetCacheDiskLimit(std::uint64_t{10} << 30);
        standalone::SetCacheMemoryLimit(std::uint64_t{1} << 30);
        EXPECT_EQ(Item::living, 0);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    /// As another process of the same folder begins: with nothing in memory.
    void start() { start(folder_ / "cache"); }
    void start(const fs::path& folder) {
        standalone::PurgeCacheMemory();
        standalone::SetCacheFolder(folder.string());
        standalone::ForgetCacheCounts();
    }
    fs::path top() const { return folder_ / "cache"; }
    /// All files in the folder, in order.
    std::vector<fs::path> files() const {
        std::vector<fs::path> all;
        if (!fs::exists(top())) return all;
        for (const auto& one : fs::recursive_directory_iterator(top())) {
            if (!one.is_directory()) all.push_back(one.path());
        }
        std::ranges::sort(all);
        return all;
    }
    fs::path folder_;
};

inline Bytes contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}
inline void put_contents(const fs::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// Another process that does some work, and ends with status 0 if that gives true.
template <class Work> pid_t process(const Work& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work() && !testing::Test::HasFailure() ? 0 : 1);
    return child;
}
inline int status_of(pid_t child) {
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

}  // namespace qx::test
