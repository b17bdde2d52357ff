// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/BlockLanes.h"
#include "opticalflow/src/Monitor.h"

namespace solvan_of {

/// Lets each block take over a neighbour's vector where that costs less: the mean difference of the block, and the
/// distance from the mean of the neighbours.
class FnMotionEstimateGradientSmooth : public FnImgProc1<HvVec2>, public FnMotionEstimateGradientBlockParameters {
public:
    FnMotionEstimateGradientSmooth(InterruptState& state, const ImagePair& images,
                                   const FnMotionEstimateGradientChangedNeighboursMonitor& monitor)
        : FnImgProc1(state), images_(images), monitor_(&monitor) {}

    bool caches_costs = true;  ///< what a block's own vector costs is kept from pass to pass

protected:
    void initialise() override;
    void processPart(int part) override;

private:
    static constexpr int kMostChoices = 9;
    struct Choice {
        Candidates<kMostChoices> list;
        float errors[kMostChoices];
        std::int32_t x;
    };

    bool find_choice(std::int32_t x, std::int32_t y, RandomSequence& random, Choice& choice);
    void measure(std::int32_t y, Choice* begin, Choice* end, float* room);
    void choose(std::int32_t y, const Choice& choice);
    float smoothness_cost(const HvVec2& v, const HvVec2& mean) const;

    ImagePair images_;
    const FnMotionEstimateGradientChangedNeighboursMonitor* monitor_;
    FloatTexture costs_;  ///< INVALID_VECTOR where none is known
};

}  // namespace solvan_of
