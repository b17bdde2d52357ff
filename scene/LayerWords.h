// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Words and bounds that options and scenes have for the numbers of a transfer.
namespace qx::scene {

inline constexpr const char* kMaskKindWords[] = {"alpha", "inverse", "luma", "inverse-luma"};
inline constexpr const char* kFieldWords[] = {"all", "even", "odd"};
inline constexpr const char* kQualityWords[] = {"draft", "bilinear", "bicubic"};
inline constexpr const char* kDepthWords[] = {"8", "16", "32"};  ///< the depth is 8 << number
inline constexpr const char* kDissolveIsIdle = "mode dissolve changes nothing at depth 32";
inline constexpr const char* kMaskCountsByLuma =
    "has no alpha and counts by its luma; the kind alpha takes it as opaque";
inline constexpr int kFarthest = 1'000'000;  ///< positions beyond it could not touch a picture, and sums would wrap
inline constexpr const char* kLinearWords[] = {"profile"};  ///< in place of an exponent
inline constexpr const char* kOfBackground = "background";  ///< the space of the background's picture
inline constexpr const char* kNeedsSpace = "needs a space to work in";
inline constexpr double kLeastGamma = 0.01, kMostGamma = 100;

}  // namespace qx::scene
