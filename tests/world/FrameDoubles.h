// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstring>
#include <vector>

#include "platform/FK_Frames.h"
#include "platform/standalone/Standalone.h"

/// Frames and a device as a host with a GPU has them, in the processor's memory.
namespace qx::test {

struct FrameTraits {
    tesselmediatypes::PixelFormat format;
    MK::FrameBounds bounds{0, 0, 4, 3};
    bool has_block = true, has_pixels = true, has_device_memory = false, has_handle = false, is_clearable = true;
};

class DoubleFrameBase : public MK::IVideoFrame,
                        public FK::IVideoFrameMemoryAccess,
                        public FK::IVideoFrame2DPixelMemoryAccess,
                        public FK::IVideoFrameGPUMemoryAccess,
                        public FK::IVideoFrameVPix,
                        public MK::IVideoFrameClearable {
public:
    static inline std::atomic<int> live{0};

    explicit DoubleFrameBase(const FrameTraits& traits)
        : traits_(traits),
          row_(static_cast<std::int32_t>(tesselmediatypes::BytesPerPixel(traits.format)) * traits.bounds.width),
          bytes_(static_cast<std::size_t>(row_) * static_cast<std::size_t>(traits.bounds.height), std::byte{0x7B}) {
        ++live;
    }
    tesselmediatypes::PixelFormat GetPixelFormat() const override { return traits_.format; }
    MK::FrameBounds GetBounds() const override { return traits_.bounds; }
    tesselmediatypes::PixelAspectRatio GetPixelAspectRatio() const override { return {10, 11}; }
    std::int32_t GetFieldType() const override { return 2; }
    tesselmediatypes::color::ColorSpace GetColorSpace() const override { return {"double"}; }
    void* GetMemory() const override { return const_cast<std::byte*>(bytes_.data()); }
    std::uint64_t GetSize() const override { return bytes_.size(); }
    void* GetPixels() const override { return GetMemory(); }
    std::int32_t GetRowBytes() const override { return row_; }
    std::int32_t GetWidth() const override { return traits_.bounds.width; }
    std::int32_t GetHeight() const override { return traits_.bounds.height; }
    void* GetDeviceMemory() const override { return GetMemory(); }
    void Clear() override { std::memset(bytes_.data(), 0, bytes_.size()); }

protected:
    ~DoubleFrameBase() { --live; }
    void* find_interface(const Guid& id) noexcept {
        if (id == MK::IVideoFrame::kID) return static_cast<MK::IVideoFrame*>(this);
        const auto one = [&]<class Interface>(Interface* interface, bool is_there) -> void* {
            return is_there && id == Interface::kID ? interface : nullptr;
        };
        for (void* found : {one(static_cast<FK::IVideoFrameMemoryAccess*>(this), traits_.has_block),
                            one(static_cast<FK::IVideoFrame2DPixelMemoryAccess*>(this), traits_.has_pixels),
                            one(static_cast<FK::IVideoFrameGPUMemoryAccess*>(this), traits_.has_device_memory),
                            one(static_cast<FK::IVideoFrameVPix*>(this), traits_.has_handle),
                            one(static_cast<MK::IVideoFrameClearable*>(this), traits_.is_clearable)}) {
            if (found != nullptr) return found;
        }
        return nullptr;
    }

private:
    FrameTraits traits_;
    std::int32_t row_;
    std::vector<std::byte> bytes_;
};
class DoubleFrame final : public FK::VideoFrameTemplate<DoubleFrameBase> {
public:
    using VideoFrameTemplate::VideoFrameTemplate;

private:
    ~DoubleFrame() override = default;
};

inline InterfaceRef<MK::IVideoFrame> new_frame(const FrameTraits& traits) {
    return InterfaceRef<DoubleFrame>(new DoubleFrame(traits)).query<MK::IVideoFrame>();
}
inline FrameTraits on_gpu(tesselmediatypes::PixelFormat format = GK::kPixelFormat_GPU_BGRA_4444_32f) {
    return {.format = format, .has_pixels = false, .has_device_memory = true, .has_handle = true};
}

struct DoubleDevice final : GK::Device {
    std::atomic<int> holders{0}, acquired{0};
    void AcquireExclusiveAccess() override { ++holders, ++acquired; }
    void ReleaseExclusiveAccess() override { --holders; }
    std::size_t GetRowAlignment(tesselmediatypes::PixelFormat) const override { return 4; }
};

/// The host has this GPU while it lives.
struct HasGpu {
    explicit HasGpu(const standalone::Gpu& gpu) { standalone::SetGpu(gpu); }
    ~HasGpu() { standalone::SetGpu({}); }
    HasGpu(HasGpu&&) = delete;
};

}  // namespace qx::test
