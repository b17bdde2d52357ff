// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace solvan_of {

/// Numbers of 15 bits for the order of candidates; equal on every machine.
class RandomSequence {
public:
    /// A step of the state; a draw takes two.
    static constexpr std::uint32_t kFactor = 1103515245, kTerm = 12345;
    static constexpr std::uint32_t kTwoFactor = kFactor * kFactor, kTwoTerm = kTerm * kFactor + kTerm;

    explicit RandomSequence(std::uint32_t state) : state_(state) {}

    std::uint32_t draw() {
        const std::uint32_t first = step(state_);
        state_ = step(first);
        return (state_ >> 16 & 255) ^ (first >> 16 & 255) << 7;
    }

    /// Goes on as if so many numbers had been drawn.
    void skip(std::int32_t draws) {
        for (; draws > 0; --draws) state_ = state_ * kTwoFactor + kTwoTerm;
    }

    std::uint32_t state() const { return state_; }

private:
    static constexpr std::uint32_t step(std::uint32_t s) { return s * kFactor + kTerm; }

    std::uint32_t state_;
};

}  // namespace solvan_of
