// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowSlotsT.h"
#include "opticalflow/src/FlowTween.h"

namespace qx::QX_ISA {

/// The eight around a pixel, below, beside and above, and its own behind them.
inline constexpr std::int32_t kTweenLines[kSlots] = {2, 2, 2, 1, 1, 0, 0, 0, 1};
inline constexpr std::int32_t kTweenColumns[kSlots] = {-1, 0, 1, -1, 1, -1, 0, 1, 0};

/// The slots of one side for a bundle of pixels.
class SideLanes {
public:
    QX_INLINE SideLanes(const TweenSide& side, std::int32_t at, std::int32_t count)
        : side_(side), at_(at), count_(count) {
        for (std::int32_t i = 0; i + 1 < kSlots; ++i) slots_.load(i, side.rows[kTweenLines[i]], at + kTweenColumns[i]);
        load_some_vectors(side.row + at, count, slots_.x[kSlots - 1], slots_.y[kSlots - 1]);
        bits = slots_.kept();
    }

    /// True where a vector alone is left whose bits are those of the pixel's own.
    QX_INLINE Mask stays() const {
        const Floats none = splat<Floats>(INVALID_VECTOR), x = slots_.x[kSlots - 1], y = slots_.y[kSlots - 1];
        Ints differs{};
        for (std::int32_t i = 0; i + 1 < kSlots; ++i) {
            const Ints change = (bits_of(slots_.x[i]) ^ bits_of(x)) | (bits_of(slots_.y[i]) ^ bits_of(y));
            differs |= slots_.x[i] == none ? Ints{} : change;
        }
        return both(differs == Ints{}, x != none);
    }

    /// What the frame shows where the vectors lead, of those slots that some of these pixels have.
    QX_INLINE void sample(Mask wanted_by, std::int32_t y) {
        const Ints wanted = wanted_by ? bits : Ints{};
        const Floats px = to_float(lane_numbers<Ints>() + at_) + 0.5f, py = splat<Floats>(static_cast<float>(y) + 0.5f);
        const Floats k = splat<Floats>(side_.k), zero{};
        const auto here = load_some<Floats>(side_.here + at_, count_);
        const Floats width = splat<Floats>(static_cast<float>(side_.image.width));
        const Floats height = splat<Floats>(static_cast<float>(side_.image.height));
        for (std::int32_t i = 0; i < kSlots; ++i) {
            if (all_equal(wanted & (1 << i), 0)) continue;
            const Floats dx = k * slots_.x[i], dy = k * slots_.y[i], u = px - dx, v = py + dy;
            const Mask outside = either(either(u<zero, u> width), either(v<zero, v> height));
            const Floats sample = ring_sample(side_.image, u, v);
            const Floats led = outside ? splat<Floats>(kOutsideShows) : sample;
            const Floats shown = dx == splat<Floats>(INVALID_VECTOR) ? splat<Floats>(kOverflowShows) : led;
            store_lanes(shown_[i], both(dx == zero, dy == zero) ? here : shown);
        }
    }

    QX_INLINE SlotVectors vectors() const { return SlotVectors(slots_); }
    QX_INLINE float shown(std::int32_t slot, std::int32_t lane) const { return shown_[slot][lane]; }

    Ints bits;

private:
    QX_INLINE static Ints bits_of(Floats v) {
        if constexpr (is_wide<Floats>) {
            return (Ints)v;
        } else {
            Ints b;
            __builtin_memcpy(&b, &v, sizeof b);
            return b;
        }
    }

    const TweenSide& side_;
    std::int32_t at_, count_;
    Slots slots_;
    float shown_[kSlots][lanes_in<Floats>];
};

/// The vectors that one pixel has of a side, and what the frame shows for each. Behind them are none, which cost no
/// number and so are never chosen.
struct SideList {
    static constexpr std::int32_t kRoom = (kSlots + lanes_in<Floats> - 1) / lanes_in<Floats> * lanes_in<Floats>;
    float x[kRoom], y[kRoom], shown[kRoom];
    std::int32_t count = 0;

