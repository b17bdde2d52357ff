// SPDX-License-Identifier: Apache-2.0
#include "QX/world/QX_GPU.h"

#include <iterator>
#include <mutex>

#include "QX/indep/QX_WorldDepth.h"
#include "platform/RK_Renderers.h"

namespace vn::qx::GPU {
namespace {

std::mutex mutex;
Guid renderer{};

}  // namespace

Guid GetRendererID() {
    const std::lock_guard lock(mutex);
    return renderer;
}

void SetRendererID(const Guid& id) {
    const std::lock_guard lock(mutex);
    renderer = id;
    RK::SetCurrentAcceleratedSequenceRendererID(id == kSoftwareRenderer ? Guid{} : id);
}

bool IsRendererGPU() { return GetRendererID() != kSoftwareRenderer; }

boost::shared_ptr<GK::Device> GetCurrentDevice() {
    const Guid current = GetRendererID();
    for (int framework = 0; framework < static_cast<int>(std::size(kGPURenderers)); ++framework) {
        if (current == kGPURenderers[framework]) return GK::GetPrimaryDevice(GK::DeviceFramework{framework});
    }
    return {};
}

int DeviceFrameworkToQXFramework(GK::DeviceFramework framework) {
    constexpr int known[] = {3, 1, 2};
    const auto number = static_cast<std::int32_t>(framework);
    return number >= 0 && number < static_cast<int>(std::size(known)) ? known[number] : 0;
}

bool IsEffectVNGPUSDKSupported(int flags) { return (static_cast<unsigned>(flags) >> 25 & 1) != 0; }

bool IsPixelFormatGPUSupported(int format) { return static_cast<std::uint32_t>(format) == kQX_PixelFormat_GPUFloat; }

}  // namespace vn::qx::GPU
