// SPDX-License-Identifier: Apache-2.0
#include "platform/standalone/SH_CacheBag.h"

#include <new>

KS_Stuff* KS_Bag::find(const standalone::CacheKey& key) {
    const std::lock_guard lock(mutex_);
    const auto found = by_key_.find(key);
    if (found == by_key_.end()) return nullptr;
    ++hits_;
    use(found->second);
    return found->second->stuff.get();
}

void KS_Bag::use(Items::iterator item) {
    items_.splice(items_.begin(), items_, item);
    item->stuff->AddRef();
    ++item->stuff->checkouts_;
}

KS_Bag::Added KS_Bag::add(const standalone::CacheKey& key, KS_Stuff* stuff, bool check_out) try {
    Items gone, fresh;
    fresh.push_back({key, stuff, stuff->GetSizeInBytes()});
    const std::lock_guard lock(mutex_);
    const auto [place, is_new] = by_key_.try_emplace(key, fresh.begin());
    if (is_new) {
        bytes_ += fresh.front().bytes;
        ++adds_;
        items_.splice(items_.begin(), fresh);
    }
    const Added added{place->second->stuff.get(), is_new};
    if (check_out) use(place->second);
    drop(limit_, &gone);
    return added;
} catch (const std::bad_alloc&) {
    return {nullptr, false};
}

void KS_Bag::check_out(KS_Stuff* stuff) {
    stuff->AddRef();
    const std::lock_guard lock(mutex_);
    ++stuff->checkouts_;
}

void KS_Bag::give_back(KS_Stuff* stuff) {
    Items gone;
    {
        const std::lock_guard lock(mutex_);
        --stuff->checkouts_;
        drop(limit_, &gone);
    }
    stuff->Release();
}

void KS_Bag::drop(std::uint64_t limit, Items* gone) {
    for (auto item = items_.end(); bytes_ > limit && item != items_.begin();) {
        --item;
        if (item->stuff->checkouts_ > 0) continue;
        const auto next = std::next(item);
        bytes_ -= item->bytes;
        ++evictions_;
        by_key_.erase(item->key);
        gone->splice(gone->end(), items_, item);
        item = next;
    }
}

std::uint64_t KS_Bag::shrink(std::uint64_t limit) {
    Items gone;
    const std::lock_guard lock(mutex_);
    const std::uint64_t before = bytes_;
    drop(limit, &gone);
    return before - bytes_;
}

void KS_Bag::set_limit(std::uint64_t bytes) {
    {
        const std::lock_guard lock(mutex_);
        limit_ = bytes;
    }
    shrink(bytes);
}

std::uint64_t KS_Bag::limit() const {
    const std::lock_guard lock(mutex_);
    return limit_;
}

void KS_Bag::count_into(standalone::CacheCounts* counts) const {
    const std::lock_guard lock(mutex_);
    counts->hits_in_memory = hits_;
    counts->adds = adds_;
    counts->evictions = evictions_;
    counts->items = items_.size();
    counts->bytes = bytes_;
}

void KS_Bag::forget_counts() {
    const std::lock_guard lock(mutex_);
    hits_ = adds_ = evictions_ = 0;
}
