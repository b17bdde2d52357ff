// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstdint>
#include <utility>

#include "opticalflow/src/HvVec2.h"
#include "opticalflow/src/RandomSequence.h"

namespace solvan_of {

inline bool equal(const HvVec2& a, const HvVec2& b) { return a.x == b.x && a.y == b.y; }
inline bool is_valid(const HvVec2& v) { return v.x != INVALID_VECTOR; }
/// What stands in for a neighbour's vector in a mean has both components.
inline bool is_whole(const HvVec2& v) { return v.x != INVALID_VECTOR && v.y != INVALID_VECTOR; }

/// How far two vectors lie apart, along both axes.
inline float distance(const HvVec2& a, const HvVec2& b) { return std::fabs(a.x - b.x) + std::fabs(a.y - b.y); }

/// Half as many exchanges as there are entries, and one where there is one.
template <class T> void shuffle(T* list, int count, RandomSequence& random) {
    if (count == 0) return;
    const auto size = static_cast<std::uint32_t>(count);
    for (int k = (count - 1) / 2 + 1; k > 0; --k) {
        const std::uint32_t i = random.draw() % size;
        const std::uint32_t j = random.draw() % size;
        std::swap(list[i], list[j]);
    }
}
/// How many numbers that takes.
constexpr int draws_of_shuffle(int count) { return count == 0 ? 0 : 2 * ((count - 1) / 2 + 1); }

/// An exchange for every entry.
template <class T> void shuffle_fully(T* list, int count, RandomSequence& random) {
    for (int i = 0; i < count; ++i) std::swap(list[i], list[random.draw() % static_cast<std::uint32_t>(count)]);
}

/// Vectors to choose from. What is added beyond the most is left out.
template <int Most> class Candidates {
public:
    void clear() {
        count_ = 0;
        room_ = Most;
    }
    void add(const HvVec2& v) {
        if (count_ < room_) list_[count_++] = v;
    }
    /// As if so many had been added that the filter takes away.
    void leave_out(int entries) { room_ -= entries; }

    /// Leaves those that are vectors, of equal ones the first.
    void filter() {
        int kept = 0;
        for (int i = 0; i < count_; ++i)
            if (is_valid(list_[i]) && !holds(list_[i], kept)) list_[kept++] = list_[i];
        count_ = kept;
    }

    void shuffle(RandomSequence& random) { solvan_of::shuffle(list_, count_, random); }

    int count() const { return count_; }
    const HvVec2& operator[](int i) const { return list_[i]; }
    HvVec2& operator[](int i) { return list_[i]; }
    const HvVec2* begin() const { return list_; }
    const HvVec2* end() const { return list_ + count_; }

private:
    bool holds(const HvVec2& v, int among) const {
        for (int i = 0; i < among; ++i)
            if (equal(list_[i], v)) return true;
        return false;
    }

    HvVec2 list_[Most];
    int count_ = 0, room_ = Most;
};

}  // namespace solvan_of
