// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Tweener.h"

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
    for_rows(part, [&](std::int32_t y) {
        const HvVec2* const row = first_->row(y);
        for (std::int32_t x = 0; x < width; ++x) {
            const HvVec2 v = row[x];
            if (!is_valid(v)) continue;
            const float dx = k * v.x, dy = k * v.y;
            const bool overflows = dx == INVALID_VECTOR;
            const std::int32_t qx = overflows ? 0 : place_of(static_cast<float>(x) + 0.5f - dx).whole;
            const std::int32_t qy = overflows ? 0 : place_of(static_cast<float>(y) + 0.5f + dy).whole;
            if (qx < 0 || qy < 0 || qx >= width || qy >= height) continue;
            const std::int32_t list = number(qx, qy);
            if (!lists.holds(list, v)) lists.append(list, number(x, y));
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
    occlusion_map->fill(has(kGuessesOcclusions) ? kNotLookedAt : kSeenInBoth);
    if (!has(kResultsAreGiven)) {
        to_second = &own_to_second_;
        to_first = &own_to_first_;
        if (!own_to_second_.allocate(width, height) || !own_to_first_.allocate(width, height)) return false;
    }
    to_second->fill({INVALID_VECTOR, INVALID_VECTOR});
    to_first->fill({INVALID_VECTOR, INVALID_VECTOR});
    first_candidates = &first_lists_;
    second_candidates = &second_lists_;
    return first_lists_.begin(*forward) && second_lists_.begin(*backward);
}

void FnMotionEstimateGradientTweener::generate_candidates() {
    for (const bool from_first : {false, true}) {
        if (stopped()) return;
        FnMotionEstimateGradientTweenerGenerateTemporalCandidates generate(state(), *this, from_first);
        generate.process(const_cast<FieldTexture*>(from_first ? forward : backward));
    }
}

}  // namespace solvan_of
