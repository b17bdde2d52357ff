// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Occlusion.h"

namespace solvan_of {
namespace {

constexpr int kMoreGuesses = 10;

}  // namespace

void FnMotionEstimateGradientTweenerGuessOcclusion::processPart(int part) {
    std::int32_t votes[8] = {};  // of the eight places around a pixel, the last that was cast there; 0 is none
    for_rows(part, [&](std::int32_t y) {
        for (std::int32_t x = 0; x < width_; ++x) {
            std::int32_t& s = first_->at(x, y);
            if (s == kUnknown) {
                s = poll_neighbours(x, y, votes);
            } else if (s > kUnknown) {
                s = guess(x, y);
            } else {
                continue;
            }
            has_changed = true;
        }
    });
}

std::int32_t FnMotionEstimateGradientTweenerGuessOcclusion::guess(std::int32_t x, std::int32_t y) const {
    if (!has(kGuessesOcclusions)) return kSeenInBoth;
    const bool a = first_candidates->is_empty(number(x, y)), b = second_candidates->is_empty(number(x, y));
    return a && b ? kUnknown : a ? kSecondAlone : b ? kFirstAlone : kSeenInBoth;
}

// A neighbour that is unknown casts the vote that was cast last at its place, for whatever pixel: kept.
std::int32_t FnMotionEstimateGradientTweenerGuessOcclusion::poll_neighbours(std::int32_t x, std::int32_t y,
                                                                            std::int32_t (&votes)[8]) const {
    static constexpr std::int32_t kPlaces[8][2] = {{-1, 1}, {-1, 0}, {-1, -1}, {0, 1},
                                                   {0, -1}, {1, 1},  {1, 0},   {1, -1}};
    int first = 0, second = 0;
    for (int k = 0; k < 8; ++k) {
        const std::int32_t* const s = state_at(x + kPlaces[k][0], y + kPlaces[k][1]);
        if (s == nullptr) continue;
        if (*s >= kSeenInBoth && *s <= kSecondAlone) votes[k] = *s;
        first += votes[k] == kFirstAlone;
        second += votes[k] == kSecondAlone;
    }
    return first > second ? kFirstAlone : second > first ? kSecondAlone : kUnknown;
}

void FnMotionEstimateGradientTweenerGuessOcclusionSmoother::processPart(int part) {
    for_rows(part, [&](std::int32_t y) {
        for (std::int32_t x = 0; x < width_; ++x) {
            int ones = 0, twos = 0, zeros = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const std::int32_t* const s = state_at(x + dx, y + dy);
                    if (s != nullptr) ++(*s == kFirstAlone ? ones : *s == kSecondAlone ? twos : zeros);
                }
            }
            std::int32_t& s = first_->at(x, y);
            const std::int32_t before = s;
            if (s == kSeenInBoth) {
                s = ones > zeros && ones > twos ? kFirstAlone : twos > zeros && twos > ones ? kSecondAlone : s;
            } else if (s == kFirstAlone) {
                s = ones < zeros ? kSeenInBoth : ones < twos ? kSecondAlone : s;
            } else {
                s = zeros > twos ? kSeenInBoth : ones > twos ? kFirstAlone : s;
            }
            has_changed |= s != before;
        }
    });
}

void FnMotionEstimateGradientTweenerGuessOcclusionBlanker::processPart(int part) {
    for_rows(part, [&](std::int32_t y) {
        for (std::int32_t x = 0; x < width_; ++x) {
            const std::int32_t s = first_->at(x, y);
            if (s == kFirstAlone) tie(number(x, y), x, y, *first_candidates, *second_candidates);
            if (s == kSecondAlone) tie(number(x, y), x, y, *second_candidates, *first_candidates);
        }
    });
}

void FnMotionEstimateGradientTweenerGuessOcclusionBlanker::tie(std::int32_t pixel, std::int32_t x, std::int32_t y,
                                                               CandidateLists& own, CandidateLists& other) {
    if (own.is_empty(pixel)) return;
    const HvVec2 v = own.vector(own.first(pixel));
    own.empty(pixel);
    const auto along = [](std::int32_t at, float d) {
        return place_of(static_cast<float>(at) + 0.5f + d + 0.5f).whole;
    };
    const std::int32_t qx = is_valid(v) ? along(x, -v.x) : 0, qy = is_valid(v) ? along(y, v.y) : 0;
    if (state_at(qx, qy) == nullptr || other.is_empty(number(qx, qy))) return;
    const std::int32_t entry = other.first(number(qx, qy));
    other.empty(pixel);
    if (is_valid(other.vector(entry))) other.become(pixel, entry);
}

void guess_occlusions(InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters) {
    FnMotionEstimateGradientTweenerGuessOcclusion guess(state, parameters);
    FnMotionEstimateGradientTweenerGuessOcclusionSmoother smoother(state, parameters);
    const auto run = [&](OcclusionStage& stage, int more) {
        do {
            stage.has_changed = false;
            stage.process(parameters.occlusion_map);
        } while (stage.has_changed && more-- > 0 && !state.is_stopped());
    };
    run(guess, kMoreGuesses);
    run(smoother, parameters.occlusion_smoothing_rounds - 1);
    FnMotionEstimateGradientTweenerGuessOcclusionBlanker(state, parameters).process(parameters.occlusion_map);
}

}  // namespace solvan_of
