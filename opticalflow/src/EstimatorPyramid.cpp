// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/EstimatorPyramid.h"

#include "opticalflow/src/BlockSmoother.h"
#include "opticalflow/src/ImageZoom.h"

namespace solvan_of {
namespace {

constexpr int kMostHealingPasses = 100;  // beyond the ordinary ones, while vectors are missing
constexpr std::int32_t kOverlap = 2;

}  // namespace

void FnMotionEstimateGradientPyramid::preProcess(FieldTexture& grid) {
    pass_count_ = 0;
    std::vector<std::unique_ptr<FieldTexture>> grids(static_cast<std::size_t>(level_count));
    const auto grid_of = [&](int number) -> FieldTexture& {
        return number == 0 ? grid : *grids[static_cast<std::size_t>(number)];
    };
    for (int number = 1; number < level_count; ++number) {
        const ImagePair images = level(number);
        auto made = std::make_unique<FieldTexture>();
        if (!made->allocate_clear(block_count(images.width(), block_width, overlap),
                                  block_count(images.height(), block_height, overlap)))
            return state().stop(4);
        made->setAddressing(Addressing::clamp, Addressing::clamp);
        grids[static_cast<std::size_t>(number)] = std::move(made);
    }
    for (int number = level_count - 1; number >= first_level && !interrupted(0); --number) {
        if (number == level_count - 1) grid_of(number).fill({0, 0});
        estimate_level(number, grid_of(number));
        if (number == 0 || stopped()) continue;
        ImageZoomerGP zoom(state());
        zoom.is_nearest = zooms_nearest;
        zoom.scales_values = true;
        zoom.process(grid_of(number), &grid_of(number - 1));
    }
}

void FnMotionEstimateGradientPyramid::estimate_level(int number, FieldTexture& grid) {
    FnMotionEstimateGradient estimator(state(), level(number));
    static_cast<FnMotionEstimateGradientBlockParameters&>(estimator) = *this;
    estimator.process(&grid);
    grid.setAddressing(Addressing::mirror, Addressing::mirror);
    if (stopped()) return;
    FnMotionEstimateGradientQuantise quantise(state());
    quantise.quantisation_step = std::ldexp(quantisation_step, -number);
    quantise.process(&grid);
    if (!stopped()) smooth_level(number, grid);
}

void FnMotionEstimateGradientPyramid::smooth_level(int number, FieldTexture& grid) {
    FnMotionEstimateGradientChangedNeighboursMonitor monitor(state());
    FnMotionEstimateGradientSmooth smooth(state(), level(number), monitor);
    static_cast<FnMotionEstimateGradientBlockParameters&>(smooth) = *this;
    monitor.process(&grid);
    const auto pass = [&] {
        smooth.process(&grid);
        monitor.process(&grid);
    };
    for (int k = 0; k < smoothing_passes && !stopped(); ++k) pass();
    for (int k = 0; k < kMostHealingPasses && monitor.saw_invalid() && !stopped(); ++k) pass();
    if (monitor.saw_invalid() && !stopped()) grid.fill({0, 0});
}

void estimate(InterruptState& state, const EstimatorSettings& settings, const FnMotionEstimateMapStackHolder& stacks,
              FieldTexture& output) {
    FnMotionEstimateGradientPyramid pyramid(state);
    static_cast<FnMotionEstimateMapStackHolder&>(pyramid) = stacks;
    pyramid.level_count = stacks.second->levels();
    pyramid.block_width = pyramid.block_height = settings.block_size;
    pyramid.overlap = kOverlap;
    const Balance balance = balance_of(settings.smoothness);
    pyramid.data_weight = balance.data;
    pyramid.smoothness_weight = balance.smoothness;
    pyramid.error_threshold = settings.threshold;
    FieldTexture grid;
    if (!grid.allocate_clear(block_count(output.width(), settings.block_size, kOverlap),
                             block_count(output.height(), settings.block_size, kOverlap)))
        return state.stop(4);
    grid.setAddressing(Addressing::clamp, Addressing::clamp);
    pyramid.process(&grid);
    if (state.is_stopped()) return;
    ImageZoomerGP zoom(state);
    zoom.is_nearest = true;
    zoom.process(grid, &output);
}

}  // namespace solvan_of
