// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_VideoFrame.h"

#include <cstring>

void* RecycledMemoryVideoFrameBase::GetMemory() const {
    const std::ptrdiff_t lowest = fields_.stride < 0 ? std::ptrdiff_t{fields_.stride} * (GetHeight() - 1) : 0;
    return static_cast<std::byte*>(fields_.pixels) + lowest;
}

void RecycledMemoryVideoFrameBase::Clear() {
    auto* row = static_cast<std::byte*>(fields_.pixels);
    const auto bytes = static_cast<std::size_t>(GetWidth()) * fields_.pixel_bytes;
    for (std::int32_t y = 0; y < GetHeight(); ++y, row += fields_.stride) std::memset(row, 0, bytes);
}

void* RecycledMemoryVideoFrameBase::find_interface(const Guid& id) noexcept {
    if (id == MK::IVideoFrame::kID) return static_cast<MK::IVideoFrame*>(this);
    if (id == FK::IVideoFrameMemoryAccess::kID) return static_cast<FK::IVideoFrameMemoryAccess*>(this);
    if (id == FK::IVideoFrame2DPixelMemoryAccess::kID) return static_cast<FK::IVideoFrame2DPixelMemoryAccess*>(this);
    if (id == MK::IVideoFrameClearable::kID) return static_cast<MK::IVideoFrameClearable*>(this);
    return nullptr;
}
