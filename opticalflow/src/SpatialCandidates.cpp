// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/SpatialCandidates.h"

#include "opticalflow/src/CandidateRows.h"
#include "opticalflow/src/NeighbourMean.h"

namespace solvan_of {

using SinglePass = FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass;

SinglePass::FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass(
    InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters)
    : FnImgProc1(state),
      FnMotionEstimateGradientTweeningParameters(parameters),
      second_monitor_(state),
      first_monitor_(state) {}

void SinglePass::initialise() {
    if ((word() & kRestarts) != 0) {
        second_monitor_.restart();
        first_monitor_.restart();
        second_monitor_.process(to_second);
        first_monitor_.process(to_first);
    }
    set_word(word() & ~(kRestarts | kProgress));
}

void SinglePass::prePass() {
    if (!second_borders_.save(*to_second) || !first_borders_.save(*to_first)) state().stop(4);
}

// Vectors that pass a pixel count once: after that it has them, or does not want them.
void SinglePass::finish() {
    if (pass_number_ == 0) {
        first_candidates->empty_all();
        second_candidates->empty_all();
    }
    if (!stopped()) {
        second_monitor_.process(to_second);
        first_monitor_.process(to_first);
    }
    ++pass_number_;
}

void SinglePass::processPart(int part) {
    const PartRows mine = rows_of(part);
    if (mine.begin >= mine.end) return;
    if (is_quick()) return work_quickly(part, mine);
    TweenChoices choices(*this);
    for_rows(part, [&](std::int32_t y) { work_on_row(y, part, mine, choices); });
}

/// The lanes' form is for passes behind the first, which has lists of its own, over pixels that both frames show.
bool SinglePass::is_quick() const {
    return pass_number_ > 0 && (word() & (kOnlyHoles | kOnlyOccluded)) == 0 && !has(kGuessesOcclusions) &&
           !has(kBorrowsCandidates) && mask == nullptr;
}

void SinglePass::work_quickly(int part, const PartRows& mine) {
    CandidateRows second_rows(width, 1), first_rows(width, 1);
    qx::TweenRow row{.symmetry = symmetry_weight,
                     .data = data_weight * 65535.0f,
                     .smoothness = smoothness_weight,
                     .width = width,
                     .settle = &cheapest_shuffled_pair};
    const auto set = [&](qx::TweenSide& side, const FloatTexture& frame, float k, const FieldTexture& field,
                         const FnMotionEstimateGradientChangedNeighboursMonitor& monitor, const BorderRows& borders,
                         CandidateRows& rows) {
        rows.around(monitor, row.y, side.rows);
        side.image = {frame.row(0), frame.width(), frame.height()};
        side.here = frame.row(row.y);
        side.k = k;
        side.row = field.row(row.y);
        side.above = borders.row(field, part, mine, row.y - 1);
        side.below = borders.row(field, part, mine, row.y + 1);
    };
    for_rows(part, [&](std::int32_t y) {
        row.y = y;
        row.random = pass_number_;
        set(row.a, *second_frame, 1.0f - position, *to_second, second_monitor_, second_borders_, second_rows);
        set(row.b, *first_frame, position, *to_first, first_monitor_, first_borders_, first_rows);
        kernels().tween->choose(row);
    });
}

/// Whether the pixel has any vector that it needs.
bool SinglePass::has_needed(std::int32_t x, std::int32_t y) const {
    const std::int32_t s = occlusion_map->at(x, y);
    return (s != kFirstAlone && is_valid(to_second->at(x, y))) || (s != kSecondAlone && is_valid(to_first->at(x, y)));
}

bool SinglePass::is_visited(std::int32_t x, std::int32_t y) const {
    const std::uint32_t now = word();
    return ((now & kOnlyHoles) == 0 || !has_needed(x, y)) &&
           ((now & kOnlyOccluded) == 0 || occlusion_map->at(x, y) != kSeenInBoth);
}

void SinglePass::work_on_row(std::int32_t y, int part, const PartRows& mine, TweenChoices& choices) {
    const auto mean = [&](const FieldTexture& field, const BorderRows& borders, std::int32_t x) {
        const auto row_of = [&](std::int32_t row) { return borders.row(field, part, mine, row); };
        return qx::mean_around({row_of(y - 1), row_of(y), row_of(y + 1)}, x, width);
    };
    const auto choose_all = [&] {
        choices.sample();
        for (const TweenChoices::Pixel& pixel : choices) {
            const std::int32_t x = pixel.x;
            const bool is_settled = pixel.has_one_pair();
            choices.choose(pixel, is_settled ? HvVec2{} : mean(*to_second, second_borders_, x),
                           is_settled ? HvVec2{} : mean(*to_first, first_borders_, x), to_second->at(x, y),
                           to_first->at(x, y));
            if ((word() & kOnlyHoles) != 0 && has_needed(x, y)) word_.fetch_or(kProgress, std::memory_order_relaxed);
        }
        choices.clear();
    };
    RandomSequence random(pass_number_);
    for (std::int32_t x = 0; x < width; ++x) {
        if (!is_visited(x, y)) continue;
        list_candidates(x, y, second_monitor_, *to_second, *first_candidates, choices.list_a);
        list_candidates(x, y, first_monitor_, *to_first, *second_candidates, choices.list_b);
        choices.add(x, y, occlusion_map->at(x, y), random);
        if (choices.is_full()) choose_all();
    }
    choose_all();
}

/// What has changed around, the pixel's own, and what passes it. In the first pass nothing is there yet but the last.
void SinglePass::list_candidates(std::int32_t x, std::int32_t y,
                                 const FnMotionEstimateGradientChangedNeighboursMonitor& monitor,
                                 const FieldTexture& field, const CandidateLists& lists,
                                 TweenChoices::List& list) const {
    list.clear();
    if (pass_number_ > 0) {
        monitor.add_changed_neighbours(x, y, list);
        list.add(field.at(x, y));
    } else {
        const auto around = [](std::int32_t at, std::int32_t size) {
            return 1 + (at > 0 ? 1 : 0) + (at + 1 < size ? 1 : 0);
        };
        list.leave_out(around(x, width) * around(y, height));
    }
    lists.add_to(number(x, y), list);
}

void iterate_spatial_candidates(InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters) {
    constexpr int kMostPasses = 101;
    SinglePass pass(state, parameters);
    for (int k = 0; k < parameters.iterations && !state.is_stopped(); ++k) pass.run_pass();
    if (!parameters.has(kGuessesOcclusions)) return;
    const auto fill_holes = [&] {
        pass.set_word(pass.word() | SinglePass::kRestarts | SinglePass::kOnlyHoles);
        int passes = 0;
        do {
            pass.run_pass();
            ++passes;
        } while (passes < kMostPasses && (pass.word() & SinglePass::kProgress) != 0 && !state.is_stopped());
        return passes;
    };
    const int passes = fill_holes();
    pass.set_word((pass.word() | SinglePass::kRestarts | SinglePass::kOnlyOccluded) & ~SinglePass::kOnlyHoles);
    for (int k = 0; k < passes && !state.is_stopped(); ++k) pass.run_pass();
    pass.set_word(pass.word() & ~SinglePass::kOnlyOccluded);
    fill_holes();
}

}  // namespace solvan_of
