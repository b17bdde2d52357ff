// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/CandidateLists.h"

#include <algorithm>

namespace solvan_of {

bool CandidateLists::begin(const FieldTexture& field) {
    width_ = field.width(), height_ = field.height();
    field_ = field.row(0);
    const auto count = std::size_t(width_) * std::size_t(height_);
    lists_ = engineBlock<List>(count);
    next_ = engineBlock<std::int32_t>(count);
    return lists_ != nullptr && next_ != nullptr;
}

void CandidateLists::empty_rows(std::int32_t begin, std::int32_t end) {
    std::fill_n(lists_.get() + std::ptrdiff_t{begin} * width_, std::ptrdiff_t{end - begin} * width_, List{0, 0, 0});
}

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
