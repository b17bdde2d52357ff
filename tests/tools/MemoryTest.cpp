// SPDX-License-Identifier: Apache-2.0
// Memory that fails at any point of a run: one line, status 1, nothing left behind.
#include <new>

#include "tests/support/TestHost.h"
#include "tests/tools/RunQx.h"
#include "tools/qx/Commands.h"

namespace {

using namespace qx::test;
using namespace qx::tool;
using MemoryDeathTest = QxTest;

TEST_F(MemoryDeathTest, FailedAllocationsEndInOneLine) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child works in this folder, not in one of its own
    gradient("a.png", 20, 12, 200);
    const std::string a = folder / "a.png", out = folder / "o.tif";
    const char* const words[] = {"qx", "comp", a.c_str(), a.c_str(), "--mode", "screen", "-j", "1", "-o", out.c_str()};
    const auto failing_run = [&](std::int64_t nth) {
        NewCounter::fail(nth);
        const int status = run_command(10, words);
        NewCounter::fail(0);
        std::exit(status);
    };
    int failed = 0, last = -1;
    const auto done_or_failed = [&](int status) {
        last = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        failed += last == kWorkFailed;
        return last == kDone || last == kWorkFailed;
    };
    for (std::int64_t nth = 1; nth < 20000; nth += 1 + nth / 40) {
        EXPECT_EXIT(failing_run(nth), done_or_failed, "^(qx: [^\n]+\n)?$") << nth;
        for (const auto& name : folder.names()) EXPECT_TRUE(name == "a.png" || name == "o.tif") << nth << name;
    }
    EXPECT_GT(failed, 50);
    EXPECT_EQ(last, kDone) << "a run needs more memory than was tried";
}

/// Where nothing may be thrown, as on a thread's way out, a fault ends the process.
TEST_F(MemoryDeathTest, WhatNobodyCatchesEndsInOneLineToo) {
    GTEST_FLAG_SET(death_test_style, "fast");
    const auto throwing = []() noexcept {
        install_terminate_handler();
        std::function<void()>([] { throw std::bad_alloc(); })();
    };
    EXPECT_EXIT(throwing(), testing::ExitedWithCode(kWorkFailed), "^qx: [^\n]+\n$");
}

}  // namespace
