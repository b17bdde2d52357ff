// SPDX-License-Identifier: Apache-2.0
// Frames that the host holds. Without a GPU there are only fake ones, which have a format and no pixels.
#include <map>
#include <memory>
#include <mutex>

#include "platform/FK_Frames.h"
#include "platform/standalone/Standalone.h"

struct VPix {
    tesselmediatypes::PixelFormat format;
};

namespace standalone {
namespace {

struct Frame {
    VPix pix;
    VPix* address;  ///< the handle is the address of this
};

std::mutex mutex;

std::map<VPix**, std::unique_ptr<Frame>>& Frames() {
    static std::map<VPix**, std::unique_ptr<Frame>> frames;
    return frames;
}

bool LivesOnGPU(tesselmediatypes::PixelFormat format) {
    using namespace tesselmediatypes;
    return !(format == kPixelFormat_ARGB_4444_8u || format == kPixelFormat_ARGB_4444_15u ||
             format == kPixelFormat_ARGB_4444_32f);
}

std::uint64_t BytesPerPixel(tesselmediatypes::PixelFormat format) {
    const auto bits = static_cast<std::uint64_t>(tesselmediatypes::ComponentBits(format));
    const std::uint32_t properties = format.properties(), layout = properties >> 8 & 7, packing = properties >> 11 & 3;
    if (packing == 0 && layout != 0) return bits * 4 / 8;
    if (packing == 1) return (bits == 10 ? 0 : bits) * 2 / 8;
    if (bits == 10) return 4;
    return packing == 0 ? bits * 3 / 8 : 0;
}

}  // namespace

VPix** NewFakeFrame(tesselmediatypes::PixelFormat format) {
    auto frame = std::make_unique<Frame>(Frame{{format}, nullptr});
    frame->address = &frame->pix;
    VPix** handle = &frame->address;
    const std::lock_guard lock(mutex);
    Frames()[handle] = std::move(frame);
    return handle;
}

int LiveFakeFrames() {
    const std::lock_guard lock(mutex);
    return static_cast<int>(Frames().size());
}

}  // namespace standalone

namespace FK {

bool GetFramePixelFormat(VPix** handle, tesselmediatypes::PixelFormat* format) {
    const std::lock_guard lock(standalone::mutex);
    const auto found = standalone::Frames().find(handle);
    if (found == standalone::Frames().end()) return false;
    *format = found->second->pix.format;
    return true;
}

bool GetFrameDeviceMemory(VPix** handle, void** memory) {
    const std::lock_guard lock(standalone::mutex);
    const auto found = standalone::Frames().find(handle);
    if (found == standalone::Frames().end() || !standalone::LivesOnGPU(found->second->pix.format)) return false;
    *memory = found->second.get();  // never followed: an address that is the frame's own
    return true;
}

void DisposeVPixFromVideoFrame(VPix** handle) {
    const std::lock_guard lock(standalone::mutex);
    standalone::Frames().erase(handle);
}

}  // namespace FK

namespace tesselmediatypes {

std::uint64_t PixelFormatSize(PixelFormat format, int width, int height) {
    if (width <= 0 || height <= 0) return 0;
    const auto pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    return standalone::BytesPerPixel(format) * pixels;
}

}  // namespace tesselmediatypes
