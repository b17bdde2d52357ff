// SPDX-License-Identifier: Apache-2.0
// Records that stand for frames on the GPU.
#include <memory>

#include "QX/indep/QX_Report.h"
#include "QX/indep/QX_Wrapping.h"
#include "QX/world/QX_FrameLimits.h"
#include "QX/world/QX_VideoFrameFactory.h"
#include "platform/TK_Memory.h"
#include "platform/TK_Report.h"

namespace vn::qx::VideoFrameFactory {
namespace {

/// Has a device for a scope.
class DeviceAccess {
public:
    explicit DeviceAccess(GK::Device& device) : device_(device) { device_.AcquireExclusiveAccess(); }
    ~DeviceAccess() { device_.ReleaseExclusiveAccess(); }
    DeviceAccess(const DeviceAccess&) = delete;
    DeviceAccess& operator=(const DeviceAccess&) = delete;

private:
    GK::Device& device_;
};

struct FreeBlock {
    void operator()(void* block) const { TK_FreePtr(block); }
};

}  // namespace

QX_LayerDef* CreateGPUEffectWorld(const boost::shared_ptr<GK::Device>& device, const RectT<int>& rect,
                                  const tesselmediatypes::PixelAspectRatio& aspect, std::int32_t field_type, bool clear,
                                  tesselmediatypes::PixelFormat format) {
    if (!device) return nullptr;
    const DeviceAccess access(*device);
    const std::size_t alignment = device->GetRowAlignment(format) * tesselmediatypes::BytesPerPixel(format);
    int depth = 0;
    if (const int code = QXp_PixelFormatToEffectWorldDepth(QXp_PixelFormatFromFrameFormat(format), &depth)) throw code;
    const int width = ::qx::extent(rect.left, rect.right), height = ::qx::extent(rect.top, rect.bottom);
    const auto fits = ::qx::numeric_limits::CanAllocateGPUFrame(width, height, static_cast<short>(depth), alignment);
    if (!std::get<0>(fits)) throw int{kQX_OutOfMemory};
    InterfaceRef<MK::IVideoFrame> frame;
    const auto code = FK::CreateGPUVideoFrame(device, format, {rect.left, rect.top, width, height}, aspect, field_type,
                                              MK::WorkingSpace::OR709(), &frame);
    if (code < 0) throw int{kQX_OutOfMemory};
    if (clear) frame.query<MK::IVideoFrameClearable>()->Clear();
    std::unique_ptr<QX_LayerDef, FreeBlock> record(static_cast<QX_LayerDef*>(
        TK_AllocatePtrClear(::qx::site(::qx::Place::new_effect_world), "gpu effect world", sizeof(QX_LayerDef))));
    if (record == nullptr) throw int{kQX_OutOfMemory};
    InitEffectWorldFromIVideoFrame(frame, record.get());
    // A record without the handle that its frame may have is no GPU world, and has lost the frame.
    if (record->platform_ref == nullptr && frame.query<FK::IVideoFrameVPix>()) throw int{kQX_OutOfMemory};
    return record.release();
}

void InitEffectWorldFromIVideoFrame(const InterfaceRef<MK::IVideoFrame>& frame, QX_LayerDef* record) {
    if (record == nullptr) {
        ::qx::report_text(::qx::Place::new_effect_world, ::qx::Text::invalid_parameter);
        return;
    }
    const auto memory = frame.query<FK::IVideoFrameMemoryAccess>();
    if (!memory) return;
    const MK::FrameBounds bounds = frame->GetBounds();
    const auto aspect = frame->GetPixelAspectRatio();
    *record = {};
    record->world_flags = FK::PixelFormatComponentPrecision(frame->GetPixelFormat()) == 16 ? 1 : 0;
    record->rowbytes = memory->GetRowBytes();
    record->width = bounds.width;
    record->height = bounds.height;
    record->extent_hint = {bounds.left, bounds.top, ::qx::wrapping_sum(bounds.left, bounds.width),
                           ::qx::wrapping_sum(bounds.top, bounds.height)};
    record->pix_aspect_num = aspect.GetNumerator();
    record->pix_aspect_den = aspect.GetDenominator();
    record->origin_x = ::qx::wrapping_difference(0, bounds.left);
    record->origin_y = ::qx::wrapping_difference(0, bounds.top);
    if (frame.query<FK::IVideoFrameVPix>()) record->platform_ref = FK::NewVPixFromVideoFrame(frame);
}

InterfaceRef<MK::IVideoFrame> GetGPUIVFFromQXEffectWorld(const QX_LayerDef* record) {
    if (record == nullptr || record->platform_ref == nullptr) return {};
    return FK::GetVPixHandFrameMapping(record->platform_ref)
        .query<FK::IVideoFrameGPUMemoryAccess>()
        .query<MK::IVideoFrame>();
}

VPix** GetGPUVPixFromQXEffectWorld(const QX_LayerDef* record) {
    return record == nullptr ? nullptr : record->platform_ref;
}

void MapEffectWorldToVPix(VPix** handle, QX_LayerDef* record) {
    if (record != nullptr) record->platform_ref = handle;
}

}  // namespace vn::qx::VideoFrameFactory

int QX_GetPixelDataFloatGPU(const QX_LayerDef* world, void** out) {
    const auto report = [](const char* words) {
        TKp_ReportErrString(qx::site(qx::Place::pixel_data), qx::kReportSeverity, words);
    };
    if (out == nullptr) return qx::report_invalid_parameter(qx::Place::pixel_data);
    *out = nullptr;
    const auto frame = vn::qx::VideoFrameFactory::GetGPUIVFFromQXEffectWorld(world);
    const auto memory = frame.query<FK::IVideoFrameGPUMemoryAccess>();
    if (!memory) {
        report("bad parameter passed to QX_GetPixelDataFloatGPU");
        return kQX_BadParameter;
    }
    if (!(frame->GetPixelFormat() == GK::kPixelFormat_GPU_BGRA_4444_32f)) {
        report("unsupported gpu pixel format passed to QX_GetPixelDataFloatGPU");
        return 0;
    }
    *out = memory->GetDeviceMemory();
    return 0;
}
