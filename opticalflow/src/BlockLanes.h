// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>

#include "opticalflow/src/Estimator.h"
#include "opticalflow/src/FlowBox.h"

namespace solvan_of {

/// Working room of a part for the texts that work on blocks. Want of memory is thrown as a code.
class BlockRoom {
public:
    BlockRoom(const ImagePair& images, const FnMotionEstimateGradientBlockParameters& parameters)
        : floats_(engineBlock<float>(qx::block_scratch(std::min(parameters.block_width, images.width())))) {
        if (floats_ == nullptr) throw 4;
    }
    float* floats() const { return floats_.get(); }

private:
    EngineBlock<float> floats_;
};

/// Blocks that are worked on together, each with a vector.
class BlockBatch {
public:
    BlockBatch(const ImagePair& images, const FnMotionEstimateGradientBlockParameters& parameters, float* room)
        : images_(images), parameters_(parameters), room_(room) {}

    void clear() { count_ = 0; }
    void add(std::int32_t cell_x, std::int32_t cell_y, const HvVec2& v) {
        const auto& p = parameters_;
        left_[count_] = block_span(cell_x, p.block_width, p.overlap, images_.width()).begin;
        top_[count_] = block_span(cell_y, p.block_height, p.overlap, images_.height()).begin;
        vectors_[count_++] = v;
    }
    std::int32_t count() const { return count_; }
    bool is_full() const { return count_ == qx::kMostLanes; }
    qx::FlowBlocks blocks() const {
        return {left_,
                top_,
                vectors_,
                count_,
                std::min(parameters_.block_width, images_.width()),
                std::min(parameters_.block_height, images_.height()),
                room_};
    }
    HvVec2 centre(std::int32_t i) const {
        const qx::FlowBlocks all = blocks();
        return {static_cast<float>(left_[i]) + static_cast<float>(all.width) / 2.0f,
                static_cast<float>(top_[i]) + static_cast<float>(all.height) / 2.0f};
    }

private:
    const ImagePair& images_;
    const FnMotionEstimateGradientBlockParameters& parameters_;
    float* room_;
    std::int32_t left_[qx::kMostLanes], top_[qx::kMostLanes];
    HvVec2 vectors_[qx::kMostLanes];
    std::int32_t count_ = 0;
};

}  // namespace solvan_of
