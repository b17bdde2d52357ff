// SPDX-License-Identifier: Apache-2.0
// Flags of the processor: the levels that the module has routines for.
#include <algorithm>

#include "platform/TK_CPU.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

TK_CPU_Data data{};

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

}  // namespace standalone

// The flags are data and not a call, so they are filled when the library is loaded.
const TK_CPU_Data* TK_G_CPU_DataP = standalone::Filled(standalone::DetectedProcessorLevel());
