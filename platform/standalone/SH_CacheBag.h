// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <list>
#include <map>
#include <mutex>

#include "platform/KS_Cache.h"
#include "platform/standalone/Cache.h"
#include "platform/standalone/SH_CacheFormat.h"

/// The items in memory, the one used last in front.
class KS_Bag {
public:
    using Owner = boost::intrusive_ptr<KS_Stuff>;

    /// The item of this key, checked out; null if there is none.
    KS_Stuff* find(const standalone::CacheKey& key);
    struct Added {
        KS_Stuff* kept;  ///< the one that the bag has now; null when memory was short
        bool is_new;
    };
    /// Adds an item unless there is one of its key.
    Added add(const standalone::CacheKey& key, KS_Stuff* stuff, bool check_out);
    void check_out(KS_Stuff* stuff);
    void give_back(KS_Stuff* stuff);
    /// Lets items go until the limit is met, or none is left that is not in use. @return bytes of those that went
    std::uint64_t shrink(std::uint64_t limit);

    void set_limit(std::uint64_t bytes);
    std::uint64_t limit() const;
    void count_into(standalone::CacheCounts* counts) const;
    void forget_counts();

private:
    struct Item {
        standalone::CacheKey key;
        Owner stuff;
        std::uint64_t bytes;
    };
    using Items = std::list<Item>;

    void use(Items::iterator item);
    /// Moves what is to go to the end of `gone`, which is destroyed when the bag is not locked any more.
    void drop(std::uint64_t limit, Items* gone);

    mutable std::mutex mutex_;
    Items items_;
    std::map<standalone::CacheKey, Items::iterator> by_key_;
    std::uint64_t bytes_ = 0, limit_ = std::uint64_t{1} << 30, hits_ = 0, adds_ = 0, evictions_ = 0;
};
