// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Tweener.h"

#include <algorithm>
#include <array>

#include "opticalflow/src/Kernels.h"
#include "opticalflow/src/Occlusion.h"
#include "opticalflow/src/SpatialCandidates.h"

namespace solvan_of {

float tween_position(double position) {
    const auto given = static_cast<float>(position);
    if (given == INVALID_VECTOR) return given;
    const float p = std::fmod(given, 1.0f);
    return std::floor((p + 0.0025f) / 0.005f) * 0.005f;
}

void FnMotionEstimateGradientTweenerGenerateTemporalCandidates::processPart(int part) {
    const float k = from_first_ ? position : 1.0f - position;
    CandidateLists& lists = from_first_ ? *first_candidates : *second_candidates;
    const auto lead = kernels().tween->lead;
    std::array<std::int32_t, 256> led;
    for_rows(part, [&](std::int32_t y) {
        const HvVec2* const row = first_->row(y);
        for (std::int32_t x = 0, count; x < width; x += count) {
            count = std::min(width - x, static_cast<std::int32_t>(led.size()));
            lead({row + x, x, y, count, width, height, k}, led.data());
            for (std::int32_t i = 0; i < count; ++i)
                if (led[i] != qx::kLeadsNowhere) lists.append_new(led[i], number(x + i, y));
        }
    });
}

void FnMotionEstimateGradientTweener::preProcess(const FloatTexture& first, const FloatTexture& second,
                                                 FloatTexture& target) {
    pass_count_ = 0;
    width = target.width();
    height = target.height();
    first_frame = &first;
    second_frame = &second;
    if (!prepare()) return state().stop(4);
    generate_candidates();
    if (has(kGuessesOcclusions) && !stopped()) guess_occlusions(state(), *this);
    if (!stopped()) iterate_spatial_candidates(state(), *this);
}

bool FnMotionEstimateGradientTweener::prepare() {
    if (!has(kMapIsGiven)) {
        occlusion_map = &own_map_;
        if (!own_map_.allocate(width, height)) return false;
    }
    if (!has(kResultsAreGiven)) {
        to_second = &own_to_second_;
        to_first = &own_to_first_;
        if (!own_to_second_.allocate(width, height) || !own_to_first_.allocate(width, height)) return false;
    }
    first_candidates = &first_lists_;
    second_candidates = &second_lists_;
    if (!first_lists_.begin(*forward) || !second_lists_.begin(*backward)) return false;
    run_parts<FnMotionEstimateGradientTweener, &FnMotionEstimateGradientTweener::empty_rows>(state(), *this);
    return true;
}

/// Side by side, since memory that the system gives anew takes longer to come than to be filled.
void FnMotionEstimateGradientTweener::empty_rows(int part) {
    const PartRows rows = rows_of_part(height, part, processorCount());
    occlusion_map->fill_rows(rows.begin, rows.end, has(kGuessesOcclusions) ? kNotLookedAt : kSeenInBoth);
    to_second->fill_rows(rows.begin, rows.end, {INVALID_VECTOR, INVALID_VECTOR});
    to_first->fill_rows(rows.begin, rows.end, {INVALID_VECTOR, INVALID_VECTOR});
    first_lists_.empty_rows(rows.begin, rows.end);
    second_lists_.empty_rows(rows.begin, rows.end);
}

void FnMotionEstimateGradientTweener::generate_candidates() {
    for (const bool from_first : {false, true}) {
        if (stopped()) return;
        FnMotionEstimateGradientTweenerGenerateTemporalCandidates generate(state(), *this, from_first);
        generate.process(const_cast<FieldTexture*>(from_first ? forward : backward));
    }
}

}  // namespace solvan_of