    QX_INLINE SideList(const SideLanes& side, const SlotVectors& vectors, std::int32_t lane, std::int32_t bits) {
        for (std::int32_t at = 0; at < kRoom; at += lanes_in<Floats>)
            store_lanes(x + at, splat<Floats>(__builtin_nanf(""))), store_lanes(y + at, Floats{}),
                store_lanes(shown + at, Floats{});
        for (; bits != 0; bits &= bits - 1) {
            const std::int32_t i = __builtin_ctz(static_cast<unsigned>(bits));
            x[count] = vectors.x[i][lane];
            y[count] = vectors.y[i][lane];
            shown[count++] = side.shown(i, lane);
        }
    }
    QX_INLINE HvVec2 at(std::int32_t i) const { return {x[i], y[i]}; }
};

/// The cheapest pair: the entries of b in lanes, those of a one after another.
QX_INLINE solvan_of::ChosenPair cheapest(const TweenRow& row, const SideList& a, const SideList& b,
                                         const MeanPair& means) {
    float lowest_of[SideList::kRoom];
    std::int32_t a_of[SideList::kRoom], tied[SideList::kRoom];
    for (std::int32_t at = 0; at < b.count; at += lanes_in<Floats>) {
        const auto load = [at](const float* from) QX_LAMBDA { return load_lanes<Floats>(from + at); };
        const Floats x = load(b.x), y = load(b.y), shows = load(b.shown);
        const Floats apart_of_b = 8.0f * (size_of(means.b.x - x) + size_of(means.b.y - y));
        Floats lowest = splat<Floats>(solvan_of::kMostPairCost);
        Ints best_a{}, is_tied{};
        for (std::int32_t i = 0; i < a.count; ++i) {
            const Floats cost = (size_of(a.x[i] + x) + size_of(a.y[i] + y)) * row.symmetry +
                                size_of(shows - a.shown[i]) * row.data +
                                (apart_of_b + 8.0f * apart(means.a, a.at(i))) * row.smoothness;
            const Mask is_lower = cost < lowest, is_equal = cost == lowest;
            is_tied = is_lower ? Ints{} : is_equal ? splat<Ints>(1) : is_tied;
            best_a = is_lower ? splat<Ints>(i) : best_a;
            lowest = is_lower ? cost : lowest;
        }
        store_lanes(lowest_of + at, lowest);
        store_lanes(a_of + at, best_a);
        store_lanes(tied + at, is_tied);
    }
    solvan_of::ChosenPair best;
    float lowest = solvan_of::kMostPairCost;
    for (std::int32_t k = 0; k < b.count; ++k) {
        const bool is_lower = lowest_of[k] < lowest;
        best.is_tied = is_lower ? tied[k] != 0 : best.is_tied | ((lowest_of[k] == lowest) & (best.b >= 0));
        best.b = is_lower ? k : best.b;
        lowest = is_lower ? lowest_of[k] : lowest;
    }
    if (best.b >= 0) best.a = a_of[best.b];
    return best;
}

/// Among equally cheap pairs, that which shuffles put first.
inline solvan_of::ChosenPair settled(const TweenRow& row, const SideList& a, const SideList& b, const MeanPair& means) {
    HvVec2 from_a[kSlots], from_b[kSlots];
    for (std::int32_t i = 0; i < a.count; ++i) from_a[i] = a.at(i);
    for (std::int32_t i = 0; i < b.count; ++i) from_b[i] = b.at(i);
    return row.settle({.a = from_a,
                       .b = from_b,
                       .shown_a = a.shown,
                       .shown_b = b.shown,
                       .count_a = a.count,
                       .count_b = b.count,
                       .mean_a = means.a,
                       .mean_b = means.b,
                       .symmetry = row.symmetry,
                       .data = row.data,
                       .smoothness = row.smoothness,
                       .random = row.random,
                       .borrows_a = false,
                       .borrows_b = false});
}

/// One pixel after the other, since each sees what those before it have taken.
QX_INLINE void choose_one(TweenRow& row, const SideList& a, const SideList& b, std::int32_t x) {
    HvVec2 &to_a = row.a.row[x], &to_b = row.b.row[x];
    if (a.count == 1 && b.count == 1) {
        to_a = a.at(0);
        to_b = b.at(0);
        return;
    }
    const MeanPair means = means_around(row.a.live(), row.b.live(), x, row.width);
    solvan_of::ChosenPair best = cheapest(row, a, b, means);
    if (best.is_tied) [[unlikely]]
        best = settled(row, a, b, means);
    skip_draws(row.random, a.count + b.count);
    if (best.a < 0) return;
    to_a = a.at(best.a);
    to_b = b.at(best.b);
}

inline void choose(TweenRow& row) {
    for_lanes(row.width, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        SideLanes a(row.a, at, count), b(row.b, at, count);
        const Mask lacks = either(a.bits == Ints{}, b.bits == Ints{});
        const Mask idle = either(lacks, both(a.stays(), b.stays()));
        if (all(idle)) return;
        const Mask compares = both(idle == Mask{}, either(has_several(a.bits), has_several(b.bits)));
        if (any(compares)) {
            a.sample(compares, row.y);
            b.sample(compares, row.y);
        }
        const SlotVectors from_a = a.vectors(), from_b = b.vectors();
        const LaneBits of_a(idle ? Ints{} : a.bits), of_b(b.bits);
        for (std::int32_t lane = 0; lane < count; ++lane) {
            if (of_a[lane] == 0) continue;
            choose_one(row, SideList(a, from_a, lane, of_a[lane]), SideList(b, from_b, lane, of_b[lane]), at + lane);
        }
    });
}

/// What overflows leads to the first pixel.
inline void lead(const LeadRow& row, std::int32_t* to) {
    const Floats middle = splat<Floats>(static_cast<float>(row.y) + 0.5f), none = splat<Floats>(INVALID_VECTOR);
    for_lanes(row.count, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        Floats vx, vy;
        load_some_vectors(row.vectors + at, count, vx, vy);
        const Floats dx = row.k * vx, dy = row.k * vy;
        const Mask overflows = dx == none;
        const Ints x = places_of(to_float(lane_numbers<Ints>() + (row.x + at)) + 0.5f - dx).whole;
        const Ints y = places_of(middle + dy).whole;
        const Mask inside = both(vx != none, both(lies_in(x, row.width), lies_in(y, row.height)));
        const Ints led = inside ? y * row.width + x : splat<Ints>(kLeadsNowhere);
        store_some(to + at, both(vx != none, overflows) ? Ints{} : led, count);
    });
}

extern const FlowTween flow_tween;
const FlowTween flow_tween{.choose = &choose, .lead = &lead};

}  // namespace qx::QX_ISA
