// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/BorderRows.h"
#include "opticalflow/src/Monitor.h"
#include "opticalflow/src/TweenChoices.h"

namespace solvan_of {

/// Lets each pixel between two frames choose a pair of vectors among its own, its neighbours' and those that pass it:
/// that pair which agrees best with itself, with both frames and with the neighbours.
class FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass
    : public FnImgProc1<HvVec2>,
      public FnMotionEstimateGradientTweeningParameters {
public:
    /// Bits of the pass word.
    static constexpr std::uint32_t kRestarts = 0x2, kOnlyHoles = 0x4, kOnlyOccluded = 0x8, kProgress = 0x10;

    FnMotionEstimateGradientTweenerIterateSpatialCandidatesSinglePass(
        InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters);

    /// Runs once over both results.
    void run_pass() { process(to_second); }
    std::uint32_t word() const { return word_.load(std::memory_order_relaxed); }
    void set_word(std::uint32_t word) { word_.store(word, std::memory_order_relaxed); }

protected:
    void initialise() override;
    void prePass() override;
    void processPart(int part) override;
    void finish() override;

private:
    bool is_quick() const;
    void work_quickly(int part, const PartRows& mine);
    void work_on_row(std::int32_t y, int part, const PartRows& mine, TweenChoices& choices);
    void list_candidates(std::int32_t x, std::int32_t y,
                         const FnMotionEstimateGradientChangedNeighboursMonitor& monitor, const FieldTexture& field,
                         const CandidateLists& lists, TweenChoices::List& list) const;
    bool is_visited(std::int32_t x, std::int32_t y) const;
    bool has_needed(std::int32_t x, std::int32_t y) const;

    FnMotionEstimateGradientChangedNeighboursMonitor second_monitor_, first_monitor_;
    BorderRows second_borders_, first_borders_;
    std::atomic<std::uint32_t> word_{kRestarts};
    std::uint32_t pass_number_ = 0;
};

/// All passes.
void iterate_spatial_candidates(InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters);

}  // namespace solvan_of
