// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_Records.h"
#include "platform/tesselmediatypes.h"

/// Depth of a record: 8, 16 or 32. A GPU world is asked by its frame's format, a record with a world
/// object by that object, any other by the high byte of its flags. What cannot be told is reported and
/// gives 8. `world` may not be null.
QX_EXPORT std::int32_t QXp_WorldDepth(const QX_LayerDef* world);

/// Stores QXp_WorldDepth in `*depth`. @return 0
QX_EXPORT int QX_GetEffectWorldDepth(const QX_LayerDef* world, int* depth);

/// Writes a depth into `world_flags`: the high byte takes the format code and bit 0 rises for 16.
/// @return 0, or 3 after a report for a depth that is none
QX_EXPORT int QXp_SetWorldDepth(QX_LayerDef* world, int depth);

/// Pixel-format codes: four characters as they lie in memory.
inline constexpr std::uint32_t kQX_PixelFormat_ARGB8 = tesselmediatypes::FourCC("argb");
inline constexpr std::uint32_t kQX_PixelFormat_ARGB16 = tesselmediatypes::FourCC("vn16");
inline constexpr std::uint32_t kQX_PixelFormat_ARGBFloat = tesselmediatypes::FourCC("vn32");
inline constexpr std::uint32_t kQX_PixelFormat_GPU16 = tesselmediatypes::FourCC("@CDa");
inline constexpr std::uint32_t kQX_PixelFormat_GPUFloat = tesselmediatypes::FourCC("@CDA");
inline constexpr std::uint32_t kQX_PixelFormat_Bad = tesselmediatypes::FourCC("badf");

/// Code of a depth on the processor or the GPU (which has none for 8 bits).
/// @return 0, or 3 after a report, with "badf" in `*format`
QX_EXPORT int QXp_EffectWorldDepthToPixelFormat(int depth, bool gpu, std::uint32_t* format);

/// Depth of a code. @return 0, or 3 after a report, with `*depth` as it was
QX_EXPORT int QXp_PixelFormatToEffectWorldDepth(std::uint32_t format, int* depth);

/// Code of a host frame's format: the processor formats are compared whole, the GPU ones by their low
/// word, and everything else is "badf".
QX_EXPORT std::uint32_t QXp_PixelFormatFromFrameFormat(tesselmediatypes::PixelFormat format);

namespace vn::qx::VideoFrameFactory {
/// True when the record stands for a GPU frame.
QX_EXPORT bool IsEffectWorldGPUBased(const QX_LayerDef* world);
}  // namespace vn::qx::VideoFrameFactory
