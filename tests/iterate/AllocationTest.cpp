// SPDX-License-Identifier: Apache-2.0
// What the accelerated iterate family asks of memory.
#include <gtest/gtest.h>

#include "QX/iterate/QX_Iterate.h"
#include "tests/iterate/IterateSupport.h"
#include "tests/support/TestHost.h"

namespace {

using qx::test::Born;
using qx::test::NewCounter;
using qx::test::Picture;
using qx::test::Reports;
using qx::test::WithExecutor;

int nothing(void*, std::int32_t, std::int32_t, void*, void*) { return 0; }

TEST(AcceleratedIterate, AllocationsDoNotGrowWithRowsOrPixels) {
    const Born born(32);
    const WithExecutor in_turn([](const boost::function<void(int)>& task, int count) {
        for (int i = 0; i < count; ++i) task(i);
    });
    const auto allocations = [](int width, int height) {
        Picture<QX_Pixel8> world(width, height);
        const std::int64_t before = NewCounter::count(), host = standalone::Memory().allocations;
        EXPECT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record), 0);
        return NewCounter::count() - before + standalone::Memory().allocations - host;
    };
    const std::int64_t few = allocations(8, 64);
    EXPECT_GT(few, 0);
    EXPECT_EQ(allocations(8, 2000), few);
    EXPECT_EQ(allocations(900, 64), few);
}

TEST(AcceleratedIterate, EveryAllocationFailsOnceAndGivesFour) {
    const Born born(8);
    Reports reports;
    Picture<QX_Pixel8> world(4, 40);
    // The pool sets itself up on first use; what it allocates then is not the call's.
    ASSERT_EQ(QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record), 0);
    int failures = 0;
    for (int nth = 1; nth < 20; ++nth) {
        NewCounter::fail(nth);
        const int code = QX_Iterate(nullptr, 0, 0, nullptr, nullptr, nullptr, &nothing, &world.record);
        const bool spent = code != 0;
        NewCounter::fail(0);
        if (spent) {
            EXPECT_EQ(code, 4);
        }
        failures += spent ? 1 : 0;
    }
    EXPECT_GE(failures, 1);
}

}  // namespace
