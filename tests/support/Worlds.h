// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstring>
#include <memory>
#include <ranges>
#include <string>
#include <tuple>
#include <vector>

#include "QX/QX.h"
#include "tests/support/Pixels.h"

namespace qx::test {

template <class Pixel> void fill_world(QX_WorldX<Pixel>& world, FillKind kind, std::uint64_t seed) {
    for (int y = 0; y < world.height; ++y) {
        fill_pixels<Pixel>(std::span(world.Row(y), static_cast<std::size_t>(world.width)), kind,
                           seed * 1000 + static_cast<std::uint64_t>(y));
    }
}

/// A world with its record, filled from a seed.
template <class Pixel> class TestWorld {
public:
    TestWorld(int width, int height, FillKind kind, std::uint64_t seed)
        : world_(static_cast<QX_WorldX<Pixel>*>(QX_World::New(width, height, DepthOf<Pixel>::number, 1))) {
        fill_world(*world_, kind, seed);
        world_->FillOutEffectWorld(&record_);
    }
    QX_LayerDef* record() { return &record_; }
    QX_WorldX<Pixel>& world() { return *world_; }
    Pixel& at(int x, int y) { return world_->Row(y)[x]; }
    bool has(int x, int y) const { return x >= 0 && y >= 0 && x < world_->width && y < world_->height; }

    /// All pixels, row by row, without padding.
    std::vector<Pixel> pixels() const {
        std::vector<Pixel> all;
        for (int y = 0; y < world_->height; ++y) all.insert(all.end(), world_->Row(y), world_->Row(y) + world_->width);
        return all;
    }

private:
    std::unique_ptr<QX_WorldX<Pixel>> world_;
    QX_LayerDef record_{};
};

/// A record over pixels that lie alone in a block of the heap, where a sanitizer sees each byte that is touched beside
/// them; `behind` pixels lie behind each row.
template <class Pixel> struct Picture {
    std::size_t stride;
    std::vector<Pixel> pixels;
    QX_LayerDef record{};

    Picture(int width, int height, int behind = 3)
        : stride(static_cast<std::size_t>(width + behind)), pixels(stride * static_cast<std::size_t>(height)) {
        record.data = pixels.data(), record.width = width, record.height = height;
        record.rowbytes = static_cast<std::int32_t>(stride * sizeof(Pixel));
        QXp_SetWorldDepth(&record, DepthOf<Pixel>::number);
    }
    Pixel& at(int x, int y) { return pixels[static_cast<std::size_t>(y) * stride + static_cast<std::size_t>(x)]; }
};

/// A world whose class tells a depth that there is none of.
class OddWorld : public QX_WorldX<QX_Pixel8> {
public:
    using QX_WorldX<QX_Pixel8>::QX_WorldX;
    std::int16_t Depth() const override { return 12; }
};

/// The code that a call throws, that of short memory for its exception, else 0.
template <class Call> int code_of(const Call& call) {
    try {
        call();
    } catch (int code) {
        return code;
    } catch (const std::bad_alloc&) {
        return 4;
    }
    return 0;
}

inline bool holds(const M_LRect& r, int x, int y) { return x >= r.left && x < r.right && y >= r.top && y < r.bottom; }

/// The places of a world of this size, row by row.
inline std::vector<M_LPoint> places(int width, int height) {
    std::vector<M_LPoint> all;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) all.push_back({x, y});
    }
    return all;
}

/// Every combination of one of each list, the last list fastest.
inline std::vector<std::tuple<>> each() { return {{}}; }
template <class First, class... Rest> auto each(const First& first, const Rest&... rest) {
    std::vector<std::tuple<std::ranges::range_value_t<First>, std::ranges::range_value_t<Rest>...>> all;
    for (const auto& head : first) {
        for (const auto& tail : each(rest...)) all.push_back(std::tuple_cat(std::make_tuple(head), tail));
    }
    return all;
}

template <class List> bool listed(const List& list, int number) {
    return std::find(std::begin(list), std::end(list), number) != std::end(list);
}

inline QX_CompositeModePlus mode_of(int xfer, float opacity = 1.0f, bool rgb_only = false) {
    return {xfer, opacity, nullptr, rgb_only, 1};
}
inline QX_MaskWorld mask_at(const QX_LayerDef& world, int x, int y, std::uint32_t kind) { return {world, x, y, kind}; }

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
    if (from == 8 && to == 16) return static_cast<double>((n * 32768 + 128) / 255);
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
