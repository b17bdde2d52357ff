// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"
#include "platform/tesselmediatypes.h"

/// Opaque record of a frame that the host holds; a handle is a pointer to its address.
struct VPix;

namespace FK {

/// Format of the frame behind a handle. @return false when no frame is behind it.
PLATFORM_EXPORT bool GetFramePixelFormat(VPix** handle, tesselmediatypes::PixelFormat* format);

/// Address of the pixels of a frame that lives on the GPU, in the device's memory.
/// @return false when no frame is behind the handle, or one in the processor's memory
PLATFORM_EXPORT bool GetFrameDeviceMemory(VPix** handle, void** memory);

/// Gives a frame's handle back to the host.
PLATFORM_EXPORT void DisposeVPixFromVideoFrame(VPix** handle);

}  // namespace FK
