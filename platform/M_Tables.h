// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "platform/Platform_Export.h"

/// Gives the process-wide 8-bit colour tables, building them on first use; each 65536 bytes, entry
/// (alpha * 256 + channel). The multiply table holds channel * alpha / 255 rounded; the divide table
/// min(255, (channel * 255 + alpha / 2) / alpha), and 255 throughout row 0.
/// @param make      asks for the tables; `again` and `flags` are accepted and not used
/// @param multiply  may be null, as `divide` may
/// @return 0, or 4 when memory is short. Every call is paired with one of M_UnprepareFCMD.
PLATFORM_EXPORT int M_PrepareFCMD(bool make, bool again, int flags, const std::uint8_t** multiply,
                                  const std::uint8_t** divide);
PLATFORM_EXPORT int M_UnprepareFCMD();

/// The trigonometry table of old effects: sine of i * 2 pi / 1024 for i in 0..1024, on the scale 65536.
PLATFORM_EXPORT int M_PrepareFTrig(bool make, bool again, int flags, const std::int32_t** table);
PLATFORM_EXPORT int M_UnprepareFTrig();

/// Table of uniform 32-bit random values, the same in every run; its length is a prime. Owned by the host.
PLATFORM_EXPORT int RND_GetPrimeSizedTable(const std::uint32_t** table, std::int32_t* count);

/// Remainder of x / y with the sign of x, as the C library's fmod; 0 when y is 0.
PLATFORM_EXPORT double M_fmod(double x, double y);
