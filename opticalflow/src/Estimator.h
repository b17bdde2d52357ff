// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/FlowSolve.h"
#include "opticalflow/src/ImgProc.h"
#include "opticalflow/src/Parameters.h"

namespace solvan_of {

/// A pair of images of equal size, and what of them does not count.
struct ImagePair {
    const FloatTexture* first = nullptr;   ///< sampled at displaced places
    const FloatTexture* second = nullptr;  ///< at its own pixels
    const FloatTexture* mask = nullptr;    ///< or null

    std::int32_t width() const { return second->width(); }
    std::int32_t height() const { return second->height(); }
    qx::FlowImages images() const {
        return {first->row(0), second->row(0), mask == nullptr ? nullptr : mask->row(0), width(), height()};
    }
};

/// Optional results for tools, each a texture of the grid's size or null.
struct FnMotionEstimateGradientInfoParameters {
    FieldTexture* centres = nullptr;
    FloatTexture* errors = nullptr;
    FloatTexture* motion = nullptr;  ///< length of the vector
};

/// Leads each block's vector from the first image into the second by their gradients, in up to ten steps.
class FnMotionEstimateGradient : public FnImgProc1<HvVec2>,
                                 public FnMotionEstimateGradientBlockParameters,
                                 public FnMotionEstimateGradientInfoParameters {
public:
    FnMotionEstimateGradient(InterruptState& state, const ImagePair& images) : FnImgProc1(state), images_(images) {}

protected:
    void initialise() override;
    void processPart(int part) override;
    void finish() override { cells_.reset(); }

private:
    void step(std::int32_t* cells, std::int32_t& count, float* room);
    void tell(int part);

    static constexpr int kMostSteps = 10;
    ImagePair images_;
    EngineBlock<std::int32_t> cells_;  ///< numbers of cells that still move, part by part
};

/// The grid of blocks in place: vectors become multiples of a step.
class FnMotionEstimateGradientQuantise : public FnImgProc1<HvVec2>, public FnMotionEstimateGradientQuantisable {
public:
    using FnImgProc1::FnImgProc1;

protected:
    void processPart(int part) override;
};
float quantised(float component, float step);

}  // namespace solvan_of
