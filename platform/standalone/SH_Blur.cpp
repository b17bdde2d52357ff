// SPDX-License-Identifier: Apache-2.0
// Which pixels each pass of a line's blur works out. Positions have 64 bits: origins lie anywhere, and passes are many.
#include <algorithm>
#include <cmath>

#include "platform/GK_Blur.h"

namespace GK {

Blur_1DImgOpInfo::Blur_1DImgOpInfo(AlphaType src_alpha, int src_length, int src_stride, AlphaType dst_alpha,
                                   int dst_length, int dst_stride)
    : src_alpha_(src_alpha),
      dst_alpha_(dst_alpha),
      src_length_(src_length),
      src_stride_(src_stride),
      dst_length_(dst_length),
      dst_stride_(dst_stride) {}

Blur_1DImgOpInfo::~Blur_1DImgOpInfo() = default;

BoxBlur_1DImgOpInfo::BoxBlur_1DImgOpInfo(float radius, std::uint32_t conv_flags, int iterations, AlphaType src_alpha,
                                         int src_origin, int src_length, int src_stride, AlphaType dst_alpha,
                                         int dst_origin, int dst_length, int dst_stride, bool copy_lines)
    : Blur_1DImgOpInfo(src_alpha, src_length, src_stride, dst_alpha, dst_length, dst_stride),
      radius_(radius),
      conv_flags_(conv_flags),
      iterations_(std::max(iterations, 0)),
      src_origin_(src_origin),
      dst_origin_(dst_origin) {
    BoxBlur_1DImgOpInfo::Init(copy_lines);
}

BoxBlur_1DImgOpInfo::~BoxBlur_1DImgOpInfo() = default;

void BoxBlur_1DImgOpInfo::Init(bool copy_lines) {
    reads_directly_ = !copy_lines && !GetInputNeedsMatting();
    const auto reach = static_cast<int>(std::ceil(std::clamp(radius_, 0.0f, 32767.0f)));
    BoxBlur_1DImgOpInfo::SetupSpans(reach, iterations_, src_origin_, GetSrcLength(), dst_origin_, GetDstStride() != 1,
                                    GetDstLength());
}

void BoxBlur_1DImgOpInfo::SetupSpans(int reach, int iterations, int src_origin, int src_length, int dst_origin,
                                     bool by_buffer, int dst_length) {
    iterations_ = std::max(iterations, 0);
    reach_ = reach;
    src_length_ = src_length;
    const std::int64_t begin = std::int64_t{dst_origin} - src_origin;
    destination_ = {begin, begin + dst_length};
    input_ = {0, 0};
    scratch_size_ = 0;
    if (iterations_ == 0) return;
    const Span first = covered(0);
    input_.begin = std::clamp<std::int64_t>(first.begin - reach_, 0, src_length_);
    input_.end = std::clamp<std::int64_t>(first.end + reach_, input_.begin, src_length_);
    scratch_size_ = std::max(reads_directly_ ? 0 : input_.end - input_.begin, longest());
    if (by_buffer) scratch_size_ = std::max<std::int64_t>(scratch_size_, dst_length);
}

BoxBlur_1DImgOpInfo::Span BoxBlur_1DImgOpInfo::grown(std::int64_t pass) const {
    const std::int64_t to_come = reach_ * (iterations_ - 1 - pass), done = reach_ * (pass + 1);
    return {std::max(destination_.begin - to_come, -done), std::min(destination_.end + to_come, src_length_ + done)};
}

BoxBlur_1DImgOpInfo::Span BoxBlur_1DImgOpInfo::covered(std::int64_t pass) const {
    if (pass == iterations_ - 1) return destination_;
    const Span span = grown(pass);
    return {span.begin, std::max(span.begin, span.end)};
}

/// Ends are the lesser of two straight lines over the number of the pass, begins the greater: widths rise up to a pass
/// and fall from there.
std::int64_t BoxBlur_1DImgOpInfo::longest() const {
    const auto width = [this](std::int64_t pass) { return grown(pass).end - grown(pass).begin; };
    std::int64_t low = 0, high = std::int64_t{iterations_} - 2;
    if (high < 0) return 0;
    while (low < high) {
        const std::int64_t middle = (low + high) / 2;
        if (width(middle) < width(middle + 1)) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return std::max<std::int64_t>(width(low), 0);
}

std::int64_t BoxBlur_1DImgOpInfo::GetSpanWidthAtIndex(int i) const {
    const Span span = covered(i);
    return span.end - span.begin;
}

std::int64_t BoxBlur_1DImgOpInfo::GetSpanSrcDestOffsetAtIndex(int i) const {
    return covered(i).begin - (i == 0 ? input_.begin : covered(std::int64_t{i} - 1).begin);
}

bool BoxBlur_1DImgOpInfo::GetInputNeedsMatting() const {
    return GetSrcAlpha() == kAlphaType_Straight && (conv_flags_ & 14) != 0;
}

}  // namespace GK
