// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/BuildPicture.h"

#include "opticalflow/src/Candidates.h"
#include "opticalflow/src/Kernels.h"

namespace solvan_of {

EnlargedField::EnlargedField(const FieldTexture& field, std::int32_t picture_width, float step)
    : field_(&field), step_(step) {
    float position = step * 0.5f;
    for (std::int32_t x = 0; x < picture_width; ++x, position += step) {
        const Place place = place_of(position - 0.5f);
        whole_.push_back(place.whole);
        fraction_.push_back(place.fraction);
    }
}

EnlargedField::Rows::Rows(const EnlargedField& enlarged)
    : enlarged_(enlarged), room_(engineBlock<float>(6 * enlarged.whole_.size())), lines_{-2, -2} {
    if (room_ == nullptr) throw 4;
}

qx::VectorRow EnlargedField::Rows::buffer(int which) const {
    const std::size_t count = enlarged_.whole_.size();
    float* const x = room_.get() + static_cast<std::size_t>(which) * 2 * count;
    return {x, x + count};
}

/// A row of the field with as many vectors as the picture has pixels; one beside the field is zero.
qx::VectorRow EnlargedField::Rows::widened(std::int32_t line, int which) {
    const qx::VectorRow to = buffer(which);
    if (lines_[which] == line) return to;
    lines_[which] = line;
    const FieldTexture& field = enlarged_.field();
    const bool inside = line >= 0 && line < field.height();
    if (inside) {
        kernels().picture->widen(field.row(line), field.width(), enlarged_.columns(), to);
    } else {
        std::fill_n(to.x, 2 * enlarged_.whole_.size(), 0.0f);
    }
    return to;
}

qx::VectorRow EnlargedField::Rows::row(std::int32_t y) {
    const Place place = enlarged_.row(y);
    const int upper = place.whole & 1;  // neighbouring rows share one
    const qx::VectorRow top = widened(place.whole, upper), bottom = widened(place.whole + 1, 1 - upper), to = buffer(2);
    kernels().picture->mix_rows(top, bottom, place.fraction, std::int32_t(enlarged_.whole_.size()), to);
    return to;
}

namespace {

template <class Pixel> qx::FlowPicture::Row quick_row(bool by_sinc) {
    const qx::FlowPicture& bilinear = *kernels().picture;
    const qx::FlowSinc& sinc = *kernels().sinc;
    if constexpr (sizeof(Pixel) == 4) return by_sinc ? sinc.rows8 : bilinear.bilinear8;
    if constexpr (sizeof(Pixel) == 8) return by_sinc ? sinc.rows16 : bilinear.bilinear16;
    return by_sinc ? sinc.rows32 : bilinear.bilinear32;
}

template <class Pixel> qx::FlowFrame frame_of(const FnTexture<Pixel>& texture) {
    return {texture.pixels(), texture.row_bytes, texture.width(), texture.height()};
}

/// Addresses in vectors have 32 bits.
template <class Pixel> bool fits_vectors(const FnTexture<Pixel>& texture) {
    return texture.row_bytes >= 0 && texture.row_bytes * texture.height() <= INT32_MAX;
}

FloatPixel grey(float alpha, float colour) { return FloatPixel{{alpha, colour, colour, colour}}; }

template <class Pixel> FloatPixel as_floats(const Pixel& p) {
    return FloatPixel::of([](auto channel) { return static_cast<float>(channel); }, p);
}

}  // namespace

template <class Pixel> void FnMotionEstimateGradientTweenerBuildPicture<Pixel>::initialise() {
    scale_ = static_cast<float>(this->width_) / static_cast<float>(parameters_.to_second->width());
    to_second_.emplace(*parameters_.to_second, this->width_, 1.0f / scale_);
    to_first_.emplace(*parameters_.to_first, this->width_, 1.0f / scale_);
    has_states_ = false;
    const IntTexture* const map = parameters_.occlusion_map;
    if (map == nullptr) return;
    for (std::int32_t y = 0; y < map->height() && !has_states_; ++y)
        has_states_ = std::any_of(map->row(y), map->row(y) + map->width(), [](std::int32_t s) { return s != 0; });
}

/// Nothing but a mix of both frames.
template <class Pixel> bool FnMotionEstimateGradientTweenerBuildPicture<Pixel>::is_plain() const {
    return !has_states_ && !takes_nearer_frame && first_alpha == nullptr && second_alpha == nullptr;
}

template <class Pixel> void FnMotionEstimateGradientTweenerBuildPicture<Pixel>::processPart(int part) {
    const PartRows mine = this->rows_of(part);
    if (mine.begin >= mine.end) return;
    EnlargedField::Rows second_rows(*to_second_), first_rows(*to_first_);
    const bool is_quick = is_plain() && fits_vectors(*first_frame_) && fits_vectors(*second_frame_);
    this->for_rows(part, [&](std::int32_t y) {
        const qx::VectorRow to_second = second_rows.row(y), to_first = first_rows.row(y);
        Pixel* const to = this->first_->row(y);
        if (is_quick) {
            quick_row<Pixel>(parameters_.has(kHighQualityFilter))({frame_of(*first_frame_), frame_of(*second_frame_),
                                                                   to_first, to_second, parameters_.position, scale_, y,
                                                                   this->width_, to});
            return;
        }
        for (std::int32_t x = 0; x < this->width_; ++x) {
            const FloatPixel p = made(x, y, {to_second.x[x], to_second.y[x]}, {to_first.x[x], to_first.y[x]});
            to[x] = Pixel::of([](float v) { return as_channel<typename Pixel::Channel>(v); }, p);
        }
    });
}

template <class Pixel>
FloatPixel FnMotionEstimateGradientTweenerBuildPicture<Pixel>::sample(const Frame& frame, const HvVec2& v, float k,
                                                                      std::int32_t x, std::int32_t y) const {
    if (!is_valid(v)) return grey(0, -1);
    const float dx = v.x * k * scale_, dy = v.y * k * scale_;
    if (dx == INVALID_VECTOR) return grey(128, 128);
    return read(frame, static_cast<float>(x) + 0.5f - dx, static_cast<float>(y) + 0.5f + dy);
}

template <class Pixel>
FloatPixel FnMotionEstimateGradientTweenerBuildPicture<Pixel>::read(const Frame& frame, float px, float py) const {
    const Place across = place_of(px - 0.5f), down = place_of(py - 0.5f);
    if (parameters_.has(kHighQualityFilter)) return read_by_sinc(frame, across, down);
    const auto corner = [&](int dx, int dy) { return as_floats(frame.read(across.whole + dx, down.whole + dy)); };
    return MixAt{across.fraction, down.fraction}(corner(0, 0), corner(1, 0), corner(0, 1), corner(1, 1));
}

template <class Pixel>
FloatPixel FnMotionEstimateGradientTweenerBuildPicture<Pixel>::read_by_sinc(const Frame& frame, const Place& across,
                                                                            const Place& down) const {
    if (qx::is_near_middle(across.fraction) && qx::is_near_middle(down.fraction)) {
        const auto nearest = [](const Place& place) { return place.whole + (place.fraction > 0.99f ? 1 : 0); };
        return as_floats(frame.read(nearest(across), nearest(down)));
    }
    float along_x[qx::kSincTaps], along_y[qx::kSincTaps];
    kernels().sinc->taps(across.fraction, along_x);
    kernels().sinc->taps(down.fraction, along_y);
    const auto add = [](FloatPixel& sum, float weight, const FloatPixel& p) {
        sum = FloatPixel::of([weight](float s, float c) { return s + weight * c; }, sum, p);
    };
    FloatPixel sum{};
    for (int j = 0; j < qx::kSincTaps; ++j) {
        FloatPixel row{};
        for (int i = 0; i < qx::kSincTaps; ++i)
            add(row, along_x[i],
                as_floats(frame.read(across.whole + i - qx::kSincRadius, down.whole + j - qx::kSincRadius)));
        add(sum, along_y[j], row);
    }
    return sum;
}

template <class Pixel>
std::int32_t FnMotionEstimateGradientTweenerBuildPicture<Pixel>::state_of(std::int32_t x, std::int32_t y,
                                                                          const HvVec2& to_second,
                                                                          const HvVec2& to_first) const {
    if (first_alpha == nullptr || second_alpha == nullptr) {
        if (!has_states_) return kSeenInBoth;
        const IntTexture& map = *parameters_.occlusion_map;
        const float sx = static_cast<float>(map.width()) / static_cast<float>(this->width_);
        const float sy = static_cast<float>(map.height()) / static_cast<float>(this->height_);
        return map.bilinear(static_cast<float>(x) * sx, static_cast<float>(y) * sy);
    }
    const auto shows = [&](const FnTexture<std::uint8_t>& alpha, const HvVec2& v, float k) {
        const Place across = place_of(static_cast<float>(x) + 0.5f - v.x * k * scale_);
        const Place down = place_of(static_cast<float>(y) + 0.5f + v.y * k * scale_);
        const std::uint8_t found = alpha.read(across.whole, down.whole);
        return tests_for_low_alpha ? found <= 1 : found > 0;
    };
    const bool first = shows(*first_alpha, to_first, parameters_.position);
    const bool second = shows(*second_alpha, to_second, 1.0f - parameters_.position);
    return first == second ? kSeenInBoth : first ? kSecondAlone : kFirstAlone;
}

template <class Pixel>
FloatPixel FnMotionEstimateGradientTweenerBuildPicture<Pixel>::made(std::int32_t x, std::int32_t y,
                                                                    const HvVec2& to_second,
                                                                    const HvVec2& to_first) const {
    const float t = parameters_.position;
    const std::int32_t s = state_of(x, y, to_second, to_first);
    if (s == kFirstAlone || s == kSecondAlone) {
        const bool is_first = s == kFirstAlone;
        if (parameters_.has(kPaintsStates)) return FloatPixel{{0, is_first ? 1.0f : 0.0f, is_first ? 0.0f : 1.0f, 0}};
        return is_first ? sample(*first_frame_, to_first, t, x, y) : sample(*second_frame_, to_second, 1.0f - t, x, y);
    }
    const FloatPixel s0 = sample(*first_frame_, to_first, t, x, y);
    const FloatPixel s1 = sample(*second_frame_, to_second, 1.0f - t, x, y);
    if (takes_nearer_frame) return t >= 0.5f ? s1 : s0;
    const float rest = 1.0f - t;
    return FloatPixel::of([=](float a, float b) { return a * rest + b * t; }, s0, s1);
}

template class FnMotionEstimateGradientTweenerBuildPicture<Argb<std::uint8_t>>;
template class FnMotionEstimateGradientTweenerBuildPicture<Argb<std::uint16_t>>;
template class FnMotionEstimateGradientTweenerBuildPicture<Argb<float>>;

}  // namespace solvan_of
