// SPDX-License-Identifier: Apache-2.0
// The cache: the bag in memory before the folder on disk, whose faults are noted and go no further.
#include "platform/standalone/Cache.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <new>

#include "platform/ALOG.h"
#include "platform/KS_Cache.h"
#include "platform/standalone/Host.h"
#include "platform/standalone/SH_CacheBag.h"
#include "platform/standalone/SH_CacheKeeping.h"

namespace standalone {
namespace {

struct DiskCounts {
    std::uint64_t hits = 0, misses = 0, damaged = 0, failures = 0;
};

/// The folder of the process.
class Disk {
public:
    void set_folder(const std::string& folder) {
        folder_ = folder;
        note_.clear();
        swept_ = false, writes_ = true;
    }
    const std::string& folder() const { return folder_; }
    void set_limit(std::uint64_t bytes) { limit_ = bytes; }
    std::uint64_t limit() const { return limit_; }
    std::string note() const {
        const std::lock_guard lock(mutex_);
        return note_;
    }
    DiskCounts counts() const {
        const std::lock_guard lock(mutex_);
        return counts_;
    }
    void forget_counts() {
        const std::lock_guard lock(mutex_);
        counts_ = {};
    }

    /// @return whether the item was there and is now the probe's
    bool restore(const CacheKey& key, KS_Stuff* probe) {
        EntryState state = EntryState::missing;
        if (!folder_.empty()) {
            sweep_once();
            guarded([&] { state = ReadEntry(folder_, key, probe); });
        }
        const std::lock_guard lock(mutex_);
        ++(state == EntryState::whole ? counts_.hits : counts_.misses);
        if (state == EntryState::removed) ++counts_.damaged;
        return state == EntryState::whole;
    }

    void store(const CacheKey& key, const KS_Stuff& stuff) {
        if (folder_.empty() || !may_write()) return;
        sweep_once();
        const bool done = guarded([&] {
            const std::uint64_t bytes = WriteEntry(folder_, key, stuff);
            if (must_list(bytes)) list(ShrinkFiles(folder_, limit_, NumbersOf(key)).bytes);
        });
        const std::lock_guard lock(mutex_);
        writes_ = writes_ && done;
    }

    /// What look(folder, left, removed) finds.
    template <class Look> CacheReview review(const Look& look) {
        CacheReview result;
        if (folder_.empty()) return result;
        CacheSums removed, left;
        guarded([&] { look(folder_, &left, &removed); }, &result.fault);
        result.entries = left.entries, result.bytes = left.bytes;
        result.removed = removed.entries, result.removed_bytes = removed.bytes;
        return result;
    }

private:
    /// Runs what works on the disk, and notes its failure. @return false when it was the disk that failed
    template <class Work> bool guarded(const Work& work, std::string* fault = nullptr) {
        try {
            work();
        } catch (const DiskFault& refused) {
            if (refused.error == ESTALE) return true;  // somebody removed the file on another machine
            tell(refused.doing, std::strerror(refused.error), fault);
            return refused.error == EISDIR;  // in the way of one entry, not of others
        } catch (const std::bad_alloc&) {
            tell("used", "out of memory", fault);
        } catch (...) {
            tell("used", "an item does not give its data", fault);
        }
        return true;
    }

    void tell(const char* doing, const char* reason, std::string* fault) try {
        const std::lock_guard lock(mutex_);
        ++counts_.failures;
        const std::string words = "the cache in " + folder_ + " cannot be " + doing + ": " + reason;
        if (note_.empty()) note_ = words;
        if (fault != nullptr) *fault = words;
        ALOG_Log(5, "host", "cache", words.c_str());
    } catch (const std::bad_alloc&) {  // it is counted
    }

    bool may_write() const {
        const std::lock_guard lock(mutex_);
        return writes_;
    }
    /// Once for a folder, before it is used.
    void sweep_once() {
        const std::lock_guard lock(sweeping_);
        if (swept_) return;
        swept_ = true;
        guarded([&] {
            CacheSums sums;
            SweepFiles(folder_, &sums);
            list(sums.bytes);
        });
    }
    void list(std::uint64_t bytes) {
        const std::lock_guard lock(mutex_);
        listed_ = bytes;
        written_ = 0;
    }
    /// Whether what was written since the last listing makes the limit near: others may have written as much.
    bool must_list(std::uint64_t bytes) {
        const std::lock_guard lock(mutex_);
        written_ += bytes;
        return listed_ >= limit_ || written_ > (limit_ - listed_) / 4;
    }

