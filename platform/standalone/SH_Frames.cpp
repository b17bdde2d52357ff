// SPDX-License-Identifier: Apache-2.0
// Frames that the host holds by handles, and the GPU that only tests give it.
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "platform/FK_Frames.h"
#include "platform/RK_Renderers.h"
#include "platform/TK_Memory.h"
#include "platform/standalone/Standalone.h"

/// A handle is the address of the first field.
struct VPix : TK_MemTrackedObject {
    VPix* self;
    InterfaceRef<MK::IVideoFrame> frame;
};

namespace standalone {
namespace {

std::mutex mutex;
Gpu gpu;

std::map<VPix**, std::unique_ptr<VPix>>& Handles() {
    static std::map<VPix**, std::unique_ptr<VPix>> handles;
    return handles;
}

Gpu CurrentGpu() {
    const std::lock_guard lock(mutex);
    return gpu;
}

/// A frame that is there and has nothing.
class FakeFrameBase : public MK::IVideoFrame, public FK::IVideoFrameGPUMemoryAccess {
public:
    explicit FakeFrameBase(tesselmediatypes::PixelFormat format) : format_(format) {}
    tesselmediatypes::PixelFormat GetPixelFormat() const override { return format_; }
    MK::FrameBounds GetBounds() const override { return {}; }
    tesselmediatypes::PixelAspectRatio GetPixelAspectRatio() const override { return {1, 1}; }
    std::int32_t GetFieldType() const override { return 0; }
    tesselmediatypes::color::ColorSpace GetColorSpace() const override { return {}; }
    /// Never followed: an address that is the frame's own.
    void* GetDeviceMemory() const override { return const_cast<FakeFrameBase*>(this); }

protected:
    ~FakeFrameBase() = default;
    void* find_interface(const Guid& id) noexcept {
        if (id == MK::IVideoFrame::kID) return static_cast<MK::IVideoFrame*>(this);
        if (id == kID_OfDevice && LivesOnGPU()) return static_cast<FK::IVideoFrameGPUMemoryAccess*>(this);
        return nullptr;
    }

private:
    static constexpr Guid kID_OfDevice = FK::IVideoFrameGPUMemoryAccess::kID;
    bool LivesOnGPU() const {
        using namespace tesselmediatypes;
        return !(format_ == kPixelFormat_ARGB_4444_8u || format_ == kPixelFormat_ARGB_4444_15u ||
                 format_ == kPixelFormat_ARGB_4444_32f);
    }
    tesselmediatypes::PixelFormat format_;
};
class FakeFrame final : public FK::VideoFrameTemplate<FakeFrameBase> {
public:
    using VideoFrameTemplate::VideoFrameTemplate;

private:
    ~FakeFrame() override = default;
};

}  // namespace

VPix** NewFakeFrame(tesselmediatypes::PixelFormat format) {
    return FK::NewVPixFromVideoFrame(InterfaceRef<FakeFrame>(new FakeFrame(format)).query<MK::IVideoFrame>());
}

int LiveFrameHandles() {
    const std::lock_guard lock(mutex);
    return static_cast<int>(Handles().size());
}

void SetGpu(const Gpu& new_gpu) {
    const std::lock_guard lock(mutex);
    gpu = new_gpu;
}

}  // namespace standalone

namespace FK {

VPix** NewVPixFromVideoFrame(const InterfaceRef<MK::IVideoFrame>& frame) {
    try {
        std::unique_ptr<VPix> made(new VPix);
        made->self = made.get();
        made->frame = frame;
        VPix** const handle = &made->self;
        const std::lock_guard lock(standalone::mutex);
        standalone::Handles()[handle] = std::move(made);
        return handle;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void DisposeVPixFromVideoFrame(VPix** handle) {
    std::unique_ptr<VPix> gone;  // ends behind the lock, since its frame may do anything
    const std::lock_guard lock(standalone::mutex);
    const auto found = standalone::Handles().find(handle);
    if (found == standalone::Handles().end()) return;
    gone = std::move(found->second);
    standalone::Handles().erase(found);
}

InterfaceRef<MK::IVideoFrame> GetVPixHandFrameMapping(VPix** handle) {
    const std::lock_guard lock(standalone::mutex);
    const auto found = standalone::Handles().find(handle);
    return found == standalone::Handles().end() ? InterfaceRef<MK::IVideoFrame>() : found->second->frame;
}

std::int32_t CreateGPUVideoFrame(const boost::shared_ptr<GK::Device>&, tesselmediatypes::PixelFormat format,
                                 const MK::FrameBounds& bounds, const tesselmediatypes::PixelAspectRatio&, std::int32_t,
                                 const tesselmediatypes::color::ColorSpace&, InterfaceRef<MK::IVideoFrame>* frame) {
    *frame = {};
    const auto gpu = standalone::CurrentGpu();
    return gpu.new_frame ? gpu.new_frame(format, bounds, frame) : -1;
}

InterfaceRef<MK::IVideoFrame> GPUFrameManipulators::ReadBackFrame(const InterfaceRef<MK::IVideoFrame>& frame,
                                                                  tesselmediatypes::PixelFormat format,
                                                                  const MK::FrameBounds&,
                                                                  const tesselmediatypes::PixelAspectRatio&,
                                                                  std::int32_t, int, int) {
    const auto gpu = standalone::CurrentGpu();
    return gpu.read_back ? gpu.read_back(frame, format) : InterfaceRef<MK::IVideoFrame>();
}

}  // namespace FK

namespace GK {

boost::shared_ptr<Device> GetPrimaryDevice(DeviceFramework framework) {
    const auto gpu = standalone::CurrentGpu();
    return gpu.device ? gpu.device(framework) : boost::shared_ptr<Device>();
}

}  // namespace GK

namespace MK {

tesselmediatypes::color::ColorSpace WorkingSpace::OR709() { return {"BT.709 RGB over range"}; }

}  // namespace MK

namespace RK {

void SetCurrentAcceleratedSequenceRendererID(const Guid& id) {
    const auto gpu = standalone::CurrentGpu();
    if (gpu.renderer_changed) gpu.renderer_changed(id);
}

}  // namespace RK

namespace tesselcore::classref {

NullInterfaceException::~NullInterfaceException() = default;
const char* NullInterfaceException::what() const noexcept { return "an interface that is needed is not there"; }

}  // namespace tesselcore::classref

namespace tesselmediatypes {

std::uint64_t PixelFormatSize(PixelFormat format, int width, int height) {
    if (width <= 0 || height <= 0) return 0;
    const auto pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    return BytesPerPixel(format) * pixels;
}

}  // namespace tesselmediatypes
