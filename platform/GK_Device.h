// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>

#include "platform/Platform_Export.h"
#include "platform/tesselmediatypes.h"

namespace GK {

/// A way to a GPU; which product a number stands for is the host's business.
enum class DeviceFramework : std::int32_t {};

class Device {
public:
    virtual ~Device() = default;
    /// One thread at a time has the device, until it gives it free.
    virtual void AcquireExclusiveAccess() = 0;
    virtual void ReleaseExclusiveAccess() = 0;
    /// Bytes to which rows of frames of a format are aligned.
    virtual std::size_t GetRowAlignment(tesselmediatypes::PixelFormat format) const = 0;
};

/// The device that the host prefers; null where it has none.
PLATFORM_EXPORT boost::shared_ptr<Device> GetPrimaryDevice(DeviceFramework framework);

}  // namespace GK
