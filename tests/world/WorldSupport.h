// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "QX/world/QX_World.h"
#include "tests/support/Worlds.h"

namespace qx::test {

using World = std::unique_ptr<QX_World>;
inline constexpr int kDepths[] = {8, 16, 32};

inline World make(int width, int height, int depth) {
    return World(QX_World::New(width, height, static_cast<short>(depth), 1));
}

template <class Channel> Channel* row(const QX_World& w, int y) {
    return reinterpret_cast<Channel*>(static_cast<std::byte*>(w.data) + std::ptrdiff_t{y} * w.rowbytes);
}

/// Every channel from f(place in the row, row), or held to it.
template <class Channel, class F> void set_channels(const QX_World& w, const F& f) {
    for (const auto& [i, y] : places(4 * w.width, w.height)) row<Channel>(w, y)[i] = static_cast<Channel>(f(i, y));
}
template <class Channel, class F> void expect_channels(const QX_World& w, const F& f) {
    for (const auto& [i, y] : places(4 * w.width, w.height)) {
        ASSERT_EQ(row<Channel>(w, y)[i], f(i, y)) << "channel " << i << " of row " << y;
    }
}

template <class Pixel> Pixel& pixel_of(const QX_World& w, int x, int y) { return row<Pixel>(w, y)[x]; }

/// A channel as a number, at any depth; rows may lie anywhere.
inline double channel(const QX_World& w, int x, int y, int c) {
    const auto read = [&]<class Channel>(Channel v) {
        std::memcpy(&v, row<std::byte>(w, y) + (4 * x + c) * static_cast<int>(sizeof v), sizeof v);
        return static_cast<double>(v);
    };
    return w.Depth() == 8 ? read(std::uint8_t{}) : w.Depth() == 16 ? read(std::uint16_t{}) : read(0.0f);
}

/// A channel at another depth, by the table of rules.
inline double converted(double v, int from, int to) {
    if (from == to) return v;
    const auto n = static_cast<std::uint64_t>(from == 32 ? 0 : v);
    if (from == 8 && to == 16) return static_cast<double>((n * 0x404040408000u + 0x4040404080u) >> 39);
    if (from == 16 && to == 8) return static_cast<double>((n * 255 + 16384) >> 15);
    if (to == 32) return static_cast<float>(v) * (from == 8 ? 0.003921569f : 3.0517578e-5f);
    const float full = to == 8 ? 255.0f : 32768.0f, x = static_cast<float>(v) * full;
    return x < 0 ? 0 : x > full ? full : std::floor(x + 0.5f);
}

/// A world of random pixels from a seed.
inline World made(int width, int height, int depth, std::uint64_t seed) {
    World w = make(width, height, depth);
    const auto fill = [&]<class Pixel>(Pixel) {
        fill_world(static_cast<QX_WorldX<Pixel>&>(*w), FillKind::random, seed);
    };
    if (depth == 8) fill(QX_Pixel8{});
    if (depth == 16) fill(QX_Pixel16{});
    if (depth == 32) fill(QX_PixelFloat{});
    return w;
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
        for (const auto& [i, y] : places(width * pixel, height)) {
            const int value = want(i / pixel, y, i % pixel);
            const auto at = static_cast<std::size_t>((height + y) * rowbytes + i);
            if (value >= 0) wanted[at] = static_cast<std::uint8_t>(value);
        }
        EXPECT_TRUE(memory == wanted) << "depth " << depth << " padding " << padding;
    }
};

inline std::string name(const M_LRect& r) {
    return "rect " + std::to_string(r.left) + " " + std::to_string(r.top) + " " + std::to_string(r.right) + " " +
           std::to_string(r.bottom);
}

}  // namespace qx::test
