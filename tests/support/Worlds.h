// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <span>
#include <tuple>
#include <vector>

#include "QX/QX.h"
#include "QX/indep/QX_WorldDepth.h"
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

template <class Pixel> bool same_pixels(const std::vector<Pixel>& a, const std::vector<Pixel>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Pixel)) == 0;
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
    std::vector<std::tuple<std::decay_t<decltype(*std::begin(first))>, std::decay_t<decltype(*std::begin(rest))>...>>
        all;
    const auto tails = each(rest...);
    for (const auto& head : first) {
        for (const auto& tail : tails)
            all.push_back(std::tuple_cat(std::tuple<std::decay_t<decltype(head)>>(head), tail));
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

}  // namespace qx::test
