// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/BlurGeneralGauss.h"
#include "opticalflow/src/GeneralSampler.h"

namespace solvan_of {

/// An image at another size, walked by the target's pixels.
class FnImageZoomSampler : public Sampler<FloatTexture, FloatTexture> {
public:
    using Sampler::Sampler;

    bool flips_y = false;
    bool has_fixed_scales = false;
    bool is_bilinear = false;
    float scale_x = 1, scale_y = 1;  ///< target pixels a source pixel

    /// The source's pixels that the nearest form takes along an axis.
    Picks picks(std::int32_t count, const TexAxis& from) const;

protected:
    void preProcess(const FloatTexture& in, FloatTexture& out) override;
    void processPart(const FloatTexture& in, FloatTexture& out, int part) override;
};

/// A texture enlarged: the nearest pixel or a bilinear read at (x * scale, y * scale), which are source pixels a target
/// pixel, and the sizes' quotients unless they are given.
template <class Pixel> class ImageZoomerBase : public GeneralSamplerPos<Pixel, Pixel> {
public:
    using GeneralSamplerPos<Pixel, Pixel>::GeneralSamplerPos;

    bool is_nearest = false;
    bool has_fixed_scales = false;
    float scale_x = 1, scale_y = 1;

protected:
    void preProcess(const FnTexture<Pixel>& in, FnTexture<Pixel>& out) override {
        if (has_fixed_scales) return;
        scale_x = static_cast<float>(in.width()) / static_cast<float>(out.width());
        scale_y = static_cast<float>(in.height()) / static_cast<float>(out.height());
    }
    void pixel(const FnTexture<Pixel>& in, Pixel& out, int, std::int32_t x, std::int32_t y) override {
        const float px = static_cast<float>(x) * scale_x, py = static_cast<float>(y) * scale_y;
        out = is_nearest ? in.read(place_of(px).whole, place_of(py).whole) : in.bilinear(px, py);
    }
};

/// A vector field enlarged, whose vectors may grow with it. What is no vector stays none.
class ImageZoomerGP : public ImageZoomerBase<HvVec2> {
public:
    using ImageZoomerBase::ImageZoomerBase;

    bool scales_values = false;

protected:
    void pixel(const FieldTexture& in, HvVec2& out, int part, std::int32_t x, std::int32_t y) override {
        ImageZoomerBase::pixel(in, out, part, x, y);
        if (scales_values && out.x != INVALID_VECTOR) out = {out.x / scale_x, out.y / scale_y};
    }
};

}  // namespace solvan_of
