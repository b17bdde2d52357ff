// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace qx::scene {

enum class Between { linear, smooth };

/// How much of the next key's value there is after part `u` of the way; smooth starts and ends at rest.
constexpr double share(Between between, double u) { return between == Between::linear ? u : u * u * (3 - 2 * u); }

/// N numbers that change from key to key, and stay before the first and after the last.
template <std::size_t N> class Track {
public:
    using Value = std::array<double, N>;
    struct Key {
        double frame;
        Value value;
        Between between;  ///< on the way to the next key
    };

    explicit Track(const Value& constant) : keys_{{0, constant, Between::linear}} {}
    explicit Track(std::vector<Key> keys) : keys_(std::move(keys)) {}  ///< at least one, frames rising

    bool moves() const { return keys_.size() > 1; }
    double first() const { return keys_.front().frame; }
    double last() const { return keys_.back().frame; }
    Value at(double frame) const {
        const auto next =
            std::upper_bound(keys_.begin(), keys_.end(), frame, [](double f, const Key& key) { return f < key.frame; });
        if (next == keys_.begin()) return keys_.front().value;
        if (next == keys_.end()) return keys_.back().value;
        const Key &from = *std::prev(next), &to = *next;
        const double w = share(from.between, (frame - from.frame) / (to.frame - from.frame));
        Value value;
        for (std::size_t i = 0; i < N; ++i) value[i] = from.value[i] + (to.value[i] - from.value[i]) * w;
        return value;
    }

private:
    std::vector<Key> keys_;
};

}  // namespace qx::scene
