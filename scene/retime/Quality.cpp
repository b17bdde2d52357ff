// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/Quality.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qx::scene {
namespace {

/// What QX_AdvancedFrameBlending multiplies percentages with.
constexpr float kHundredth = 0.01f;

template <class Real> Real percentage_of(Real fraction, Real greatest) {
    constexpr Real up = std::numeric_limits<Real>::infinity();
    const auto fraction_of = [](Real percentage) { return percentage * static_cast<Real>(kHundredth); };
    Real percentage = fraction / static_cast<Real>(kHundredth);
    while (fraction_of(percentage) < fraction) percentage = std::nextafter(percentage, up);
    while (percentage > 0 && fraction_of(std::nextafter(percentage, -up)) >= fraction)
        percentage = std::nextafter(percentage, -up);
    while (fraction_of(percentage) > greatest) percentage = std::nextafter(percentage, -up);
    return percentage;
}

int side_of_field(int pixels, float detail) { return static_cast<int>(static_cast<float>(pixels) * detail); }

}  // namespace

QX_Solvan_AlgoParams flow_params(const FlowChoices& choices) {
    QX_Solvan_AlgoParams params;
    params.estimatorSmoothness = 30;
    params.vectorDetail = choices.quality == FlowQuality::draft ? 0.25f : 0.5f;
    if (choices.quality == FlowQuality::best) {
        params.convergenceError = 0.001f;
        params.highQualityFilter = 1;
    }
    const auto take = [](const auto& choice, auto& to) {
        if (choice) to = static_cast<std::remove_reference_t<decltype(to)>>(*choice);
    };
    take(choices.detail, params.vectorDetail);
    take(choices.smoothness, params.estimatorSmoothness);
    take(choices.refine_smoothness, params.refineSmoothness);
    take(choices.iterations, params.refineIterations);
    take(choices.convergence, params.convergenceError);
    take(choices.filter, params.highQualityFilter);
    take(choices.block, params.blockSize);
    return params;
}

QX_Solvan_AlgoParams fitted(QX_Solvan_AlgoParams params, int width, int height) {
    const int side = std::min(width, height);
    if (side_of_field(side, params.vectorDetail) > 0) return params;
    params.vectorDetail = 1 / static_cast<float>(side);
    while (side_of_field(side, params.vectorDetail) == 0)
        params.vectorDetail = std::nextafter(params.vectorDetail, 1.0f);
    return params;
}

QX_Solvan_AlgoParams in_percent(QX_Solvan_AlgoParams params) {
    params.vectorDetail = percentage_of(params.vectorDetail, 1.0f);
    params.convergenceError = percentage_of(params.convergenceError, 0.1f);
    for (double* weight : {&params.lumaRed, &params.lumaGreen, &params.lumaBlue}) *weight = percentage_of(*weight, 1.0);
    return params;
}

}  // namespace qx::scene
