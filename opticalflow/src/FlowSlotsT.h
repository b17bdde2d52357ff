// SPDX-License-Identifier: Apache-2.0
// Slots of many pixels: which vectors each has to choose from.
#pragma once

#include "lanes/Shuffles.h"
#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/FlowChoice.h"
#include "opticalflow/src/FlowLanesT.h"
#include "opticalflow/src/FlowSampleT.h"
#include "opticalflow/src/NeighbourMean.h"

namespace qx::QX_ISA {

/// The nine vectors of each pixel of a bundle.
struct Slots {
    Floats x[kSlots], y[kSlots];

    QX_INLINE void load(std::int32_t slot, const CandidateRow& row, std::int32_t at) {
        x[slot] = load_lanes<Floats>(row.x + at);
        y[slot] = load_lanes<Floats>(row.y + at);
    }

    /// A bit for each slot that holds a vector which no slot before it holds.
    QX_INLINE Ints kept() const {
        const Floats none = splat<Floats>(INVALID_VECTOR);
        Ints bits{};
        for (std::int32_t i = 0; i < kSlots; ++i) {
#ifdef __AVX512F__
            if constexpr (sizeof(Floats) == 64) {  // masks as they are, which the compiler would make vectors
                const auto same = [&](std::int32_t j) QX_LAMBDA {
                    return _mm512_mask_cmp_ps_mask(_mm512_cmp_ps_mask((__m512)x[i], (__m512)x[j], _CMP_EQ_OQ),
                                                   (__m512)y[i], (__m512)y[j], _CMP_EQ_OQ);
                };
                __mmask16 twin = _mm512_cmp_ps_mask((__m512)x[i], (__m512)none, _CMP_EQ_OQ);
                for (std::int32_t j = 0; j < i; ++j) twin = _kor_mask16(twin, same(j));
                bits = (Ints)_mm512_mask_or_epi32((__m512i)bits, _knot_mask16(twin), (__m512i)bits,
                                                  _mm512_set1_epi32(1 << i));
                continue;
            }
#endif
            Mask twin = x[i] == none;
            for (std::int32_t j = 0; j < i; ++j) twin = either(twin, both(x[i] == x[j], y[i] == y[j]));
            bits |= twin ? Ints{} : splat<Ints>(1 << i);
        }
        return bits;
    }
};

/// The vectors of slots in memory, for work on one pixel after another.
struct SlotVectors {
    float x[kSlots][lanes_in<Floats>], y[kSlots][lanes_in<Floats>];

    QX_INLINE explicit SlotVectors(const Slots& slots) {
        for (std::int32_t i = 0; i < kSlots; ++i) {
            store_lanes(x[i], slots.x[i]);
            store_lanes(y[i], slots.y[i]);
        }
    }
    QX_INLINE HvVec2 at(std::int32_t slot, std::int32_t lane) const { return {x[slot][lane], y[slot][lane]}; }
};

/// Vectors of pixels side by side, their components apart.
template <class F> QX_INLINE void load_vectors(const HvVec2* from, F& x, F& y) {
    if constexpr (!is_wide<F>) {
        x = from->x;
        y = from->y;
    } else {
        const auto low = load_lanes<F>(from), high = load_lanes<F>(from + lanes_in<F> / 2);
        x = reordered(low, high, [](int lane) { return 2 * lane; });
        y = reordered(low, high, [](int lane) { return 2 * lane + 1; });
    }
}

template <class F> QX_INLINE void store_vectors(HvVec2* to, F x, F y) {
    if constexpr (!is_wide<F>) {
        *to = {x, y};
    } else {
        constexpr int n = lanes_in<F>;
        store_lanes(to, reordered(x, y, [](int lane) { return lane / 2 + lane % 2 * n; }));
        store_lanes(to + n / 2, reordered(x, y, [](int lane) { return n / 2 + lane / 2 + lane % 2 * n; }));
    }
}
/// Some of them, at the end of a row.
QX_INLINE void load_some_vectors(const HvVec2* from, std::int32_t count, Floats& x, Floats& y) {
    if (count == lanes_in<Floats>) return load_vectors(from, x, y);
    HvVec2 some[lanes_in<Floats>]{};
    for (std::int32_t i = 0; i < count; ++i) some[i] = from[i];
    load_vectors(some, x, y);
}
QX_INLINE void store_some_vectors(HvVec2* to, std::int32_t count, Floats x, Floats y) {
    if (count == lanes_in<Floats>) return store_vectors(to, x, y);
    HvVec2 some[lanes_in<Floats>];
    store_vectors(some, x, y);
    for (std::int32_t i = 0; i < count; ++i) to[i] = some[i];
}

QX_INLINE float apart(const HvVec2& a, const HvVec2& b) { return size_of(a.x - b.x) + size_of(a.y - b.y); }

/// What a difference of luminance costs.
QX_INLINE Floats data_costs(Floats difference, float weight) {
    return size_of(difference) * splat<Floats>(weight) / 123.0f * 65535.0f;
}

/// What becomes of the random state by the shuffle of so many entries.
struct RandomJumps {
    std::uint32_t factor[kSlots + 1], term[kSlots + 1];

    constexpr RandomJumps() : factor{}, term{} {
        using Sequence = solvan_of::RandomSequence;
        for (std::int32_t count = 0; count <= kSlots; ++count) {
            factor[count] = 1;
            for (int draws = solvan_of::draws_of_shuffle(count); draws > 0; --draws) {
                factor[count] *= Sequence::kTwoFactor;
                term[count] = term[count] * Sequence::kTwoFactor + Sequence::kTwoTerm;
            }
        }
    }
};
inline constexpr RandomJumps kJumps{};

QX_INLINE void skip_shuffle(std::uint32_t& state, std::int32_t count) {
    state = state * kJumps.factor[count] + kJumps.term[count];
}

/// As if so many numbers had been drawn.
QX_INLINE void skip_draws(std::uint32_t& state, std::int32_t draws) {
    using Sequence = solvan_of::RandomSequence;
    for (; draws > 1; draws -= 2) state = state * kJumps.factor[1] + kJumps.term[1];
    if (draws == 1) state = state * Sequence::kTwoFactor + Sequence::kTwoTerm;
}

/// Bits of lanes in memory, for work on one after another.
struct LaneBits {
    std::int32_t bits[lanes_in<Ints>];
    QX_INLINE explicit LaneBits(Ints v) { store_lanes(bits, v); }
    QX_INLINE std::int32_t operator[](std::int32_t lane) const { return bits[lane]; }
};
/// True where more than one bit is set.
QX_INLINE Mask has_several(Ints bits) { return (bits & (bits - 1)) != Ints{}; }

/// The costs of the slots whose bits are set, in their order, for one pixel.
struct PixelCosts {
    float costs[kSlots];
    std::int32_t slots[kSlots];
    std::int32_t count = 0;

    QX_INLINE void add(std::int32_t slot, float cost) {
        slots[count] = slot;
        costs[count++] = cost;
    }
    /// The slot of the lowest one, where several are that which a shuffle puts first.
    QX_INLINE std::int32_t lowest(SettleTie settle, std::uint32_t state) const {
        std::int32_t best = 0, not_above = 0;
        for (std::int32_t i = 1; i < count; ++i) best = costs[i] < costs[best] ? i : best;
        for (std::int32_t i = 0; i < count; ++i) not_above += costs[i] > costs[best] ? 0 : 1;
        if (not_above != 1) [[unlikely]]
            best = settle(costs, count, state);
        return slots[best];
    }
};

}  // namespace qx::QX_ISA
