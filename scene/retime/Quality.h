// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include "opticalflow/src/QX_SolvanParams.h"

/// What motion is followed with, and how a picture between two others is made.
namespace qx::scene {

enum class BetweenMethod { nearest, blend, flow };
inline constexpr const char* kBetweenMethodWords[] = {"nearest", "blend", "flow"};

enum class FlowQuality { draft, good, best };
inline constexpr const char* kFlowQualityWords[] = {"draft", "good", "best"};
inline constexpr const char* kFlowFilterWords[] = {"bilinear", "sinc"};

/// A quality, and what is to be otherwise.
struct FlowChoices {
    FlowQuality quality = FlowQuality::good;
    std::optional<double> detail, smoothness, refine_smoothness, convergence;
    std::optional<int> iterations, block, filter;
};

/// The record that choices mean, with fractions.
QX_Solvan_AlgoParams flow_params(const FlowChoices& choices);

/// With more detail where the field would have a side of no pixels.
QX_Solvan_AlgoParams fitted(QX_Solvan_AlgoParams params, int width, int height);

/// With the percentages that QX_AdvancedFrameBlending takes: the least ones that become no less than the fractions, so
/// that a field has the size that was meant; or the greatest ones where these are beyond the range.
QX_Solvan_AlgoParams in_percent(QX_Solvan_AlgoParams params);

}  // namespace qx::scene
