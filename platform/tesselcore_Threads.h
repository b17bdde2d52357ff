// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/function.hpp>
#include <cstdint>
#include <memory>

#include "platform/Platform_Export.h"

namespace tesselcore::threads {

/// Calls task(i) once for each i in [0, count), on any threads (the caller's may be one), in any order;
/// returns when all have ended. If tasks throw, one of the exceptions reaches the caller and tasks that
/// have not begun may be left out. What the tasks wrote is visible to the caller on return.
PLATFORM_EXPORT void ExecuteCPUBoundTaskOnAllProcessors(const boost::function<void(int)>& task, int count);

/// The same, save that task(0) always runs on the caller's own thread: whatever has to be asked there (whether the work
/// is to stop, say) is asked by it.
PLATFORM_EXPORT void ExecuteCPUBoundTaskOnAllProcessorsWithProcessorIndex(const boost::function<void(int)>& task,
                                                                          int count);

/// What runs the tasks of the two calls above.
class PLATFORM_EXPORT CPUBoundExecutor {
public:
    explicit CPUBoundExecutor(int processors) : processors_(processors) {}
    /// Parts that work is cut into, 1 and up; not the number of cores. Results may depend on it.
    int NumberOfProcessors() const { return processors_; }

private:
    const int processors_;
};

/// Never null. The number of processors is that of this moment. Throws std::bad_alloc.
PLATFORM_EXPORT std::shared_ptr<const CPUBoundExecutor> GetCPUBoundExecutor();

/// A number that no other living thread has.
PLATFORM_EXPORT std::uint32_t GetCurrentThreadID();

}  // namespace tesselcore::threads
