// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BlockSmoother.h"

#include <cmath>

#include "opticalflow/src/Kernels.h"
#include "opticalflow/src/NeighbourMean.h"

namespace solvan_of {

void FnMotionEstimateGradientSmooth::initialise() {
    if (!caches_costs || costs_.has_pixels()) return;
    if (!allocate_like(costs_, *first_)) return state().stop(4);
    costs_.fill(INVALID_VECTOR);
}

// Candidates and means come from what the monitor saved, so that no cell sees what its neighbours take in this pass.
void FnMotionEstimateGradientSmooth::processPart(int part) {
    const EngineBlock<Choice> choices = engineBlock<Choice>(static_cast<std::size_t>(width_));
    if (choices == nullptr) throw 4;
    const BlockRoom room(images_, *this);
    RandomSequence random(0);
    for_rows(part, [&](std::int32_t y) {
        Choice* end = choices.get();
        for (std::int32_t x = 0; x < width_; ++x)
            if (find_choice(x, y, random, *end)) ++end;
        measure(y, choices.get(), end, room.floats());
        for (const Choice* choice = choices.get(); choice != end; ++choice) choose(y, *choice);
    });
}

/// @return false where there is nothing to choose from; one vector alone is taken at once
bool FnMotionEstimateGradientSmooth::find_choice(std::int32_t x, std::int32_t y, RandomSequence& random,
                                                 Choice& choice) {
    auto& list = choice.list;
    list.clear();
    HvVec2& own = first_->at(x, y);
    list.add(own);
    monitor_->add_changed_neighbours(x, y, list);
    if (list.count() == 1) return false;
    list.filter();
    list.shuffle(random);
    choice.x = x;
    if (list.count() > 1) return true;
    if (list.count() == 1) {
        if (caches_costs && !equal(list[0], own)) costs_.at(x, y) = INVALID_VECTOR;
        own = list[0];
    }
    return false;
}

void FnMotionEstimateGradientSmooth::measure(std::int32_t y, Choice* begin, Choice* end, float* room) {
    BlockBatch batch(images_, *this, room);
    float* to[qx::kMostLanes];
    const auto flush = [&] {
        float errors[qx::kMostLanes];
        kernels().solve->errors(images_.images(), batch.blocks(), errors);
        for (std::int32_t i = 0; i < batch.count(); ++i) *to[i] = errors[i];
        batch.clear();
    };
    for (Choice* choice = begin; choice != end; ++choice) {
        const float known = caches_costs ? costs_.at(choice->x, y) : INVALID_VECTOR;
        for (int i = 0; i < choice->list.count(); ++i) {
            choice->errors[i] = known;
            if (known != INVALID_VECTOR && equal(choice->list[i], first_->at(choice->x, y))) continue;
            to[batch.count()] = choice->errors + i;
            batch.add(choice->x, y, choice->list[i]);
            if (batch.is_full()) flush();
        }
    }
    if (batch.count() > 0) flush();
}

float FnMotionEstimateGradientSmooth::smoothness_cost(const HvVec2& v, const HvVec2& mean) const {
    return distance(v, mean) / 400.0f / 255.0f * smoothness_weight;
}

// What is kept of the chosen vector has its weight, and is weighted again when it is used again: kept.
void FnMotionEstimateGradientSmooth::choose(std::int32_t y, const Choice& choice) {
    const FieldTexture& saved = monitor_->saved();
    const auto row_of = [&](std::int32_t row) { return row < 0 || row >= height_ ? nullptr : saved.row(row); };
    const HvVec2 mean = qx::mean_around({row_of(y - 1), row_of(y), row_of(y + 1)}, choice.x, width_);
    float best = INVALID_VECTOR, best_data = INVALID_VECTOR;
    int chosen = -1;
    for (int i = 0; i < choice.list.count() && best != 0.0f; ++i) {
        const float smoothness = smoothness_cost(choice.list[i], mean);
        if (smoothness >= best) continue;
        const float error = choice.errors[i];
        const float data = error == INVALID_VECTOR ? 2.0f * data_weight : error * data_weight;
        const float sum = data + smoothness, total = sum < 1e-06f ? 0.0f : sum;
        if (total < best) {
            best = total;
            best_data = data;
            chosen = i;
        }
    }
    if (caches_costs) costs_.at(choice.x, y) = best_data;
    if (chosen >= 0) first_->at(choice.x, y) = choice.list[chosen];
}

}  // namespace solvan_of
