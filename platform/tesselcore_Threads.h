// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/function.hpp>
#include <cstdint>

#include "platform/Platform_Export.h"

namespace tesselcore::threads {

/// Calls task(i) once for each i in [0, count), on any threads (the caller's may be one), in any order;
/// returns when all have ended. If tasks throw, one of the exceptions reaches the caller and tasks that
/// have not begun may be left out. What the tasks wrote is visible to the caller on return.
PLATFORM_EXPORT void ExecuteCPUBoundTaskOnAllProcessors(const boost::function<void(int)>& task, int count);

/// A number that no other living thread has.
PLATFORM_EXPORT std::uint32_t GetCurrentThreadID();

}  // namespace tesselcore::threads
