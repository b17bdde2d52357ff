// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/BorderRows.h"
#include "opticalflow/src/Estimator.h"
#include "opticalflow/src/Monitor.h"
#include "opticalflow/src/PixelChoices.h"

namespace solvan_of {

struct FnMotionEstimateGradientSmoothVectorsParameters {
    float smoothness_weight = 1, data_weight = 1;
    int iterations = 5;
    bool looks_at_neighbours = true;
};

/// Gives each pixel that vector of its own block or of a neighbouring one that its luminance fits best.
class FnMotionEstimateGradientSmoothVectorsInitialAssignment : public FnImgProc2<HvVec2>,
                                                               public FnMotionEstimateGradientBlockParameters,
                                                               public FnMotionEstimateGradientSmoothVectorsParameters {
public:
    FnMotionEstimateGradientSmoothVectorsInitialAssignment(InterruptState& state, const ImagePair& images)
        : FnImgProc2(state), images_(images) {}

protected:
    void processPart(int part) override;

private:
    bool is_quick() const;
    void assign_quickly(int part);
    void assign_row(std::int32_t y, RandomSequence& random, PixelChoices& choices);
    void add_candidates(std::int32_t x, std::int32_t y, PixelChoices::List& list) const;

    ImagePair images_;
};

/// Lets each pixel take over a neighbour's vector where that costs less: its difference of luminance, and the distance
/// from the mean of the neighbours as they are at that moment.
class FnMotionEstimateGradientSmoothVectorsSinglePass : public FnImgProc1<HvVec2>,
                                                        public FnMotionEstimateGradientSmoothVectorsParameters {
public:
    FnMotionEstimateGradientSmoothVectorsSinglePass(InterruptState& state, const ImagePair& images,
                                                    const FnMotionEstimateGradientChangedNeighboursMonitor& monitor)
        : FnImgProc1(state), images_(images), monitor_(&monitor) {}

protected:
    void prePass() override;
    void processPart(int part) override;

private:
    void refine_quickly(int part, const PartRows& mine);
    void find_choices(std::int32_t y, RandomSequence& random, PixelChoices& choices);
    template <class RowOf> void choose(std::int32_t y, const PixelChoices& choices, const RowOf& row_of);

    ImagePair images_;
    const FnMotionEstimateGradientChangedNeighboursMonitor* monitor_;
    BorderRows borders_;
};

/// Makes `output` of the field of blocks, which is the target's second texture: one vector a pixel.
void refine(InterruptState& state, const FnMotionEstimateGradientSmoothVectorsParameters& parameters,
            const FnMotionEstimateGradientBlockParameters& blocks, const ImagePair& images, FieldTexture& input,
            FieldTexture& output);

}  // namespace solvan_of
