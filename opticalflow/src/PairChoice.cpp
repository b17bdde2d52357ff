// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/PairChoice.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "opticalflow/src/PixelChoices.h"

namespace solvan_of {
namespace {

/// In which order the entries of both lists are looked at.
struct Orders {
    std::int32_t a[PairChoice::kMost], b[PairChoice::kMost];

    explicit Orders(const PairChoice& choice) {
        std::iota(a, a + choice.count_a, 0);
        std::iota(b, b + choice.count_b, 0);
    }
    void shuffle(const PairChoice& choice) {
        RandomSequence random(choice.random);
        if (!choice.borrows_a) shuffle_fully(a, choice.count_a, random);
        if (!choice.borrows_b) shuffle_fully(b, choice.count_b, random);
        if (choice.borrows_a) std::copy_n(b, choice.count_b, a);
        if (choice.borrows_b) std::copy_n(a, choice.count_a, b);
    }
};

ChosenPair cheapest_in_order(const PairChoice& c, const Orders& orders) {
    float apart_b[PairChoice::kMost];
    for (std::int32_t k = 0; k < c.count_b; ++k) apart_b[k] = 8.0f * distance(c.mean_b, c.b[k]);
    ChosenPair best;
    float lowest = kMostPairCost;
    for (std::int32_t i = 0; i < c.count_a; ++i) {
        const std::int32_t k_a = orders.a[i];
        const HvVec2 a = c.a[k_a];
        const float apart_a = 8.0f * distance(c.mean_a, a);
        for (std::int32_t j = 0; j < c.count_b; ++j) {
            const std::int32_t k_b = orders.b[j];
            const HvVec2 b = c.b[k_b];
            const float cost = (std::fabs(a.x + b.x) + std::fabs(a.y + b.y)) * c.symmetry +
                               std::fabs(c.shown_b[k_b] - c.shown_a[k_a]) * c.data +
                               (apart_b[k_b] + apart_a) * c.smoothness;
            if (cost < lowest) {
                lowest = cost;
                best = {k_a, k_b, false};
            } else if (cost == lowest && best.a >= 0) {
                best.is_tied = true;
            }
        }
    }
    return best;
}

}  // namespace

ChosenPair cheapest_pair(const PairChoice& choice) { return cheapest_in_order(choice, Orders(choice)); }

ChosenPair cheapest_shuffled_pair(const PairChoice& choice) {
    Orders orders(choice);
    orders.shuffle(choice);
    return cheapest_in_order(choice, orders);
}

}  // namespace solvan_of
