// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/ImageZoom.h"

namespace solvan_of {

Picks FnImageZoomSampler::picks(std::int32_t count, const TexAxis& from) const {
    const float scale = static_cast<float>(count) / static_cast<float>(from.size);
    Picks picks;
    for (std::int32_t i = 0; i < count; ++i)
        picks.push_back(from.index(static_cast<std::int32_t>(static_cast<float>(i) / scale + 0.5f)));
    return picks;
}

void FnImageZoomSampler::preProcess(const FloatTexture& in, FloatTexture& out) {
    if (has_fixed_scales) return;
    scale_x = static_cast<float>(out.width()) / static_cast<float>(in.width());
    scale_y = static_cast<float>(out.height()) / static_cast<float>(in.height());
}

void FnImageZoomSampler::processPart(const FloatTexture& in, FloatTexture& out, int part) {
    for_rows(part, [&](std::int32_t y) {
        const std::int32_t line = flips_y ? target_height_ - 1 - y : y;
        const float py = static_cast<float>(line) / scale_y + 0.5f;
        float* const to = out.row(y);
        for (std::int32_t x = rectangle_.left; x < rectangle_.right; ++x) {
            const float px = static_cast<float>(x) / scale_x + 0.5f;
            to[x] = is_bilinear ? in.bilinear(px, py) : in.read(place_of(px).whole, place_of(py).whole);
        }
    });
}

}  // namespace solvan_of
