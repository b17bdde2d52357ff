// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "platform/Platform_Export.h"

/// Times of parts of the program, for those who look for what is slow. Nothing else changes by it.
namespace tesselcore::debug {

/// What the scopes of one name took. Lives as long as the program.
class ProfileDataLog;

class PLATFORM_EXPORT CodeProfilerManager {
public:
    static bool IsConditionalProfiling();
    static int GetProfilingVolume();  ///< logs above it are not kept
    static ProfileDataLog* CreateNewProfileDataLog(const std::string& name, int volume);
};

/// Times a scope. With a null log it does nothing.
class PLATFORM_EXPORT CodeProfiler {
public:
    explicit CodeProfiler(ProfileDataLog* log);
    ~CodeProfiler();
    CodeProfiler(const CodeProfiler&) = delete;
    CodeProfiler& operator=(const CodeProfiler&) = delete;

private:
    ProfileDataLog* log_;
    std::int64_t start_ = 0;
};

}  // namespace tesselcore::debug
