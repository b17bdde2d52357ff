// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "opticalflow/src/BlurGeneralGauss.h"
#include "opticalflow/src/FlowLuminance.h"
#include "opticalflow/src/Pixels.h"

namespace solvan_of {

/// How much each colour counts for the luminance that motion is told by.
struct LumaOf {
    double red, green, blue;
};

/// The weights over their sum, which counts as three ones where it is 0, times 1 over the range of channels.
qx::LumaWeights luma_weights(const LumaOf& luma, float range);

/// A frame's luminance, row by row.
template <class Pixel> class FnMotionEstimateLuminanceFrameGenerator : public FloatRows {
public:
    FnMotionEstimateLuminanceFrameGenerator(const FnTexture<Pixel>& frame, const LumaOf& luma);
    const float* rows(std::int32_t first, std::int32_t count, float* room, std::ptrdiff_t* step) const override;

private:
    const FnTexture<Pixel>* frame_;
    qx::LumaWeights weights_;
    qx::FlowLuminance::Row make_row_;
};

/// What a field of this detail makes of a frame's size. @return false where a side has no pixel left
struct FieldSize {
    std::int32_t width, height;
    bool is_empty() const { return width < 1 || height < 1; }
};
FieldSize field_size(const FnTexIndexer& frame, float detail);

/// A frame's luminance, blurred and at the field's size; `out` gets pixels of its own. Want of memory stops the state.
template <class Pixel>
void make_working_frame(InterruptState& state, const FnTexture<Pixel>& frame, const LumaOf& luma, const FieldSize& size,
                        FloatTexture& out);

/// A mask of one channel of bytes, blurred and at the field's size likewise.
void make_working_mask(InterruptState& state, const FnTexture<std::uint8_t>& mask, const FieldSize& size,
                       FloatTexture& out);
/// Replaces what the mask leaves out, below 0.5, by the mean of what it does not, added part by part in order; 0 where
/// it leaves out all.
void mask_luminance(InterruptState& state, const FloatTexture& mask, FloatTexture& luminance);

}  // namespace solvan_of
