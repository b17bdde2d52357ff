// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"
#include "platform/tesselmediatypes.h"

/// Opaque record of a frame that the host holds; a handle is a pointer to its address.
struct VPix;

namespace FK {

/// Format of the frame behind a handle. @return false when no frame is behind it.
PLATFORM_EXPORT bool GetFramePixelFormat(VPix** handle, tesselmediatypes::PixelFormat* format);

/// Gives a frame's handle back to the host.
PLATFORM_EXPORT void DisposeVPixFromVideoFrame(VPix** handle);

}  // namespace FK
