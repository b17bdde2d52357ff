// SPDX-License-Identifier: Apache-2.0
// The outside of profiles: what is taken, what is refused and how that is said.
#include "pictures/IccHeader.h"

#include "tests/pictures/Support.h"

namespace {

using namespace qx::pictures;
using qx::test::profile_of;
using Bytes = std::vector<std::uint8_t>;

Bytes number(std::uint32_t value) {
    return {std::uint8_t(value >> 24), std::uint8_t(value >> 16), std::uint8_t(value >> 8), std::uint8_t(value)};
}

/// A profile with other bytes at one place.
Bytes changed(std::size_t at, const Bytes& bytes) {
    Bytes profile = profile_of("RGB ");
    std::copy(bytes.begin(), bytes.end(), profile.begin() + std::ptrdiff_t(at));
    return profile;
}
Bytes letters(const char* text) { return {text, text + 4}; }

TEST(IccHeader, TellsClassSpaceConnectionAndVersion) {
    const std::pair<const char*, IccSpace> spaces[] = {
        {"RGB ", IccSpace::rgb}, {"GRAY", IccSpace::grey}, {"CMYK", IccSpace::cmyk}};
    for (const auto& [name, space] : spaces) {
        Bytes block = changed(16, letters(name));
        block.resize(600);  // the rest is none of it
        const auto verdict = vet_icc(block);
        ASSERT_TRUE(verdict.facts) << verdict.fault;
        EXPECT_EQ(verdict.facts->space, space);
        EXPECT_EQ(verdict.facts->bytes, 516u);
    }
    const std::pair<const char*, IccClass> classes[] = {
        {"scnr", IccClass::input}, {"mntr", IccClass::display}, {"prtr", IccClass::output}, {"spac", IccClass::space}};
    for (const auto& [name, kind] : classes) EXPECT_EQ(vet_icc(changed(12, letters(name))).facts->kind, kind);
    EXPECT_EQ(vet_icc(changed(20, letters("XYZ "))).facts->connection, IccConnection::xyz);
    EXPECT_EQ(vet_icc(changed(20, letters("Lab "))).facts->connection, IccConnection::lab);
    const auto facts = *vet_icc(changed(8, {2, 0x40})).facts;
    EXPECT_EQ(std::pair(facts.major, facts.minor), std::pair(2, 4));
}

TEST(IccHeader, NamesTheFault) {
    Bytes huge = changed(0, number((64 << 20) + 1));
    huge.resize((64 << 20) + 1);
    Bytes cut = changed(0, {});
    cut.pop_back();
    const std::tuple<Bytes, const char*, bool> cases[] = {
        {{}, "it is shorter than its header", true},
        {Bytes(131, 0), "it is shorter than its header", true},
        {huge, "it is above 64 MB", true},
        {changed(0, number(131)), "its size is less than that of its header", true},
        {cut, "it is cut short", true},
        {changed(0, number(0x80000000u)), "it is above 64 MB", true},
        {changed(36, letters("acsP")), "it has no signature", true},
        {changed(128, number(33)), "its table of tags is cut short", true},  // of 384 bytes, 32 tags
        {changed(128, number(0xFFFFFFFFu)), "its table of tags is cut short", true},
        {changed(136, number(145)), "a tag lies outside of it", true},
        {changed(140, number(373)), "a tag lies outside of it", true},
        {changed(136, number(0xFFFFFFFFu)), "a tag lies outside of it", true},
        {changed(140, number(0xFFFFFFFFu)), "a tag lies outside of it", true},
        {changed(12, letters("abst")), "it is for no device", false},
        {changed(12, letters("link")), "it is for no device", false},
        {changed(12, letters("nmcl")), "it is for no device", false},
        {changed(16, letters("Lab ")), "it is for neither RGB, grey nor CMYK", false},
        {changed(20, letters("RGB ")), "it connects to neither XYZ nor Lab", false},
    };
    for (const auto& [block, words, damaged] : cases) {
        const auto verdict = vet_icc(block);
        EXPECT_FALSE(verdict.facts) << words;
        EXPECT_EQ(verdict.fault, words);
        EXPECT_EQ(verdict.damaged, damaged) << words;
    }
    EXPECT_NE(vet_icc(changed(128, number(32))).fault, "its table of tags is cut short");
}

}  // namespace
