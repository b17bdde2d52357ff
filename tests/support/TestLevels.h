// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "platform/standalone/Standalone.h"

namespace qx::test {

/// Tests of one level of processors; on a processor without it they are skipped.
class AtLevel : public testing::TestWithParam<standalone::ProcessorLevel> {
protected:
    void SetUp() override {
        if (GetParam() > standalone::DetectedProcessorLevel()) GTEST_SKIP() << "this processor does not have it";
    }
};

inline std::string name_of_level(const testing::TestParamInfo<standalone::ProcessorLevel>& info) {
    constexpr const char* names[] = {"plain", "SSE4", "AVX2", "AVX512"};
    return names[static_cast<int>(info.param)];
}

}  // namespace qx::test

/// Runs the tests of a suite, which is or stems from AtLevel, at these levels.
#define QX_AT_LEVELS(Suite, ...) INSTANTIATE_TEST_SUITE_P(Levels, Suite, testing::Values(__VA_ARGS__), name_of_level)
