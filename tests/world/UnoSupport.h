// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "QX/world/QX_UnoBuffer.h"
#include "tests/support/Test.h"

namespace qx::test {

struct Dispose {
    void operator()(QX_UnoBuffer* buffer) const { EXPECT_EQ(QX_DisposeUnoBuffer(buffer), 0); }
};
using Buffer = std::unique_ptr<QX_UnoBuffer, Dispose>;

constexpr int full_of(int depth) { return depth == 8 ? 255 : 32768; }

/// Samples of any depth as numbers, row by row.
inline std::vector<double> samples(const QX_UnoBuffer& b) {
    std::vector<double> all;
    for (int i = 0; i < b.width * b.height; ++i) {
        if (b.depth == 8) all.push_back(static_cast<std::uint8_t*>(*b.handle)[i]);
        if (b.depth == 16) all.push_back(static_cast<std::uint16_t*>(*b.handle)[i]);
        if (b.depth == 32) all.push_back(static_cast<double>(static_cast<float*>(*b.handle)[i]));
    }
    return all;
}

/// Every sample from f(x, y).
template <class F> void set_samples(const QX_UnoBuffer& b, const F& f) {
    for (const auto& [x, y] : places(b.width, b.height)) {
        const int i = y * b.width + x;
        if (b.depth == 8) static_cast<std::uint8_t*>(*b.handle)[i] = static_cast<std::uint8_t>(f(x, y));
        if (b.depth == 16) static_cast<std::uint16_t*>(*b.handle)[i] = static_cast<std::uint16_t>(f(x, y));
        if (b.depth == 32) static_cast<float*>(*b.handle)[i] = static_cast<float>(f(x, y));
    }
}
/// A buffer of 8 or 16 bits of such samples.
template <class F> Buffer made_of(int width, int height, int depth, const F& f) {
    QX_UnoBuffer* made = nullptr;
    EXPECT_EQ((depth == 8 ? QX_NewUnoBuffer : QX_NewDeepUnoBuffer)(width, height, &made), 0);
    set_samples(*made, f);
    return Buffer(made);
}
/// Whose samples count up from 0 and start over behind the last value of the depth.
inline Buffer counting(int width, int height, int depth) {
    return made_of(width, height, depth, [=](int x, int y) { return (y * width + x) % (full_of(depth) + 1); });
}

/// The nearest to a product of shares of full; at 16 bits half a step goes down.
inline int product(std::int64_t a, std::int64_t b, int depth) {
    return static_cast<int>(depth == 8 ? (a * b + 127) / 255 : (a * b + 16383) / 32768);
}

/// Records that no routine on mask buffers takes: none, a stranger's, one without samples.
struct DamagedBuffers {
    QX_UnoBuffer stranger{3, 3, 8}, empty{3, 3, 8};
    const TK_Handle samples = empty.handle;

    DamagedBuffers() { stranger.magic ^= 1, empty.handle = nullptr; }
    ~DamagedBuffers() { empty.handle = samples; }
    DamagedBuffers(DamagedBuffers&&) = delete;
    std::vector<QX_UnoBuffer*> all() { return {nullptr, &stranger, &empty}; }
};

}  // namespace qx::test
