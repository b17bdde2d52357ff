// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform_Export.h"

namespace tesselcore::debug {

/// Tells the user of an assertion that does not hold, as a report with "message (condition, in function, file:line)".
/// Throws nothing, also when memory is short. Any thread.
/// @return whether the program is to stop in the debugger: never in the stand-alone host
PLATFORM_EXPORT bool BreakAfterAssertDialog(const char* condition, const char* function, const char* file, int line,
                                            const char* message);
PLATFORM_EXPORT bool IsDebuggerAttached();

}  // namespace tesselcore::debug
