// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/ImgProc.h"
#include "opticalflow/src/TweeningParameters.h"

namespace solvan_of {

/// Work on the map of occlusion states in place, in the order of pixels, on one thread.
class OcclusionStage : public FnImgProc1<std::int32_t>, public FnMotionEstimateGradientTweeningParameters {
public:
    OcclusionStage(InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters)
        : FnImgProc1(state), FnMotionEstimateGradientTweeningParameters(parameters) {
        set_parallel(false);
    }
    bool has_changed = false;

protected:
    std::int32_t* state_at(std::int32_t x, std::int32_t y) const {
        return x < 0 || y < 0 || x >= width_ || y >= height_ ? nullptr : &first_->at(x, y);
    }
};

/// States by which candidates a pixel has; what stays unknown, by the votes of its neighbours.
class FnMotionEstimateGradientTweenerGuessOcclusion : public OcclusionStage {
public:
    using OcclusionStage::OcclusionStage;

protected:
    void processPart(int part) override;

private:
    std::int32_t guess(std::int32_t x, std::int32_t y) const;
    std::int32_t poll_neighbours(std::int32_t x, std::int32_t y, std::int32_t (&votes)[8]) const;
};

/// States that few of the nine around a pixel share become those that more have.
class FnMotionEstimateGradientTweenerGuessOcclusionSmoother : public OcclusionStage {
public:
    using OcclusionStage::OcclusionStage;

protected:
    void processPart(int part) override;
};

/// Ties a vector that reaches an occluded pixel to that which is found at its far end.
class FnMotionEstimateGradientTweenerGuessOcclusionBlanker : public OcclusionStage {
public:
    using OcclusionStage::OcclusionStage;

protected:
    void processPart(int part) override;

private:
    void tie(std::int32_t pixel, std::int32_t x, std::int32_t y, CandidateLists& own, CandidateLists& other);
};

/// All three stages, as often as they change something within their bounds.
void guess_occlusions(InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters);

}  // namespace solvan_of
