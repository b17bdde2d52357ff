// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"

/// Starts the library: builds the process-wide tables, fills the table of routines by the processor's flags and
/// installs the acceleration layer. Alone on one thread, before anything else.
/// @return 0 or the first error; a failed start leaves what it did, and the host treats it as fatal
QX_EXPORT int QX_Birth(void);

/// Stops the library and frees its scratch. Alone on one thread. @return 0 or the first error
QX_EXPORT int QX_Death(void);

/// Shrinks the scratch buffers to their start size. Not while a compositing routine runs. @return 0 or 4
QX_EXPORT int QX_FreeUpSomeMemory(void);

/// Zeros that a sampler outside its table reads.
QX_EXPORT extern const double QX_G_ZeroData[16];

/// Vector constants, loadable as 16 aligned bytes.
struct alignas(16) QX_FloatQuad {
    float lane[4];
};
struct alignas(16) QX_Int32Quad {
    std::int32_t lane[4];
};
struct alignas(16) QX_Mask128 {
    std::uint32_t lane[4];
};
QX_EXPORT extern const QX_FloatQuad QX_G_vf255;
QX_EXPORT extern const QX_FloatQuad QX_G_vfHalf;
QX_EXPORT extern const QX_Int32Quad QX_G_vi128_32;
QX_EXPORT extern const QX_Int32Quad QX_G_viLoWordMask;
QX_EXPORT extern const QX_Int32Quad QX_G_viLoByteMask32;
QX_EXPORT extern const QX_Mask128 QX_G_AlphaMask32;  ///< alpha of a float pixel
QX_EXPORT extern const QX_Mask128 QX_G_BGRMask32;    ///< its colours
