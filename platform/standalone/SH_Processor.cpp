// SPDX-License-Identifier: Apache-2.0
// Flags of the processor: the levels that the module has routines for. What its caches hold.
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "platform/TK_CPU.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

TK_CPU_Data data{};
std::size_t cache_bytes = 0;  // 0: the processor's

/// What the system says of the last cache that core 0 has a share in; 0 where it says nothing.
std::size_t LastCacheBytes() {
    for (const char* index : {"3", "2"}) {
        std::ifstream file(std::string("/sys/devices/system/cpu/cpu0/cache/index") + index + "/size");
        std::size_t kibibytes = 0;
        if (file >> kibibytes && kibibytes > 0) return kibibytes << 10;
    }
    return 0;
}

/// The C library's figure may be that of all caches of a level together, which no core has to itself.
std::size_t DetectedCacheBytes() {
    static const std::size_t bytes = [] {
        if (const std::size_t last = LastCacheBytes(); last > 0) return last;
        for (const int name : {_SC_LEVEL3_CACHE_SIZE, _SC_LEVEL2_CACHE_SIZE}) {
            if (const long found = ::sysconf(name); found > 0) return static_cast<std::size_t>(found);
        }
        return std::size_t{32} << 20;
    }();
    return bytes;
}

TK_CPU_Data* Filled(ProcessorLevel level) {
    data.flags[kTK_CPU_Vector] = level >= ProcessorLevel::vector;
    data.flags[kTK_CPU_FasterRows] = level >= ProcessorLevel::faster;
    data.flags[kTK_CPU_WidestRows] = level >= ProcessorLevel::widest;
    return &data;
}

}  // namespace

ProcessorLevel DetectedProcessorLevel() {
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("sse4.1")) return ProcessorLevel::plain;
    if (!__builtin_cpu_supports("avx2")) return ProcessorLevel::vector;
    const bool widest = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    return widest ? ProcessorLevel::widest : ProcessorLevel::faster;
}

void SetProcessorLevel(ProcessorLevel level) { Filled(std::min(level, DetectedProcessorLevel())); }

void SetCacheBytes(std::size_t bytes) { cache_bytes = bytes; }

}  // namespace standalone

std::size_t TK_GetCacheBytes() {
    return standalone::cache_bytes != 0 ? standalone::cache_bytes : standalone::DetectedCacheBytes();
}

// The flags are data and not a call, so they are filled when the library is loaded.
const TK_CPU_Data* TK_G_CPU_DataP = standalone::Filled(standalone::DetectedProcessorLevel());
