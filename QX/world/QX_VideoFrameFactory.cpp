// SPDX-License-Identifier: Apache-2.0
// Worlds on the memory of frames, and frames on that of worlds.
#include "QX/world/QX_VideoFrameFactory.h"

#include <algorithm>
#include <cstddef>

#include "QX/indep/QX_Wrapping.h"
#include "QX/world/QX_VideoFrame.h"

namespace vn::qx::VideoFrameFactory {
namespace {

using tesselmediatypes::PixelAspectRatio;
using tesselmediatypes::PixelFormat;

PixelFormat format_of(int depth) {
    switch (depth) {
        case 8:
            return tesselmediatypes::kPixelFormat_ARGB_4444_8u;
        case 16:
            return tesselmediatypes::kPixelFormat_ARGB_4444_15u;
        case 32:
            return tesselmediatypes::kPixelFormat_ARGB_4444_32f;
        default:
            return tesselmediatypes::kPixelFormat_None;
    }
}

/// By the bytes of a pixel alone.
int depth_of(PixelFormat format) {
    const auto depth = static_cast<int>((tesselmediatypes::BytesPerPixel(format) & ~3u) * 2);
    return depth == 8 || depth == 16 || depth == 32 ? depth : 0;
}

PixelAspectRatio aspect_of(const QX_LayerDef& record) {
    const auto numerator = static_cast<std::int32_t>(record.pix_aspect_num);
    return {static_cast<std::uint32_t>(std::max(numerator, 1)), record.pix_aspect_den == 0 ? 1 : record.pix_aspect_den};
}

template <class Pixel>
QX_World* world_on(const FK::IVideoFrame2DPixelMemoryAccess& memory, const InterfaceRef<MK::IVideoFrame>& frame) {
    return new QX_World_IVideoFrame<Pixel>(memory.GetPixels(), memory.GetWidth(), memory.GetHeight(),
                                           memory.GetRowBytes(), frame);
}

InterfaceRef<MK::IVideoFrame> frame_on(QX_World* world, const boost::shared_ptr<QX_World>& kept,
                                       const tesselmediatypes::color::ColorSpace& color_space, bool flip,
                                       const PixelFormat* format) {
    if (world == nullptr) return {};
    const int depth = world->Depth(), width = world->width, height = world->height;
    const std::ptrdiff_t rowbytes = world->rowbytes;
    const std::ptrdiff_t first = flip ? rowbytes * (std::ptrdiff_t{height} - 1) : 0;
    const auto row = static_cast<std::uint64_t>(rowbytes < 0 ? -rowbytes : rowbytes);
    const InterfaceRef<RecycledMemoryVideoFrame> made(new RecycledMemoryVideoFrame(RecycledMemoryFields{
        .size = row * static_cast<std::uint64_t>(height),
        .format = format != nullptr ? *format : format_of(depth),
        .bounds = {world->origin_x, world->origin_y, ::qx::wrapping_difference(width, world->origin_x),
                   ::qx::wrapping_difference(height, world->origin_y)},
        .stored_size = {width, height, width, height},
        .aspect = aspect_of(*world),
        .field_type = 0,
        .color_space = color_space,
        .world = kept,
        .pixels = static_cast<std::byte*>(world->data) + first,
        .stride = static_cast<std::int32_t>(flip ? -rowbytes : rowbytes),
        .pixel_bytes = static_cast<std::uint32_t>(depth) / 2,
    }));
    return made.query<MK::IVideoFrame>();
}

}  // namespace

InterfaceRef<MK::IVideoFrame> CreateFromQXWorld(QX_World* world, const tesselmediatypes::color::ColorSpace& color_space,
                                                bool flip, const PixelFormat* format) {
    return frame_on(world, {}, color_space, flip, format);
}

InterfaceRef<MK::IVideoFrame> CreateFromQXWorld(const boost::shared_ptr<QX_World>& world,
                                                const tesselmediatypes::color::ColorSpace& color_space, bool flip,
                                                const PixelFormat* format) {
    return frame_on(world.get(), world, color_space, flip, format);
}

QX_World* CreateFromIVideoFrame(const InterfaceRef<MK::IVideoFrame>& given) {
    if (!given) return nullptr;
    InterfaceRef<MK::IVideoFrame> frame = given;
    const int depth = depth_of(frame->GetPixelFormat());
    if (depth == 0) return nullptr;
    if (frame.query<FK::IVideoFrameGPUMemoryAccess>()) {
        frame = FK::GPUFrameManipulators::ReadBackFrame(frame, format_of(depth), frame->GetBounds(),
                                                        frame->GetPixelAspectRatio(), frame->GetFieldType(), 4, 0);
    }
    const auto block = frame.query<FK::IVideoFrameMemoryAccess>();
    const auto pixels = frame.query<FK::IVideoFrame2DPixelMemoryAccess>();
    if (!block || !pixels) throw tesselcore::classref::NullInterfaceException();
    if (pixels->GetWidth() < 1 || pixels->GetHeight() < 1) return nullptr;
    if (depth == 8) return world_on<QX_Pixel8>(*pixels.get(), frame);
    if (depth == 16) return world_on<QX_Pixel16>(*pixels.get(), frame);
    return world_on<QX_PixelFloat>(*pixels.get(), frame);
}

}  // namespace vn::qx::VideoFrameFactory
