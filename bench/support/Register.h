// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "bench/support/Library.h"

namespace qx::bench {

inline constexpr standalone::ProcessorLevel kLevels[] = {
    standalone::ProcessorLevel::plain, standalone::ProcessorLevel::vector, standalone::ProcessorLevel::faster,
    standalone::ProcessorLevel::widest};

/// Adds the bench FAMILY/WORK/DEPTH/LEVEL, which calls run(state).
template <class Run>
void add_bench(const std::string& family, const std::string& work, int depth, standalone::ProcessorLevel level,
               const Run& run) {
    const std::string name = family + "/" + work + "/" + std::to_string(depth) + "/" + name_of(level);
    benchmark::RegisterBenchmark(name.c_str(), run);
}

}  // namespace qx::bench
