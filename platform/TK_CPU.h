// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Platform_Export.h"

/// Flags of the processor, non-zero when the feature is there and to be used.
/// Index 2 is the vector unit (SSE4.1), index 6 the faster rows (AVX2). A host may have more than the first seven:
/// index 7 of this one's is AVX-512 with the sets F, BW, DQ and VL.
struct TK_CPU_Data {
    std::int32_t flags[8];
};
inline constexpr int kTK_CPU_Vector = 2;
inline constexpr int kTK_CPU_FasterRows = 6;
inline constexpr int kTK_CPU_WidestRows = 7;

PLATFORM_EXPORT extern const TK_CPU_Data* TK_G_CPU_DataP;

/// Bytes that the processor's caches hold, for stores of what is larger.
PLATFORM_EXPORT std::size_t TK_GetCacheBytes();

/// Number of bands that parallel work is cut into; not the number of cores. @return 0 or an error code.
PLATFORM_EXPORT int TK_GetNumThreads(std::int32_t* count);
