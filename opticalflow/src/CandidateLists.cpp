// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/CandidateLists.h"

#include <algorithm>

namespace solvan_of {

bool CandidateLists::begin(const FieldTexture& field) {
    count_ = field.width() * field.height();
    field_ = field.row(0);
    lists_ = engineBlock<List>(static_cast<std::size_t>(count_));
    next_ = engineBlock<std::int32_t>(static_cast<std::size_t>(count_));
    if (lists_ == nullptr || next_ == nullptr) return false;
    empty_all();
    return true;
}

void CandidateLists::empty_all() { std::fill_n(lists_.get(), count_, List{0, 0, 0}); }

bool CandidateLists::holds(std::int32_t list, const HvVec2& v) const {
    for (std::int32_t left = lists_[list].count, at = lists_[list].head; left > 0; --left, at = next_[at])
        if (equal(field_[at], v)) return true;
    return false;
}

void CandidateLists::append(std::int32_t list, std::int32_t entry) {
    List& to = lists_[list];
    if (to.count++ == 0) {
        to.head = entry;
    } else {
        next_[to.tail] = entry;
    }
    to.tail = entry;
}

}  // namespace solvan_of
