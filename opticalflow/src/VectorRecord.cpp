// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/VectorRecord.h"

#include "opticalflow/src/EstimatorPyramid.h"
#include "opticalflow/src/Refinement.h"
#include "opticalflow/src/Tweener.h"

namespace solvan_of {
namespace {

/// Vectors at the second image's pixels, which lead into the first.
void vectors_into(InterruptState& state, const QX_Solvan_AlgoParams& algo, const FnFilteredPyramid& first,
                  const FnFilteredPyramid& second, FieldTexture& found) {
    const FloatTexture &to = first.level(0), &from = second.level(0);
    FieldTexture blocks;
    if (!blocks.allocate_clear(from.width(), from.height()) || !found.allocate_clear(from.width(), from.height()))
        return state.stop(4);
    FnMotionEstimateMapStackHolder stacks;
    stacks.first = &first;
    stacks.second = &second;
    const EstimatorSettings settings{algo.estimatorSmoothness, algo.convergenceError, algo.blockSize};
    estimate(state, settings, stacks, blocks);
    if (state.is_stopped()) return;
    const Balance balance = balance_of(algo.refineSmoothness);
    FnMotionEstimateGradientSmoothVectorsParameters parameters;
    parameters.smoothness_weight = balance.smoothness;
    parameters.data_weight = balance.data;
    parameters.iterations = algo.refineIterations;
    FnMotionEstimateGradientBlockParameters geometry;
    geometry.block_width = geometry.block_height = algo.blockSize;
    geometry.overlap = 2;
    refine(state, parameters, geometry, {&to, &from, nullptr}, blocks, found);
}

}  // namespace

void make_vectors(InterruptState& state, const QX_Solvan_AlgoParams& algo, SolvanVectorRecord& record) {
    const int levels = level_count(record.width, record.height);
    FnFilteredPyramidAlpha first(state, levels), second(state, levels);
    first.process(&record.firstFrame);
    if (!state.is_stopped()) second.process(&record.secondFrame);
    if (!state.is_stopped()) vectors_into(state, algo, first, second, record.backwardVectors);
    if (!state.is_stopped()) vectors_into(state, algo, second, first, record.forwardVectors);
}

void tween(InterruptState& state, const QX_Solvan_AlgoParams& algo, SolvanVectorRecord& record, float t,
           TweenedVectors& tweened) {
    const auto prepare = [&](auto& texture) {
        if (!texture.allocate(record.width, record.height)) state.stop(4);
    };
    prepare(tweened.to_second);
    prepare(tweened.to_first);
    prepare(tweened.map);
    if (state.is_stopped()) return;
    FnMotionEstimateGradientTweener tweener(state);
    FnMotionEstimateGradientTweeningParameters& p = tweener;
    const Balance balance = balance_of(algo.refineSmoothness);
    p.position = t;
    p.iterations = algo.refineIterations;
    p.smoothness_weight = balance.smoothness;
    p.data_weight = balance.data;
    p.occlusion_smoothing_rounds = 2;
    p.flags = (p.flags & ~0xCB0u) | 0x1 | kResultsAreGiven | kMapIsGiven;
    p.forward = &record.forwardVectors;
    p.backward = &record.backwardVectors;
    p.occlusion_map = &tweened.map;
    p.to_second = &tweened.to_second;
    p.to_first = &tweened.to_first;
    tweener.process(record.firstFrame, record.secondFrame, &record.firstFrame);
    tweened.parameters = p;
    tweened.parameters.first_candidates = tweened.parameters.second_candidates = nullptr;
}

}  // namespace solvan_of
