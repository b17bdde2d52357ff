// SPDX-License-Identifier: Apache-2.0
// Flags of the processor: the levels that the module has routines for. What its caches hold.
#include <unistd.h>

#include <algorithm>

#include "platform/TK_CPU.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

TK_CPU_Data data{};
std::size_t cache_bytes = 0;  // 0: the processor's

std::size_t DetectedCacheBytes() {
    static const std::size_t bytes = [] {
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
