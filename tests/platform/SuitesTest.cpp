// SPDX-License-Identifier: Apache-2.0
#include "platform/TK_Suites.h"

#include "tests/support/Test.h"

namespace {

using namespace qx::test;

TEST(BasicSuite, FindsNoOtherAndGivesMemory) {
    const QSBasicSuite* basic = nullptr;
    ASSERT_TRUE(TK_QS_GetQSBasicSuite(&basic) == 0 && basic != nullptr);
    const void* suite = "";
    EXPECT_TRUE(basic->AcquireSuite("QX Iterate8 Suite", 1, &suite) != 0 && suite == nullptr);
    EXPECT_NE(basic->Undefined(), 0);
    EXPECT_EQ(basic->ReleaseSuite("QX Iterate8 Suite", 1), 0);
    EXPECT_TRUE(basic->IsEqual("a", "a") != 0 && basic->IsEqual("a", "b") == 0);
    const auto before = blocks_in_use();
    void* block = nullptr;
    ASSERT_EQ(basic->AllocateBlock(4, &block), 0);
    std::memcpy(block, "abcd", 4);
    void* larger = block;
    EXPECT_EQ(short_of_memory(1, [&] { return basic->ReallocateBlock(block, 400, &larger); }), 4);
    EXPECT_EQ(larger, nullptr);
    ASSERT_EQ(basic->ReallocateBlock(block, 400, &larger), 0);
    EXPECT_TRUE(std::memcmp(larger, "abcd", 4) == 0 && basic->FreeBlock(larger) == 0);
    EXPECT_EQ(blocks_in_use(), before);
    EXPECT_EQ(short_of_memory(1, [&] { return basic->AllocateBlock(4, &block); }), 4);
}

TEST(BasicSuite, CanBeAnotherOrNone) {
    const QSBasicSuite own{};
    const QSBasicSuite* basic = nullptr;
    standalone::SetBasicSuite(&own);
    EXPECT_TRUE(TK_QS_GetQSBasicSuite(&basic) == 0 && basic == &own);
    standalone::SetBasicSuite(nullptr, 13);
    EXPECT_TRUE(TK_QS_GetQSBasicSuite(&basic) == 13 && basic == nullptr);
    standalone::SetBasicSuite(nullptr);
    EXPECT_EQ(TK_QS_GetQSBasicSuite(&basic), 0);
}

}  // namespace
