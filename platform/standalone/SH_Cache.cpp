// SPDX-License-Identifier: Apache-2.0
// The cache: the bag in memory.
#include "platform/standalone/Cache.h"

#include <cstddef>
#include <new>

#include "platform/KS_Cache.h"
#include "platform/standalone/Host.h"
#include "platform/standalone/SH_CacheBag.h"
#include "platform/standalone/SH_Internal.h"

namespace standalone {
namespace {

std::string folder;
std::uint64_t disk_limit = 10'000'000'000;
std::uint64_t misses = 0;

}  // namespace

CacheKey KeyOf(const KS_Stuff& stuff) {
    CacheKey key{stuff.GetEngineNumber(), static_cast<std::uint32_t>(BandCount()), {}};
    tesselcore::utility::GuidToBytes(stuff.GetGuid(), key.identity.data());
    return key;
}

void SetCacheFolder(const std::string& new_folder) { folder = new_folder; }
std::string CacheFolder() { return folder; }
void SetCacheDiskLimit(std::uint64_t bytes) { disk_limit = bytes; }
std::uint64_t CacheDiskLimit() { return disk_limit; }
void SetCacheMemoryLimit(std::uint64_t bytes) { KS_GlobalBag()->set_limit(bytes); }
std::uint64_t CacheMemoryLimit() { return KS_GlobalBag()->limit(); }
std::string CacheNote() { return {}; }

CacheCounts CacheStatistics() {
    CacheCounts counts{};
    KS_GlobalBag()->count_into(&counts);
    counts.misses = misses;
    return counts;
}

void ForgetCacheCounts() { KS_GlobalBag()->forget_counts(); }

std::uint64_t PurgeCacheMemory() { return KS_GlobalBag()->shrink(0); }

}  // namespace standalone

KS_Bag* KS_GlobalBag() {
    // Never destroyed, since items may be given back while the program ends; and made without memory.
    alignas(KS_Bag) static std::byte place[sizeof(KS_Bag)];
    static auto* const bag = new (place) KS_Bag;
    return bag;
}

int KS_Stuff::AddToBagAndSortDir(KS_Bag* bag, double) {
    return bag->add(standalone::KeyOf(*this), this, false).kept == nullptr ? 4 : 0;
}

void KS_ScCheckout::FindAndCheckout(KS_Stuff* probe, int) {
    GiveBack();
    stuff_ = KS_GlobalBag()->find(standalone::KeyOf(*probe));
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
