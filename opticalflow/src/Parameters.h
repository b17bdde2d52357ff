// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace solvan_of {

/// Bases that stages have in common, so that one hands its settings to the next by copying.
struct FnMotionEstimateGradientQuantisable {
    float quantisation_step = 0.1f;  ///< of level 0, in pixels; each level above has half of it
};

struct FnMotionEstimateGradientBlockParameters {
    std::int32_t block_width = 6, block_height = 6;
    std::int32_t overlap = 0;  ///< pixels that neighbouring blocks share
    float data_weight = 1, smoothness_weight = 1;
    float error_threshold = 0.01f;  ///< a mean error below it is none
};

/// What of an axis a block covers.
struct BlockSpan {
    std::int32_t begin, size;
};
/// The block with this number of an axis. One that reaches beyond the image is moved inwards, as far as there is room.
inline BlockSpan block_span(std::int32_t number, std::int32_t block, std::int32_t overlap, std::int32_t image) {
    std::int32_t begin = (block - overlap) * number, end = begin + block;
    if (end > image) {
        begin = std::max(0, begin - (end - image));
        end = image;
    }
    return {begin, end - begin};
}
/// How many blocks an axis takes.
inline std::int32_t block_count(std::int32_t image, std::int32_t block, std::int32_t overlap) {
    const float quotient = static_cast<float>(image - overlap) / static_cast<float>(block - overlap);
    return std::max(1, static_cast<std::int32_t>(std::ceil(quotient)));
}

/// A signed balance between what the pixels tell and smoothness: below 0 the pixels weigh more.
struct Balance {
    float data, smoothness;
};
inline Balance balance_of(float p) { return p < 0.0f ? Balance{1.0f - p, 1.0f} : Balance{1.0f, p + 1.0f}; }

}  // namespace solvan_of
