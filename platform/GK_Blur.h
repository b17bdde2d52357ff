// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "platform/Platform_Export.h"

/// The geometry of blurs along one line, shared with blurs on a GPU. Positions count in pixels along the source line.
namespace GK {

/// What alpha means to colours; any number but 0 is premultiplied.
enum AlphaType : int { kAlphaType_Straight = 0, kAlphaType_Premultiplied = 1 };

/// A line that is blurred into another one. Strides count in pixels.
class PLATFORM_EXPORT Blur_1DImgOpInfo {
public:
    Blur_1DImgOpInfo(AlphaType src_alpha, int src_length, int src_stride, AlphaType dst_alpha, int dst_length,
                     int dst_stride);
    virtual ~Blur_1DImgOpInfo();

    AlphaType GetSrcAlpha() const { return src_alpha_; }
    AlphaType GetDstAlpha() const { return dst_alpha_; }
    int GetSrcLength() const { return src_length_; }
    int GetSrcStride() const { return src_stride_; }
    int GetDstLength() const { return dst_length_; }
    int GetDstStride() const { return dst_stride_; }

private:
    AlphaType src_alpha_, dst_alpha_;
    int src_length_, src_stride_, dst_length_, dst_stride_;
};

/// The same for passes of a box of a radius, whose reach is R, the radius rounded up. A pass needs R more pixels on
/// both sides than the next one. Pass p of n, but the last, covers the destination line grown by R * (n - 1 - p), cut
/// to the source line grown by R * (p + 1); the last one covers the destination line. Each reads what the pass before
/// covers, the first one the part of the source line that it reaches. Any radius but NaN, any number of passes.
class PLATFORM_EXPORT BoxBlur_1DImgOpInfo : public Blur_1DImgOpInfo {
public:
    /// @param conv_flags  bits 0 to 3 select alpha, red, green, blue
    /// @param copy_lines  the first pass is not to read the source itself
    BoxBlur_1DImgOpInfo(float radius, std::uint32_t conv_flags, int iterations, AlphaType src_alpha, int src_origin,
                        int src_length, int src_stride, AlphaType dst_alpha, int dst_origin, int dst_length,
                        int dst_stride, bool copy_lines);
    ~BoxBlur_1DImgOpInfo() override;

    virtual void SetupSpans(int reach, int iterations, int src_origin, int src_length, int dst_origin, bool by_buffer,
                            int dst_length);
    virtual void Init(bool copy_lines);

    int GetIterations() const { return iterations_; }  ///< 0 and up
    float GetBlurRadius() const { return radius_; }
    std::uint32_t GetConvFlags() const { return conv_flags_; }
    int GetNumberOfBuffers() const { return 2; }
    std::int64_t GetScratchSize() const { return scratch_size_; }  ///< pixels of a buffer that holds all but the last

    /// Pixels that pass `i` covers, and where they begin behind the first pixel that it reads.
    std::int64_t GetSpanWidthAtIndex(int i) const;
    std::int64_t GetSpanSrcDestOffsetAtIndex(int i) const;
    /// What the first pass reads of the source line.
    std::int64_t GetSrcOffset() const { return input_.begin; }
    std::int64_t GetSrcWidth() const { return input_.end - input_.begin; }

    bool GetReadInputDirectly() const { return reads_directly_; }  ///< without a copy in a buffer
    bool GetInputNeedsMatting() const;                             ///< colours are to be multiplied by alpha
    bool GetDoRedChannel() const { return (conv_flags_ & 2) != 0; }
    bool GetDoGreenChannel() const { return (conv_flags_ & 4) != 0; }
    bool GetDoBlueChannel() const { return (conv_flags_ & 8) != 0; }

private:
    struct Span {
        std::int64_t begin, end;
    };
    Span grown(std::int64_t pass) const;  ///< its end lies before its begin where it is empty
    Span covered(std::int64_t pass) const;
    std::int64_t longest() const;

    float radius_;
    std::uint32_t conv_flags_;
    int iterations_, src_origin_, dst_origin_;
    bool reads_directly_ = false;
    std::int64_t reach_ = 0, src_length_ = 0, scratch_size_ = 0;
    Span destination_{}, input_{};
};

}  // namespace GK
