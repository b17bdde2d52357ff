// SPDX-License-Identifier: Apache-2.0
// Memory that fails at any point of a run: one line, status 1, nothing left behind.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "tests/pictures/Support.h"
#include "tests/support/TestHost.h"
#include "tools/qx/Commands.h"
#include "tools/qx/terminal/Messages.h"

namespace {

using qx::test::Folder;
using qx::test::NewCounter;

TEST(MemoryDeathTest, FailedAllocationsEndInOneLine) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the child works in this folder, not in one of its own
    const Folder folder;
    qx::test::write_bytes(folder / "a.png", 20, 12, [](int x, int y) { return qx::test::argb(200, x, y, 9); });
    const std::string a = folder / "a.png", out = folder / "o.tif";
    const char* const arguments[] = {"qx",     "comp", a.c_str(), a.c_str(), "--mode",
                                     "screen", "-j",   "1",       "-o",      out.c_str()};
    const auto failing_run = [&](std::int64_t nth) {
        NewCounter::fail(nth);
        const int status = qx::tool::run_command(10, arguments);
        NewCounter::fail(0);
        std::exit(status);
    };
    int failed = 0, last = -1;
    const auto done_or_failed = [&](int status) {
        last = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        failed += last == qx::tool::kWorkFailed ? 1 : 0;
        return last == qx::tool::kDone || last == qx::tool::kWorkFailed;
    };
    for (std::int64_t nth = 1; nth < 6000; nth += 1 + nth / 40) {
        SCOPED_TRACE(nth);
        EXPECT_EXIT(failing_run(nth), done_or_failed, "^(qx: [^\n]+\n)?$");
        for (const auto& name : folder.names()) EXPECT_TRUE(name == "a.png" || name == "o.tif") << name;
    }
    EXPECT_GT(failed, 50);
    EXPECT_EQ(last, qx::tool::kDone) << "a run needs more memory than was tried";
}

/// Where nothing may be thrown, as on a thread's way out, a fault ends the process.
TEST(MemoryDeathTest, WhatNobodyCatchesEndsInOneLineToo) {
    GTEST_FLAG_SET(death_test_style, "fast");
    const auto throwing = [] {
        qx::tool::install_terminate_handler();
        const std::function<void()> fault = [] { throw std::bad_alloc(); };
        [&]() noexcept { fault(); }();
    };
    EXPECT_EXIT(throwing(), testing::ExitedWithCode(qx::tool::kWorkFailed), "^qx: [^\n]+\n$");
}

}  // namespace
