// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"
#include "platform/tesselcore_Guid.h"

namespace RK {

/// Tells the library of renderers which one accelerates sequences now; all zeros is none. It does not call back, since
/// the caller holds its lock. May throw.
PLATFORM_EXPORT void SetCurrentAcceleratedSequenceRendererID(const Guid& id);

}  // namespace RK
