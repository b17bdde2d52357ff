// SPDX-License-Identifier: Apache-2.0
#include <exception>

#include "QX/indep/QX_Errors.h"
#include "QX/indep/QX_Guard.h"
#include "opticalflow/src/BuildPicture.h"
#include "opticalflow/src/QX_AdvancedFrameBlending.h"
#include "opticalflow/src/RenderWorker.h"

using namespace solvan_of;

namespace {

constexpr int kLeastBlock = 3;  // blocks share two pixels

struct Buffers {
    const YetAnotherImgBuffer *first, *second, *first_mask, *second_mask, *to_second, *to_first;
};

bool has_pixels(const YetAnotherImgBuffer* buffer) {
    return buffer != nullptr && buffer->pixels != nullptr && buffer->width > 0 && buffer->height > 0 &&
           buffer->width <= INT32_MAX && buffer->height <= INT32_MAX;
}
bool have_one_size(const YetAnotherImgBuffer& a, const YetAnotherImgBuffer& b) {
    return a.width == b.width && a.height == b.height;
}

/// 516 for buffers that cannot be taken.
int check(const QX_Solvan_AlgoParams& algo, const Buffers& b) {
    if (!has_pixels(b.first) || !has_pixels(b.second) || algo.blockSize < kLeastBlock) return kQX_BadParameter;
    if (!have_one_size(*b.first, *b.second) || b.first->bits != b.second->bits ||
        b.first->channels != b.second->channels)
        return kQX_BadParameter;
    for (const YetAnotherImgBuffer* mask : {b.first_mask, b.second_mask})
        if (mask != nullptr && (!has_pixels(mask) || !have_one_size(*mask, *b.first))) return kQX_BadParameter;
    for (const YetAnotherImgBuffer* out : {b.to_second, b.to_first})
        if (out != nullptr && !has_pixels(out)) return kQX_BadParameter;
    return kQX_NoError;
}

void wrap(const YetAnotherImgBuffer& buffer, auto& texture) {
    texture.wrap(buffer.pixels, static_cast<std::int32_t>(buffer.width), static_cast<std::int32_t>(buffer.height),
                 buffer.rowBytes);
    texture.setAddressing(Addressing::clamp, Addressing::clamp);
}

/// A field at the size of a buffer; its values stay as they are.
class WriteField : public FnImgProc1<HvVec2> {
public:
    WriteField(InterruptState& state, const FieldTexture& field) : FnImgProc1(state), field_(&field) {}

protected:
    void processPart(int part) override {
        const float step = static_cast<float>(field_->width()) / static_cast<float>(width_);
        const EnlargedField enlarged(*field_, width_, step);
        EnlargedField::Rows rows(enlarged);
        for_rows(part, [&](std::int32_t y) {
            const qx::VectorRow row = rows.row(y);
            HvVec2* const to = first_->row(y);
            for (std::int32_t x = 0; x < width_; ++x) to[x] = {row.x[x], row.y[x]};
        });
    }

private:
    const FieldTexture* field_;
};

void write_field(InterruptState& state, const FieldTexture& field, const YetAnotherImgBuffer* out) {
    if (out == nullptr || state.is_stopped()) return;
    FieldTexture target;
    wrap(*out, target);
    WriteField(state, field).process(&target);
}

void apply_mask(InterruptState& state, const YetAnotherImgBuffer* mask, const FieldSize& size, FloatTexture& reduced,
                FloatTexture& luminance) {
    if (mask == nullptr || state.is_stopped()) return;
    FnTexture<std::uint8_t> wrapped;
    wrap(*mask, wrapped);
    make_working_mask(state, wrapped, size, reduced);
    if (!state.is_stopped()) mask_luminance(state, reduced, luminance);
}

template <class Pixel> int calculate(const QX_Solvan_AlgoParams& algo, InterruptState& state, const Buffers& buffers) {
    FnTexture<Pixel> first, second;
    wrap(*buffers.first, first);
    wrap(*buffers.second, second);
    SolvanVectorRecord record;
    make_luminance(state, algo, first, second, record);
    const FieldSize size{record.width, record.height};
    apply_mask(state, buffers.first_mask, size, record.firstMask, record.firstFrame);
    apply_mask(state, buffers.second_mask, size, record.secondMask, record.secondFrame);
    if (!state.is_stopped()) make_vectors(state, algo, record);
    TweenedVectors tweened;
    if (!state.is_stopped()) tween(state, algo, record, 0.0f, tweened);
    write_field(state, tweened.to_second, buffers.to_second);
    write_field(state, tweened.to_first, buffers.to_first);
    return state.current_code();
}

template <template <class> class Pixel>
int calculate_by_bits(const QX_Solvan_AlgoParams& algo, InterruptState& state, const Buffers& buffers) {
    switch (buffers.first->bits) {
        case 8:
            return calculate<Pixel<std::uint8_t>>(algo, state, buffers);
        case 16:
            return calculate<Pixel<std::uint16_t>>(algo, state, buffers);
        case 32:
            return calculate<Pixel<float>>(algo, state, buffers);
        default:
            return kQX_NoError;
    }
}

}  // namespace

int calcSolvanOpticalFlowParamsNoIpl(const QX_Solvan_AlgoParams& algo, const QX_Solvan_InterruptFuncs* interrupt,
                                     YetAnotherImgBuffer* first, YetAnotherImgBuffer* second,
                                     YetAnotherImgBuffer* firstMask, YetAnotherImgBuffer* secondMask,
                                     YetAnotherImgBuffer* forwardOut, YetAnotherImgBuffer* backwardOut,
                                     YetAnotherImgBuffer* third) {
    (void)third;  // told of in the interface, and never written
    return qx::guarded([&] {
        const Buffers buffers{first, second, firstMask, secondMask, forwardOut, backwardOut};
        if (const int code = check(algo, buffers)) return code;
        InterruptState state;
        follow(interrupt == nullptr ? QX_Solvan_InterruptFuncs{} : *interrupt, state);
        switch (first->channels) {
            case 3:
                return calculate_by_bits<Bgr>(algo, state, buffers);
            case 4:
                return calculate_by_bits<Argb>(algo, state, buffers);
            default:
                return int{kQX_NoError};
        }
    });
}
