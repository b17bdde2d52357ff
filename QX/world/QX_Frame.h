// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <tuple>

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

/// An owning world for a plug-in, described by `out`. `clear` asks for zeroed pixels.
/// @return 0; 516 for a null record or an invalid size, 515 for a non-zero `reserved`, 4, or 3 for a bad depth;
///         `out` is then as it was
QX_EXPORT int QX_NewEffectWorld(int width, int height, int depth, char reserved, char clear, QX_LayerDef* out);
/// Frees a world of QX_NewEffectWorld (or a GPU frame so marked) and zeroes the record.
/// @return 0, or 516 after a report for a null record or one that was not made so
QX_EXPORT int QX_DisposeEffectWorld(QX_LayerDef* world);

namespace qx {

inline constexpr int kMaxSide = 30000;                          ///< width and height lie in 1 to this
inline constexpr std::size_t kRecycledThreshold = 300u * 1024;  ///< strictly larger blocks are recycled memory

constexpr bool valid_size(int width, int height) {
    return width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide;
}

namespace numeric_limits {

/// Could a frame be allocated at all? False comes with a text for the user, true with an empty one.
/// @param alignment  of a row in bytes, a power of two
QX_EXPORT std::tuple<bool, std::wstring> CanAllocateCPUFrame(int width, int height, short depth, std::size_t alignment);
QX_EXPORT std::tuple<bool, std::wstring> CanAllocateGPUFrame(int width, int height, short depth, std::size_t alignment);

}  // namespace numeric_limits
}  // namespace qx
