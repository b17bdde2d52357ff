// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <vector>

#include "scene/Ease.h"

namespace qx::scene {

/// N numbers that change from key to key, and stay before the first and after the last.
template <std::size_t N> class Track {
public:
    using Value = std::array<double, N>;
    struct Key {
        double frame;
        Value value;
        Ease ease;  ///< on the way to the next key
    };

    explicit Track(const Value& constant) : keys_{{0, constant, {}}} {}
    /// @param keys   at least one, frames rising
    /// @param least  a curve that goes beyond its keys' values is cut here, as at `most`
    explicit Track(std::vector<Key> keys, double least = -std::numeric_limits<double>::infinity(),
                   double most = std::numeric_limits<double>::infinity())
        : keys_(std::move(keys)), least_(least), most_(most) {}

    bool moves() const { return keys_.size() > 1; }
    double first() const { return keys_.front().frame; }
    double last() const { return keys_.back().frame; }
    Value at(double frame) const {
        const auto next =
            std::upper_bound(keys_.begin(), keys_.end(), frame, [](double f, const Key& key) { return f < key.frame; });
        if (next == keys_.begin()) return keys_.front().value;
        if (next == keys_.end()) return keys_.back().value;
        const Key &from = *std::prev(next), &to = *next;
        const double w = from.ease.share((frame - from.frame) / (to.frame - from.frame));
        Value value;
        for (std::size_t i = 0; i < N; ++i) value[i] = from.value[i] + (to.value[i] - from.value[i]) * w;
        if (from.ease.between == Between::bezier) {
            for (double& number : value) number = std::clamp(number, least_, most_);
        }
        return value;
    }

private:
    std::vector<Key> keys_;
    double least_ = -std::numeric_limits<double>::infinity(), most_ = std::numeric_limits<double>::infinity();
};

}  // namespace qx::scene
