// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/LuminanceFrame.h"

#include "opticalflow/src/Kernels.h"
#include "opticalflow/src/LuminanceMask.h"

namespace solvan_of {
namespace {

template <class Pixel> qx::FlowLuminance::Row row_of(const qx::FlowLuminance& rows);
template <> qx::FlowLuminance::Row row_of<Argb<std::uint8_t>>(const qx::FlowLuminance& rows) { return rows.argb8; }
template <> qx::FlowLuminance::Row row_of<Argb<std::uint16_t>>(const qx::FlowLuminance& rows) { return rows.argb16; }
template <> qx::FlowLuminance::Row row_of<Argb<float>>(const qx::FlowLuminance& rows) { return rows.argb32; }
template <> qx::FlowLuminance::Row row_of<Bgr<std::uint8_t>>(const qx::FlowLuminance& rows) { return rows.bgr8; }
template <> qx::FlowLuminance::Row row_of<Bgr<std::uint16_t>>(const qx::FlowLuminance& rows) { return rows.bgr16; }
template <> qx::FlowLuminance::Row row_of<Bgr<float>>(const qx::FlowLuminance& rows) { return rows.bgr32; }

/// The mean of a background's colours, which is an integer where they are.
template <class Pixel> float mean_colour(const Pixel& p) {
    if constexpr (std::is_floating_point_v<typename Pixel::Channel>) {
        return (p.red + p.green + p.blue) / 3.0f;
    } else {
        return static_cast<float>((p.red + p.green + p.blue) / 3);
    }
}

/// A mask's bytes as shares of 1.
class MaskRows : public FloatRows {
public:
    explicit MaskRows(const FnTexture<std::uint8_t>& mask) : FloatRows(mask, 0), mask_(&mask) {}
    const float* rows(std::int32_t first, std::int32_t count, float* room, std::ptrdiff_t* step) const override {
        *step = mask_->width();
        for (std::int32_t i = 0; i < count; ++i) {
            const std::uint8_t* const from = mask_->row(first + i);
            for (std::int32_t k = 0; k < mask_->width(); ++k)
                room[i * *step + k] = static_cast<float>(from[k]) * 0.003921569f;
        }
        return room;
    }

private:
    const FnTexture<std::uint8_t>* mask_;
};

/// The nearest pixels at (i + 0.5) * scale; positions are added up along a row, and are made anew for each row.
Picks nearest_columns(std::int32_t count, float scale, const TexAxis& from) {
    Picks picks;
    float position = scale * 0.5f;
    for (std::int32_t i = 0; i < count; ++i, position += scale) picks.push_back(from.index(place_of(position).whole));
    return picks;
}
Picks nearest_rows(std::int32_t count, float scale, const TexAxis& from) {
    Picks picks;
    for (std::int32_t i = 0; i < count; ++i)
        picks.push_back(from.index(place_of(scale * (static_cast<float>(i) + 0.5f)).whole));
    return picks;
}

void blur_and_reduce(InterruptState& state, const FloatRows& in, const FieldSize& size, FloatTexture& out) {
    if (size.is_empty() || !out.allocate(size.width, size.height)) return state.stop(4);
    out.setAddressing(Addressing::clamp, Addressing::clamp);
    const float scale = static_cast<float>(in.shape().width()) / static_cast<float>(size.width);
    BlurGeneralGauss blur(state);
    blur.radius_x = blur.radius_y = scale / 3.0f;
    blur.columns = nearest_columns(size.width, scale, in.shape().x);
    blur.rows = nearest_rows(size.height, scale, in.shape().y);
    blur.process(in, &out);
}

}  // namespace

qx::LumaWeights luma_weights(const LumaOf& luma, float range) {
    const auto red = static_cast<float>(luma.red), green = static_cast<float>(luma.green),
               blue = static_cast<float>(luma.blue);
    const float sum = green + red + blue;
    const float reciprocal = range == 255.0f ? 0.003921569f : range == 32768.0f ? 3.0517578e-05f : 1.0f;
    const auto weight = [=](float w) { return (sum == 0.0f ? 1.0f : w / sum) * reciprocal; };
    return {weight(red), weight(green), weight(blue)};
}

template <class Pixel>
FnMotionEstimateLuminanceFrameGenerator<Pixel>::FnMotionEstimateLuminanceFrameGenerator(const FnTexture<Pixel>& frame,
                                                                                        const LumaOf& luma)
    : FloatRows(frame, mean_colour(frame.background)),
      frame_(&frame),
      weights_(luma_weights(luma, kRange<typename Pixel::Channel>)),
      make_row_(row_of<Pixel>(*kernels().luminance)) {}

template <class Pixel>
const float* FnMotionEstimateLuminanceFrameGenerator<Pixel>::rows(std::int32_t first, std::int32_t count, float* room,
                                                                  std::ptrdiff_t* step) const {
    *step = frame_->width();
    for (std::int32_t i = 0; i < count; ++i)
        make_row_(frame_->row(first + i), frame_->width(), weights_, room + i * *step);
    return room;
}

FieldSize field_size(const FnTexIndexer& frame, float detail) {
    // A detail that is no number, negative or huge leaves no pixel, or more than there is memory for.
    const auto side = [detail](std::int32_t pixels) { return place_of(static_cast<float>(pixels) * detail).whole; };
    return {side(frame.width()), side(frame.height())};
}

template <class Pixel>
void make_working_frame(InterruptState& state, const FnTexture<Pixel>& frame, const LumaOf& luma, const FieldSize& size,
                        FloatTexture& out) {
    const FnMotionEstimateLuminanceFrameGenerator<Pixel> luminance(frame, luma);
    out.background = luminance.background();
    blur_and_reduce(state, luminance, size, out);
}

template void make_working_frame(InterruptState&, const FnTexture<Argb<std::uint8_t>>&, const LumaOf&, const FieldSize&,
                                 FloatTexture&);
template void make_working_frame(InterruptState&, const FnTexture<Argb<std::uint16_t>>&, const LumaOf&,
                                 const FieldSize&, FloatTexture&);
template void make_working_frame(InterruptState&, const FnTexture<Argb<float>>&, const LumaOf&, const FieldSize&,
                                 FloatTexture&);
template void make_working_frame(InterruptState&, const FnTexture<Bgr<std::uint8_t>>&, const LumaOf&, const FieldSize&,
                                 FloatTexture&);
template void make_working_frame(InterruptState&, const FnTexture<Bgr<std::uint16_t>>&, const LumaOf&, const FieldSize&,
                                 FloatTexture&);
template void make_working_frame(InterruptState&, const FnTexture<Bgr<float>>&, const LumaOf&, const FieldSize&,
                                 FloatTexture&);

void make_working_mask(InterruptState& state, const FnTexture<std::uint8_t>& mask, const FieldSize& size,
                       FloatTexture& out) {
    blur_and_reduce(state, MaskRows(mask), size, out);
}

void mask_luminance(InterruptState& state, const FloatTexture& mask, FloatTexture& luminance) {
    FnMotionEstimateLuminanceMasker masker(state, mask);
    FnMeanCalculator calculator(state, mask, masker);
    calculator.process(luminance, &luminance);
    masker.process(luminance, &luminance);
}

}  // namespace solvan_of
