// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

/// Words that options and scenes have for the numbers of a transfer.
namespace qx::tool {

inline const std::vector<std::string> kMaskKindWords = {"alpha", "inverse", "luma", "inverse-luma"};
inline const std::vector<std::string> kFieldWords = {"all", "even", "odd"};
inline const std::vector<std::string> kQualityWords = {"draft", "bilinear", "bicubic"};
inline const std::vector<std::string> kDepthWords = {"8", "16", "32"};  ///< the depth is 8 << number
inline constexpr double kLeastGamma = 0.01, kMostGamma = 100;

}  // namespace qx::tool
