// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowChoice.h"
#include "opticalflow/src/FlowSlotsT.h"

namespace qx::QX_ISA {

inline void spread(const HvVec2* row, const std::int32_t* map, std::int32_t width, const CandidateRow& out) {
    const auto beside = [&](std::int32_t at) QX_LAMBDA {
        out.x[at] = out.y[at] = INVALID_VECTOR;
        out.changed[at] = 0;
    };
    for (std::int32_t i = 0; i < kRowPadding; ++i) beside(i - kRowPadding), beside(width + i);
    if (row == nullptr) {
        for (std::int32_t x = 0; x < width; ++x) beside(x);
        return;
    }
    const Floats none = splat<Floats>(INVALID_VECTOR);
    for_lanes(width, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        Floats x, y;
        load_some_vectors(row + at, count, x, y);
        const Ints changed = map == nullptr ? splat<Ints>(1) : load_some<Ints>(map + at, count);
        const Mask counts = changed != Ints{};
        store_some(out.x + at, counts ? x : none, count);
        store_some(out.y + at, counts ? y : none, count);
        store_some(out.changed + at, counts ? splat<Ints>(-1) : Ints{}, count);
    });
}

inline bool watch(const HvVec2* row, std::int32_t width, HvVec2* saved, std::int32_t* map) {
    const Floats none = splat<Floats>(INVALID_VECTOR);
    Ints some_are_none{};
    for_lanes(width, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        Floats x, y, old_x, old_y;
        load_some_vectors(row + at, count, x, y);
        load_some_vectors(saved + at, count, old_x, old_y);
        const Mask same = both(x == old_x, y == old_y);
        some_are_none |= either(x == none, y == none) ? splat<Ints>(1) : Ints{};
        store_some(map + at, same ? Ints{} : splat<Ints>(1), count);
        store_some_vectors(saved + at, count, x, y);
    });
    return !all_equal(some_are_none, 0);
}

/// What the data of slots costs for the pixels of a bundle.
struct SlotCosts {
    float costs[kSlots][lanes_in<Floats>];

    /// Of those slots that some pixels have to compare.
    QX_INLINE void measure(const FlowImage& image, const Slots& slots, Ints bits, Floats here, float weight,
                           std::int32_t at, std::int32_t y) {
        const Floats px = to_float(lane_numbers<Ints>() + at) + 0.5f, py = splat<Floats>(static_cast<float>(y) + 0.5f);
        const Ints wanted = has_several(bits) ? bits : Ints{};
        for (std::int32_t i = 0; i < kSlots; ++i) {
            if (all_equal(wanted & (1 << i), 0)) continue;
            const Floats sample = ring_sample(image, px - slots.x[i], py + slots.y[i]);
            store_lanes(costs[i], data_costs(sample - here, weight));
        }
    }
};

/// Calls body(slot) for each bit that is set, from the lowest.
template <class Body> QX_INLINE void for_slots(std::int32_t bits, const Body& body) {
    for (; bits != 0; bits &= bits - 1) body(__builtin_ctz(static_cast<unsigned>(bits)));
}

inline void assign(AssignRow& row) {
    const std::int32_t dx[kSlots] = {-row.reach, -row.reach, -row.reach, 0, 0, row.reach, row.reach, row.reach, 0};
    static constexpr std::int32_t kLines[kSlots] = {0, 1, 2, 0, 2, 0, 1, 2, 1};
    for_lanes(row.width, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        Slots slots;
        for (std::int32_t i = 0; i < kSlots; ++i) slots.load(i, row.rows[kLines[i]], at + dx[i]);
        const Ints bits = slots.kept();
        const SlotVectors vectors(slots);
        SlotCosts costs;
        costs.measure(row.image, slots, bits, load_some<Floats>(row.here + at, count), row.data_weight, at, row.y);
        const LaneBits of(bits);
        for (std::int32_t lane = 0; lane < count; ++lane) {
            if (of[lane] == 0) continue;
            PixelCosts pixel;
            for_slots(of[lane], [&](std::int32_t i) QX_LAMBDA { pixel.add(i, costs.costs[i][lane]); });
            const std::int32_t i = pixel.count == 1 ? pixel.slots[0] : pixel.lowest(row.settle, row.random);
            skip_shuffle(row.random, pixel.count);
            row.out[at + lane] = vectors.at(i, lane);
        }
    });
}

/// The eight around a pixel, below, beside and above, behind its own.
inline constexpr std::int32_t kAroundLines[kSlots] = {1, 2, 2, 2, 1, 1, 0, 0, 0};
inline constexpr std::int32_t kAroundColumns[kSlots] = {0, -1, 0, 1, -1, 1, -1, 0, 1};

/// All set where a neighbour counts as changed.
QX_INLINE Mask has_changed_neighbours(const CandidateRow (&rows)[3], std::int32_t at) {
    Ints changed{};
    for (std::int32_t i = 1; i < kSlots; ++i)
        changed |= load_lanes<Ints>(rows[kAroundLines[i]].changed + at + kAroundColumns[i]);
    return changed != Ints{};
}

inline void refine(RefineRow& row) {
    for_lanes(row.width, [&](std::int32_t at, std::int32_t count) QX_LAMBDA {
        const Mask visits = has_changed_neighbours(row.rows, at);
        if (!any(visits)) return;
        Slots slots;
        load_some_vectors(row.row + at, count, slots.x[0], slots.y[0]);
        for (std::int32_t i = 1; i < kSlots; ++i) slots.load(i, row.rows[kAroundLines[i]], at + kAroundColumns[i]);
        const Ints bits = visits ? slots.kept() : Ints{};
        const LaneBits of(bits);
        if (all_equal(bits & ~1, 0)) {  // nothing but vectors that stay
            for (std::int32_t lane = 0; lane < count; ++lane) skip_shuffle(row.random, of[lane]);
            return;
        }
        const SlotVectors vectors(slots);
        SlotCosts costs;
        costs.measure(row.image, slots, bits, load_some<Floats>(row.here + at, count), row.data_weight, at, row.y);
        for (std::int32_t lane = 0; lane < count; ++lane) {
            const std::int32_t x = at + lane;
            if (of[lane] <= 1) {
                skip_shuffle(row.random, of[lane]);
                continue;
            }
            const HvVec2 mean = mean_around({row.above, row.row, row.below}, x, row.width);
            PixelCosts pixel;
            for_slots(of[lane], [&](std::int32_t i) QX_LAMBDA {
                pixel.add(i, costs.costs[i][lane] + apart(mean, vectors.at(i, lane)) * row.smoothness * 8.0f);
            });
            const std::int32_t i = pixel.count == 1 ? pixel.slots[0] : pixel.lowest(row.settle, row.random);
            skip_shuffle(row.random, pixel.count);
            row.row[x] = vectors.at(i, lane);
        }
    });
}

extern const FlowChoice flow_choice;
const FlowChoice flow_choice{.spread = &spread, .watch = &watch, .assign = &assign, .refine = &refine};

}  // namespace qx::QX_ISA