    std::string folder_;
    std::uint64_t limit_ = std::uint64_t{10} << 30;
    std::mutex sweeping_;
    bool swept_ = false;        ///< guarded by `sweeping_`
    mutable std::mutex mutex_;  // of what follows
    bool writes_ = true;        ///< until it fails
    std::uint64_t listed_ = 0, written_ = 0;
    std::string note_;
    DiskCounts counts_;
};

Disk& disk() {
    alignas(Disk) static std::byte place[sizeof(Disk)];  // as the bag
    static auto* const only = new (place) Disk;
    return *only;
}

}  // namespace

CacheKey KeyOf(const KS_Stuff& stuff) {
    CacheKey key{stuff.GetEngineNumber(), static_cast<std::uint32_t>(BandCount()), {}};
    tesselcore::utility::GuidToBytes(stuff.GetGuid(), key.identity.data());
    return key;
}

void SetCacheFolder(const std::string& folder) { disk().set_folder(folder); }
std::string CacheFolder() { return disk().folder(); }
void SetCacheDiskLimit(std::uint64_t bytes) { disk().set_limit(bytes); }
std::uint64_t CacheDiskLimit() { return disk().limit(); }
void SetCacheMemoryLimit(std::uint64_t bytes) { KS_GlobalBag()->set_limit(bytes); }
std::uint64_t CacheMemoryLimit() { return KS_GlobalBag()->limit(); }
std::string CacheNote() { return disk().note(); }
std::uint64_t PurgeCacheMemory() { return KS_GlobalBag()->shrink(0); }

CacheCounts CacheStatistics() {
    CacheCounts counts{};
    KS_GlobalBag()->count_into(&counts);
    const DiskCounts files = disk().counts();
    counts.hits_on_disk = files.hits;
    counts.misses = files.misses;
    counts.damaged = files.damaged;
    counts.failures = files.failures;
    return counts;
}

void ForgetCacheCounts() {
    KS_GlobalBag()->forget_counts();
    disk().forget_counts();
}

CacheReview LookAtCache() {
    return disk().review([](const std::string& folder, CacheSums* left, CacheSums*) { SweepFiles(folder, left); });
}

CacheReview ClearCache() {
    return disk().review([](const std::string& folder, CacheSums* left, CacheSums* removed) {
        RemoveFiles(folder, removed);
        SweepFiles(folder, left);
    });
}

CacheReview VerifyCache(bool (*stops)()) {
    return disk().review([stops](const std::string& folder, CacheSums* left, CacheSums* removed) {
        VerifyFiles(folder, stops, left, removed);
    });
}

}  // namespace standalone

KS_Bag* KS_GlobalBag() {
    // Never destroyed, since items may be given back while the program ends; and made without memory.
    alignas(KS_Bag) static std::byte place[sizeof(KS_Bag)];
    static auto* const bag = new (place) KS_Bag;
    return bag;
}

int KS_Stuff::AddToBagAndSortDir(KS_Bag* bag, double) {
    const standalone::CacheKey key = standalone::KeyOf(*this);
    const KS_Bag::Added added = bag->add(key, this, false);
    if (added.kept == nullptr) return 4;
    if (added.is_new) standalone::disk().store(key, *this);
    return 0;
}

void KS_ScCheckout::FindAndCheckout(KS_Stuff* probe, int) {
    GiveBack();
    const standalone::CacheKey key = standalone::KeyOf(*probe);
    stuff_ = KS_GlobalBag()->find(key);
    if (stuff_ != nullptr || !standalone::disk().restore(key, probe)) return;
    stuff_ = KS_GlobalBag()->add(key, probe, true).kept;
    if (stuff_ == nullptr) Checkout(probe, 1);
}

void KS_ScCheckout::Checkout(KS_Stuff* stuff, int) {
    KS_GlobalBag()->check_out(stuff);
    GiveBack();
    stuff_ = stuff;
}

void KS_ScCheckout::GiveBack() {
    if (stuff_ == nullptr) return;
    KS_GlobalBag()->give_back(stuff_);
    stuff_ = nullptr;
}
