// SPDX-License-Identifier: Apache-2.0
#include "QX/indep/QX_WorldDepth.h"

#include "QX/indep/QX_PixelContainer.h"
#include "QX/indep/QX_Report.h"
#include "platform/FK_Frames.h"

namespace {

constexpr int kFormatShift = 24;  // the format code is the high byte of the flags
constexpr std::uint32_t kFormatMask = 0xFFu << kFormatShift;
constexpr std::uint32_t k16BitFlag = 1;
constexpr std::int32_t kDepthOfFlags[] = {8, 16, 32};

std::int32_t unknown_depth() {
    qx::report_failed_verification(qx::Place::world_depth, "Unknown pixel format");
    return 8;
}

std::int32_t depth_of_frame(VPix** frame) {
    const auto behind = FK::GetVPixHandFrameMapping(frame);
    if (!behind) return unknown_depth();
    int depth = 8;  // stays when the format is unknown, which is reported
    QXp_PixelFormatToEffectWorldDepth(QXp_PixelFormatFromFrameFormat(behind->GetPixelFormat()), &depth);
    return depth;
}

}  // namespace

std::int32_t QXp_WorldDepth(const QX_LayerDef* world) {
    if (qx::is_gpu_world(world)) return depth_of_frame(world->platform_ref);
    if (world->world != nullptr) return qx::depth_of(world->world);
    const std::uint32_t code = world->world_flags >> kFormatShift;
    return code < 3 ? kDepthOfFlags[code] : unknown_depth();
}

int QX_GetEffectWorldDepth(const QX_LayerDef* world, int* depth) {
    *depth = QXp_WorldDepth(world);
    return 0;
}

int QXp_SetWorldDepth(QX_LayerDef* world, int depth) {
    for (std::uint32_t code = 0; code < 3; ++code) {
        if (kDepthOfFlags[code] != depth) continue;
        world->world_flags = (world->world_flags & ~kFormatMask) | code << kFormatShift;
        if (depth == 16) world->world_flags |= k16BitFlag;
        return 0;
    }
    return qx::report_failed_verification(qx::Place::set_world_depth, "Unknown pixel format");
}

int QXp_EffectWorldDepthToPixelFormat(int depth, bool gpu, std::uint32_t* format) {
    *format = kQX_PixelFormat_Bad;
    switch (depth) {
        case 8:
            if (gpu) {
                return qx::report_failed_verification(
                    qx::Place::depth_to_format, "Unsupported gpu pixel depth in QXp_EffectWorldDepthToPixelFormat()");
            }
            *format = kQX_PixelFormat_ARGB8;
            return 0;
        case 16:
            *format = gpu ? kQX_PixelFormat_GPU16 : kQX_PixelFormat_ARGB16;
            return 0;
        case 32:
            *format = gpu ? kQX_PixelFormat_GPUFloat : kQX_PixelFormat_ARGBFloat;
            return 0;
        default:
            return qx::report_failed_verification(qx::Place::depth_to_format,
                                                  "Unsupported pixel depth in QXp_EffectWorldDepthToPixelFormat()");
    }
}

int QXp_PixelFormatToEffectWorldDepth(std::uint32_t format, int* depth) {
    switch (format) {
        case kQX_PixelFormat_ARGB8:
            *depth = 8;
            return 0;
        case kQX_PixelFormat_ARGB16:
        case kQX_PixelFormat_GPU16:
            *depth = 16;
            return 0;
        case kQX_PixelFormat_ARGBFloat:
        case kQX_PixelFormat_GPUFloat:
            *depth = 32;
            return 0;
        default:
            return qx::report_failed_verification(qx::Place::format_to_depth, "Unsupported QX_PixelFormat");
    }
}

std::uint32_t QXp_PixelFormatFromFrameFormat(tesselmediatypes::PixelFormat format) {
    if (format == tesselmediatypes::kPixelFormat_ARGB_4444_8u) return kQX_PixelFormat_ARGB8;
    if (format == tesselmediatypes::kPixelFormat_ARGB_4444_15u) return kQX_PixelFormat_ARGB16;
    if (format == tesselmediatypes::kPixelFormat_ARGB_4444_32f) return kQX_PixelFormat_ARGBFloat;
    const std::uint32_t low = format.low_word();
    return low == kQX_PixelFormat_GPUFloat || low == kQX_PixelFormat_GPU16 ? low : kQX_PixelFormat_Bad;
}

namespace vn::qx::VideoFrameFactory {
bool IsEffectWorldGPUBased(const QX_LayerDef* world) { return ::qx::is_gpu_world(world); }
}  // namespace vn::qx::VideoFrameFactory
