// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/indep/QX_Export.h"
#include "platform/GK_Device.h"
#include "platform/tesselcore_Guid.h"

/// Which renderer is current, and the device that goes with it. The library itself works on the processor alone. Any
/// thread.
namespace vn::qx::GPU {

/// Renderers on devices of frameworks 0 to 3, and the one on the processor.
inline constexpr Guid kGPURenderers[] = {
    {0x7EE0AB59, 0x822D, 0x44CC, {0xAC, 0x10, 0x16, 0x27, 0x9D, 0x04, 0x10, 0x16}},
    {0xBE93941A, 0x7488, 0x4117, {0x8A, 0x46, 0x7E, 0x35, 0x96, 0x95, 0x03, 0x07}},
    {0x6ED1497E, 0x17AD, 0x4A5B, {0x84, 0x6F, 0x52, 0xBB, 0x81, 0xE2, 0x01, 0x04}},
    {0xC4471277, 0xD5D1, 0x4EA7, {0xA3, 0x6C, 0xB9, 0x3A, 0xC7, 0x6D, 0xFD, 0x41}}};
inline constexpr Guid kSoftwareRenderer{0xF33089E2, 0x1EDE, 0x47C1, {0x8A, 0x9E, 0xB2, 0x32, 0xBB, 0x1C, 0xC1, 0xA4}};

/// The current renderer; all zeros until one is set.
QX_EXPORT Guid GetRendererID();
/// Sets it, and tells the library of renderers, which hears zeros for the software renderer. That library must not come
/// back from within its call; what it throws passes on, with the new identity stored.
QX_EXPORT void SetRendererID(const Guid& id);
/// True for every identity but the software renderer's, also before one is set.
QX_EXPORT bool IsRendererGPU();

/// The device of the current renderer; null where there is none.
QX_EXPORT boost::shared_ptr<GK::Device> GetCurrentDevice();

/// The number by which effects know a framework; 0 for an unknown one.
QX_EXPORT int DeviceFrameworkToQXFramework(GK::DeviceFramework framework);
/// Whether the flags of an effect have bit 25.
QX_EXPORT bool IsEffectVNGPUSDKSupported(int flags);
/// True for the code "@CDA" alone.
QX_EXPORT bool IsPixelFormatGPUSupported(int format);

}  // namespace vn::qx::GPU
