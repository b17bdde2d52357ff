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
#include "tests/support/Pixels.h"

namespace qx::test {

/// A world with its record, filled from a seed.
template <class Pixel> class TestWorld {
public:
    TestWorld(int width, int height, FillKind kind, std::uint64_t seed)
        : world_(static_cast<QX_WorldX<Pixel>*>(QX_World::New(width, height, DepthOf<Pixel>::number, 1))) {
        for (int y = 0; y < height; ++y) {
            fill_pixels<Pixel>(std::span(world_->Row(y), static_cast<std::size_t>(width)), kind,
                               seed * 1000 + static_cast<std::uint64_t>(y));
        }
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
        for (const auto& tail : tails) all.push_back(std::tuple_cat(std::tuple(head), tail));
    }
    return all;
}

inline QX_MaskWorld mask_at(const QX_LayerDef& world, int x, int y, std::uint32_t kind) { return {world, x, y, kind}; }

}  // namespace qx::test
