// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstdint>

#include "platform/GK_Device.h"
#include "platform/MK_Frames.h"
#include "platform/Platform_Export.h"

/// Opaque record of a frame that the host holds; a handle is a pointer to its address.
struct VPix;

namespace FK {

/// The block that holds a frame's pixels. Frames on the GPU have it for the distance of rows.
class IVideoFrameMemoryAccess : public tesselcore::classref::Unknown {
public:
    static constexpr Guid kID{0x5B8F20C6, 0x1D94, 0x4E6B, {0x8C, 0x57, 0xE1, 0x03, 0x9A, 0x44, 0xB7, 0x2D}};
    virtual void* GetMemory() const = 0;  ///< null on the GPU
    virtual std::uint64_t GetSize() const = 0;
    virtual std::int32_t GetRowBytes() const = 0;

protected:
    ~IVideoFrameMemoryAccess() = default;
};

/// Rows of pixels in the processor's memory.
class IVideoFrame2DPixelMemoryAccess : public tesselcore::classref::Unknown {
public:
    static constexpr Guid kID{0xC40A97E2, 0x6F31, 0x4D08, {0xB2, 0x7E, 0x15, 0xA8, 0x5C, 0xD3, 0x66, 0x90}};
    virtual void* GetPixels() const = 0;           ///< the first row to present
    virtual std::int32_t GetRowBytes() const = 0;  ///< to the next one; negative where that lies before it
    virtual std::int32_t GetWidth() const = 0;     ///< pixels that are stored
    virtual std::int32_t GetHeight() const = 0;

protected:
    ~IVideoFrame2DPixelMemoryAccess() = default;
};

/// The device's memory of a frame on the GPU.
class IVideoFrameGPUMemoryAccess : public tesselcore::classref::Unknown {
public:
    static constexpr Guid kID{0x689AC22C, 0x6831, 0x4C8D, {0xB1, 0xFD, 0x0D, 0x65, 0x4D, 0xC9, 0x65, 0xBB}};
    virtual void* GetDeviceMemory() const = 0;

protected:
    ~IVideoFrameGPUMemoryAccess() = default;
};

/// A frame that may have a handle.
class IVideoFrameVPix : public tesselcore::classref::Unknown {
public:
    static constexpr Guid kID{0x0E63D18A, 0xB529, 0x47F4, {0x9D, 0xC1, 0x78, 0x2B, 0x40, 0xEF, 0x35, 0x16}};

protected:
    ~IVideoFrameVPix() = default;
};

/// A handle for a frame, to which it holds a reference. @return null where there is no memory
PLATFORM_EXPORT VPix** NewVPixFromVideoFrame(const InterfaceRef<MK::IVideoFrame>& frame);
/// Gives a frame's handle back to the host.
PLATFORM_EXPORT void DisposeVPixFromVideoFrame(VPix** handle);
/// The object behind a handle; none for a handle that is none.
PLATFORM_EXPORT InterfaceRef<MK::IVideoFrame> GetVPixHandFrameMapping(VPix** handle);

/// Makes a frame in a device's memory.
/// @return negative where it cannot be had, with no frame in `*frame`
PLATFORM_EXPORT std::int32_t CreateGPUVideoFrame(const boost::shared_ptr<GK::Device>& device,
                                                 tesselmediatypes::PixelFormat format, const MK::FrameBounds& bounds,
                                                 const tesselmediatypes::PixelAspectRatio& aspect,
                                                 std::int32_t field_type,
                                                 const tesselmediatypes::color::ColorSpace& color_space,
                                                 InterfaceRef<MK::IVideoFrame>* frame);

namespace GPUFrameManipulators {

/// A frame in the processor's memory with the pixels of one on the GPU; none where that cannot be.
/// @param threads, flags  4 and 0
PLATFORM_EXPORT InterfaceRef<MK::IVideoFrame> ReadBackFrame(const InterfaceRef<MK::IVideoFrame>& frame,
                                                            tesselmediatypes::PixelFormat format,
                                                            const MK::FrameBounds& bounds,
                                                            const tesselmediatypes::PixelAspectRatio& aspect,
                                                            std::int32_t field_type, int threads, int flags);

}  // namespace GPUFrameManipulators

/// Bits of a component of a format of plain samples, else 0.
inline int PixelFormatComponentPrecision(tesselmediatypes::PixelFormat format) {
    return tesselmediatypes::ComponentBits(format);
}

/// What frames have besides what they are: the count and the query over the interfaces Base stems from. Deletes itself
/// with the last reference.
template <class Base> class VideoFrameTemplate : public Base {
public:
    using Base::Base;
    VideoFrameTemplate(const VideoFrameTemplate&) = delete;
    VideoFrameTemplate& operator=(const VideoFrameTemplate&) = delete;

    void AddRef() noexcept final { references_.fetch_add(1, std::memory_order_relaxed); }
    void Release() noexcept final {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    std::int32_t QueryInterface(const Guid& id, void** interface) noexcept final {
        *interface = this->find_interface(id);
        if (*interface == nullptr) return tesselcore::classref::kUnknownInterface;
        AddRef();
        return 0;
    }

protected:
    virtual ~VideoFrameTemplate() = default;

private:
    std::atomic<std::int32_t> references_{0};
};

}  // namespace FK
