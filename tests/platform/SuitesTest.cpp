// SPDX-License-Identifier: Apache-2.0
#include "platform/TK_Suites.h"

#include "tests/support/Test.h"

namespace {

using namespace qx::test;

const QSBasicSuite* basic_suite() {
    const QSBasicSuite* basic = nullptr;
    EXPECT_EQ(TK_QS_GetQSBasicSuite(&basic), 0);
    return basic;
}

TEST(BasicSuite, ComparesNamesAndGivesMemory) {
    const QSBasicSuite* basic = basic_suite();
    EXPECT_NE(basic->Undefined(), 0);
    EXPECT_TRUE(basic->IsEqual("a", "a") != 0 && basic->IsEqual("a", "b") == 0 && basic->IsEqual(nullptr, "a") == 0);
    const auto before = blocks_in_use();
    void* block = nullptr;
    ASSERT_EQ(basic->AllocateBlock(4, &block), 0);
    std::memcpy(block, "abcd", 4);
    void* larger = block;
    EXPECT_EQ(short_of_memory(1, [&] { return basic->ReallocateBlock(block, 400, &larger); }), 4);
    EXPECT_EQ(larger, nullptr);
    ASSERT_EQ(basic->ReallocateBlock(block, 400, &larger), 0);
    EXPECT_TRUE(std::memcmp(larger, "abcd", 4) == 0 && basic->FreeBlock(larger) == 0);
    EXPECT_TRUE(basic->FreeBlock(nullptr) == 0 && basic->AllocateBlock(4, nullptr) == 516);
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

class Broker : public testing::Test {
protected:
    Broker() { standalone::ForgetSuites(); }
    ~Broker() override {
        standalone::SetRegistrationGate({});
        standalone::ForgetSuites();
    }
    const void *one = "one", *other = "other";
    static int add(const char* name, int version, const void* table, int entries = 3, int internal_version = 1) {
        return TK_QS_AddQSSuite(nullptr, 0, name, version, internal_version, entries, table);
    }
};

TEST_F(Broker, FindsByNameAndVersionAndCountsWhatIsOut) {
    const QSBasicSuite* basic = basic_suite();
    ASSERT_TRUE(add("Lines", 1, one) == 0 && add("Lines", 2, other) == 0 && add("Spots", 1, other) == 0);
    const void* suite = &suite;
    const Cases<Text, int, int, const void*> finds = {
        {"Lines", 1, 0, one},   {"Lines", 2, 0, other}, {"Lines", 3, 3, nullptr}, {"lines", 1, 3, nullptr},
        {"Spots", 1, 0, other}, {"", 1, 3, nullptr},    {nullptr, 1, 3, nullptr}, {"Lines", 1, 0, one}};
    for (const auto& [name, version, code, table] : finds) {
        EXPECT_EQ(basic->AcquireSuite(name, version, &suite), code);
        EXPECT_EQ(suite, table);
    }
    EXPECT_EQ(basic->AcquireSuite("Lines", 1, nullptr), 516);
    EXPECT_EQ(standalone::SuitesOut(), 4);
    const Cases<Text, int, int> releases = {{"Lines", 1, 0}, {"Lines", 1, 0}, {"Lines", 1, 3}, {"Lines", 2, 0},
                                            {"Spots", 1, 0}, {nullptr, 1, 3}, {"Spots", 9, 3}};
    for (const auto& [name, version, code] : releases) EXPECT_EQ(basic->ReleaseSuite(name, version), code);
    EXPECT_EQ(standalone::SuitesOut(), 0);
}

TEST_F(Broker, TakesTheSameAgainAndRefusesAnother) {
    ASSERT_EQ(add("Lines", 1, one), 0);
    EXPECT_EQ(add("Lines", 1, one), 0);
    EXPECT_EQ(add("Lines", 1, other), 3);
    EXPECT_EQ(add("Lines", 1, one, 4), 3);
    EXPECT_EQ(add("Lines", 1, one, 3, 2), 3);
    EXPECT_TRUE(add(nullptr, 1, one) == 516 && add("Spots", 1, nullptr) == 516 && add("Spots", 1, one, 0) == 516);
    const auto all = standalone::RegisteredSuites();
    ASSERT_EQ(all.size(), 1u);
    EXPECT_TRUE(all[0].name == "Lines" && all[0].table == one && all[0].entries == 3 && all[0].internal_version == 1);
}

TEST_F(Broker, EveryAllocationFailsOnce) {
    const Reports reports;
    const std::string name(60, 'n');  // too long to lie in the record itself
    int failures = 0;
    for (int nth = 1; nth <= 6; ++nth) {
        standalone::ForgetSuites();
        NewCounter::fail(nth);
        const int code = TK_QS_AddQSSuite(nullptr, 0, name.c_str(), 1, 1, 3, one);
        NewCounter::fail(0);
        EXPECT_TRUE(code == 0 || code == 4) << code;
        EXPECT_EQ(standalone::RegisteredSuites().size(), code == 0 ? 1u : 0u);
        failures += code == 4 ? 1 : 0;
    }
    EXPECT_GE(failures, 2);
    EXPECT_EQ(reports.all().size(), static_cast<std::size_t>(failures));
}

TEST_F(Broker, ThreadsAcquireAndRelease) {
    ASSERT_EQ(add("Lines", 1, one), 0);
    in_threads(4, [&](int i) {
        const QSBasicSuite* basic = basic_suite();
        const std::string own = "Spots" + std::to_string(i);
        for (int n = 0; n < 500; ++n) {
            const void* suite = nullptr;
            EXPECT_TRUE(basic->AcquireSuite("Lines", 1, &suite) == 0 && suite == one);
            EXPECT_EQ(add(own.c_str(), n % 5, other), 0);
            EXPECT_EQ(basic->ReleaseSuite("Lines", 1), 0);
        }
    });
    EXPECT_EQ(standalone::SuitesOut(), 0);
    EXPECT_EQ(standalone::RegisteredSuites().size(), 21u);
}

TEST_F(Broker, AGateAnswersForTheRegistration) {
    standalone::SetRegistrationGate(
        [](const char* name, int) { return std::strcmp(name, "Lines") == 0 ? 9 : throw 5; });
    EXPECT_EQ(add("Lines", 1, one), 9);
    EXPECT_EQ(code_of([] { add("Spots", 1, "spots"); }), 5);
    EXPECT_TRUE(standalone::RegisteredSuites().empty());
}

}  // namespace
