// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/Pyramid.h"

#include <algorithm>

#include "opticalflow/src/BlurGeneralGauss.h"
#include "opticalflow/src/ImageZoom.h"
#include "opticalflow/src/KernelSampler.h"

namespace solvan_of {

int level_count(std::int32_t width, std::int32_t height) {
    int levels = 1;
    for (;; ++levels) {
        width /= 2;
        if (width <= 7) return levels;
        height /= 2;
        if (height <= 7) return levels;
    }
}

void FnFilteredPyramid::preProcess(FloatTexture& base) {
    base_ = &base;
    pass_count_ = 0;
    for (int number = 1; number < levels_ && !stopped(); ++number) {
        if (!add_level(level(number - 1))) return state().stop(4);
        postLevel(number);
    }
}

bool FnFilteredPyramid::add_level(const FloatTexture& above) {
    auto half = std::make_unique<FloatTexture>();
    if (!half->allocate(above.width() / 2, above.height() / 2)) return false;
    half->setAddressing(above.x.mode, above.y.mode);
    half->background = above.background;
    smooth_and_halve(above, *half);
    made_.push_back(std::move(half));
    return true;
}

void FnFilteredPyramid::smooth_and_halve(const FloatTexture& above, FloatTexture& half) {
    FnImageZoomSampler zoom(state());
    if (smooths_by_kernel) {
        FloatTexture smoothed;
        if (!allocate_like(smoothed, above)) return state().stop(4);
        KernelSampler kernel(state(), gaussian_taps(filter_length, filter_variance));
        kernel.process(above, &smoothed);
        zoom.process(smoothed, &half);
        return;
    }
    BlurGeneralGauss blur(state());
    blur.radius_x = blur.radius_y = static_cast<float>(filter_length / 3);
    blur.columns = zoom.picks(half.width(), above.x);
    blur.rows = zoom.picks(half.height(), above.y);
    blur.process(TextureRows(above), &half);
}

}  // namespace solvan_of
