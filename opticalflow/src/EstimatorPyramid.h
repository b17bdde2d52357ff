// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "opticalflow/src/Estimator.h"
#include "opticalflow/src/Pyramid.h"

namespace solvan_of {

struct FnMotionEstimateGradientPyramidParameters {
    int level_count = 4;
    int first_level = 0;
    int smoothing_passes = 5;
    bool zooms_nearest = true;
};

/// The pyramids of both images, and of a mask where there is one.
struct FnMotionEstimateMapStackHolder {
    const FnFilteredPyramid* first = nullptr;
    const FnFilteredPyramid* second = nullptr;
    const FnFilteredPyramid* mask = nullptr;

    ImagePair level(int number) const {
        return {&first->level(number), &second->level(number), mask == nullptr ? nullptr : &mask->level(number)};
    }
};

/// Makes the grid of vectors of level 0, from the smallest level down.
class FnMotionEstimateGradientPyramid : public Generator<FieldTexture>,
                                        public FnMotionEstimateMapStackHolder,
                                        public FnMotionEstimateGradientPyramidParameters,
                                        public FnMotionEstimateGradientQuantisable,
                                        public FnMotionEstimateGradientBlockParameters {
public:
    using Generator::Generator;

protected:
    void preProcess(FieldTexture& grid) override;
    void processPart(FieldTexture&, int) override {}

private:
    void estimate_level(int number, FieldTexture& grid);
    void smooth_level(int number, FieldTexture& grid);
};

/// What the estimator is told of a render.
struct EstimatorSettings {
    float smoothness, threshold;
    std::int32_t block_size;
};

/// Vectors that lead from `second` into `first`, one for each pixel of `output`, which has their size and shows the
/// blocks.
void estimate(InterruptState& state, const EstimatorSettings& settings, const FnMotionEstimateMapStackHolder& stacks,
              FieldTexture& output);

}  // namespace solvan_of
