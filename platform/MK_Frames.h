// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "platform/Platform_Export.h"
#include "platform/tesselcore_ClassRef.h"
#include "platform/tesselmediatypes.h"

namespace MK {

/// Where a frame's pixels lie, seen from its origin, and how many there are.
struct FrameBounds {
    std::int32_t left, top, width, height;
};

/// A frame of the host's, on the processor or the GPU.
class IVideoFrame : public tesselcore::classref::Unknown {
public:
    static constexpr Guid kID{0x2F1C6A34, 0x8E07, 0x4B5D, {0x91, 0x3A, 0x60, 0xD4, 0x7B, 0x1E, 0x52, 0xC8}};
    virtual tesselmediatypes::PixelFormat GetPixelFormat() const = 0;
    virtual FrameBounds GetBounds() const = 0;
    virtual tesselmediatypes::PixelAspectRatio GetPixelAspectRatio() const = 0;
    virtual std::int32_t GetFieldType() const = 0;
    virtual tesselmediatypes::color::ColorSpace GetColorSpace() const = 0;

protected:
    ~IVideoFrame() = default;
};

class IVideoFrameClearable : public tesselcore::classref::Unknown {
public:
    static constexpr Guid kID{0x71D0E95B, 0x43C2, 0x4F18, {0xA6, 0x0D, 0x3C, 0x85, 0xF2, 0x97, 0x1A, 0x4E}};
    /// All pixels become 0.
    virtual void Clear() = 0;

protected:
    ~IVideoFrameClearable() = default;
};

struct WorkingSpace {
    /// Primaries of BT.709 beyond their range.
    PLATFORM_EXPORT static tesselmediatypes::color::ColorSpace OR709();
};

}  // namespace MK
