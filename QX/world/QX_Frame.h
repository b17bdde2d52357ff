// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"

/// Pixels of a world: up to 300 KB from the runtime's heap, larger blocks from the host's recycled memory.
/// Makes the host purge its caches and tries again before it gives up; never reports.
/// @return 0 or 4; `*out` is the block, aligned to at least 8, or null. Any thread.
QX_EXPORT int BM_AllocateFrameQuiet(std::size_t size, int reserved, void** out);
/// @param size  as at allocation: it tells where the block came from
QX_EXPORT int BM_FreeFrame(void* block, std::size_t size);

/// Shows the user that a frame could not be had; error 0 shows nothing. Never on a path that tries again.
QX_EXPORT int BM_ReportWorldAllocationFailure(int error, int rowbytes, short width, short height, short bits_per_pixel);
QX_EXPORT void BMp_ReportWorldAllocFail(short site, int error, int rowbytes, const M_Rect* rect, int bits_per_pixel,
                                        std::size_t size);

namespace qx {

inline constexpr std::size_t kRecycledThreshold = 300u * 1024;  ///< strictly larger blocks are recycled memory

}  // namespace qx
