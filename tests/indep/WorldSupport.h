// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "QX/indep/QX_World.h"

namespace qx::test {

using World = std::unique_ptr<QX_World>;

/// What a body throws; 0 when it ends well.
inline int code_of(const std::function<void()>& body) {
    try {
        body();
    } catch (int code) {
        return code;
    }
    return 0;
}

/// A world over memory of the test: bytes that are no zeroes, padding behind each row, and as much room before and
/// behind as the world has.
struct Canvas {
    int depth, width, height, padding;
    int pixel = depth / 2, rowbytes = width * pixel + padding;
    std::vector<std::uint8_t> memory = made(static_cast<std::size_t>(3 * height * rowbytes));
    World world{QX_World::NewReference(first(), width, height, static_cast<short>(depth), rowbytes)};

    std::uint8_t* first() { return memory.data() + height * rowbytes; }

    static std::vector<std::uint8_t> made(std::size_t size) {
        std::vector<std::uint8_t> bytes(size);
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(1 + i % 100);
        return bytes;
    }

    /// Holds every byte to `want(x, y, byte of the pixel)`: a value, or below 0 for one that stays. Padding and
    /// the room around stay.
    template <class Want> void expect(const Want& want) {
        auto wanted = made(memory.size());
        for (int y = 0; y < height; ++y) {
            for (int i = 0; i < width * pixel; ++i) {
                const int value = want(i / pixel, y, i % pixel);
                const auto at = static_cast<std::size_t>((height + y) * rowbytes + i);
                if (value >= 0) wanted[at] = static_cast<std::uint8_t>(value);
            }
        }
        EXPECT_TRUE(memory == wanted) << "depth " << depth << " padding " << padding;
    }
};

inline bool holds(const M_LRect& r, int x, int y) { return x >= r.left && x < r.right && y >= r.top && y < r.bottom; }

inline std::string name(const M_LRect& r) {
    return "rect " + std::to_string(r.left) + " " + std::to_string(r.top) + " " + std::to_string(r.right) + " " +
           std::to_string(r.bottom);
}

}  // namespace qx::test
