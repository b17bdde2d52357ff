// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/Imager.h"
#include "opticalflow/src/ImgProc.h"
#include "opticalflow/src/TweeningParameters.h"

namespace solvan_of {

/// Sends each vector of a source field to the pixel that it passes at time t. One thread, since two rows may meet
/// there.
class FnMotionEstimateGradientTweenerGenerateTemporalCandidates : public FnImgProc1<HvVec2>,
                                                                  public FnMotionEstimateGradientTweeningParameters {
public:
    FnMotionEstimateGradientTweenerGenerateTemporalCandidates(
        InterruptState& state, const FnMotionEstimateGradientTweeningParameters& parameters, bool from_first)
        : FnImgProc1(state), FnMotionEstimateGradientTweeningParameters(parameters), from_first_(from_first) {
        set_parallel(false);
    }

protected:
    void processPart(int part) override;

private:
    bool from_first_;  ///< the field at frame 0, else that at frame 1
};

/// For each pixel between two frames a vector to each of them.
class FnMotionEstimateGradientTweener : public Combiner<FloatTexture, FloatTexture, FloatTexture>,
                                        public FnMotionEstimateGradientTweeningParameters {
public:
    using Combiner::Combiner;

protected:
    void preProcess(const FloatTexture& first, const FloatTexture& second, FloatTexture& target) override;
    void processPart(const FloatTexture&, const FloatTexture&, FloatTexture&, int) override {}

private:
    bool prepare();
    void empty_rows(int part);
    void generate_candidates();

    CandidateLists first_lists_, second_lists_;
    FieldTexture own_to_second_, own_to_first_;
    IntTexture own_map_;
};

}  // namespace solvan_of
